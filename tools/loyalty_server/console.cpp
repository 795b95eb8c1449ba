#include "loyalty_server/console.h"

#include <sstream>
#include <stdexcept>

namespace loyalty {
namespace {

std::string CardLine(const Programme &programme, const Card &card) {
  const Purses &purses = programme.PursesOf(card);
  std::string line =
      card.number + "  " + CardStateName(card.state) + "  account " + std::to_string(card.account + 1);
  for (const AccountType type : kAllAccountTypes) {
    const Purse &purse = purses[static_cast<std::size_t>(type)];
    line += std::string("  ") + AccountName(type) + " " + AmountText(purse.balance);
    if (purse.reserved != 0) line += " (reserved " + AmountText(purse.reserved) + ")";
    if (purse.expected != 0) line += " (expected " + AmountText(purse.expected) + ")";
  }
  return line + "\n";
}

std::string Cards(Programme *programme) {
  std::string text;
  for (const auto &entry : programme->cards()) text += CardLine(*programme, entry.second);
  return text;
}

std::string Payments(Programme *programme) {
  std::string text;
  for (const auto &entry : programme->payments()) {
    const Payment &payment = entry.second;
    text += payment.requestId + "  card " + payment.card + "  sum " + AmountText(payment.totalSum) + "  " +
            PaymentStateName(payment.state) + "\n";
  }
  return text.empty() ? "no payments\n" : text;
}

std::string ChangeCard(Programme *programme, const std::string &number, const std::string &state_name) {
  const Card *card = programme->FindCard(number);
  if (card == nullptr) return "no such card\n";
  CardState state;
  if (!state_name.empty()) {
    if (!FindCardState(state_name, &state)) return "a card is sold, active or locked\n";
    programme->SetCardState(number, state);
  }
  return CardLine(*programme, *card);
}

}  // namespace

std::string ConsoleHelp() {
  return std::string() +
         "cards                        every card with its bonuses\n"
         "card NUMBER [STATE]          one card; makes it sold, active or locked\n"
         "payments                     every payment with its state\n"
         "terminal ID lock|unlock      closes or opens the programme to a terminal\n"
         "last ID                      the last request id of a terminal\n"
         "update none|offered|required what terminals are told of a new version\n"
         "ad TEXT                      the advertisement\n"
         "fault [FAULT]                shows or sets the fault in force\n"
         "quit                         stops the server\n"
         "\nFAULT is one of\n" +
         FaultHelp();
}

ConsoleReply RunCommand(Server *server, const std::string &line) {
  std::istringstream stream(line);
  std::string command;
  stream >> command >> std::ws;
  std::string rest;
  std::getline(stream, rest);
  while (!rest.empty() && (rest.back() == '\r' || rest.back() == ' ')) rest.pop_back();
  std::istringstream words(rest);
  std::string first;
  std::string second;
  words >> first >> second;

  ConsoleReply reply;
  if (command.empty()) return reply;
  if (command == "quit" || command == "exit") {
    reply.isQuit = true;
    return reply;
  }
  if (command == "help") {
    reply.text = ConsoleHelp();
    return reply;
  }
  if (command == "fault") {
    try {
      if (!rest.empty()) server->SetFault(ParseFault(rest));
      reply.text = "fault " + FaultText(server->fault()) + "\n";
    } catch (const std::exception &error) {
      reply.text = std::string(error.what()) + "\n";
    }
    return reply;
  }
  server->Visit([&](Programme &programme) {
    Update update;
    if (command == "cards") {
      reply.text = Cards(&programme);
    } else if (command == "payments") {
      reply.text = Payments(&programme);
    } else if (command == "card" && !first.empty()) {
      reply.text = ChangeCard(&programme, first, second);
    } else if (command == "terminal" && (second == "lock" || second == "unlock")) {
      programme.LockTerminal(first, second == "lock");
      reply.text = "terminal " + first + (second == "lock" ? " is locked\n" : " is open\n");
    } else if (command == "last" && !first.empty()) {
      const std::string last = programme.LastRequestId(first);
      reply.text = (last.empty() ? "none" : last) + "\n";
    } else if (command == "update" && FindUpdate(first, &update)) {
      programme.SetUpdate(update);
      reply.text = "update " + first + "\n";
    } else if (command == "ad") {
      programme.SetAdvertisement(rest);
      reply.text = "ad " + rest + "\n";
    } else {
      reply.text = "no such command, or a word is missing; try help\n";
    }
  });
  return reply;
}

}  // namespace loyalty
