#include <CLI/CLI.hpp>
#include <memory>
#include <optional>

#include "commands.h"
#include "operation.h"
#include "options.h"

namespace reg {
namespace {

void AddActivate(CLI::App &app, Till &till) {
  CLI::App *command = app.add_subcommand("activate", "Activate a card: simple, gift or friend");
  auto card = AddCard(command);
  auto type = std::make_shared<std::string>("simple");
  command->add_option("type", *type, "simple, gift or friend")
      ->check(CLI::IsMember({"simple", "gift", "friend"}))
      ->capture_default_str();
  auto amount = AddAmount(command, "--amount", "Sum of the activation", false);
  auto account = std::make_shared<std::string>("GLOBAL");
  command->add_option("--account", *account, "GLOBAL, LOCAL or DISCOUNT (gift cards)")->capture_default_str();
  auto referrer = std::make_shared<std::optional<std::string>>();
  command->add_option("--referrer", *referrer, "Card of the friend who brought the customer");
  auto bill = std::make_shared<std::optional<std::string>>();
  command->add_option("--bill", *bill, "Bill file, relative to the library's folder");
  command->callback([=, &till] {
    const char *name = *type == "gift"     ? "GIFT_CARD"
                       : *type == "friend" ? "REFER_A_FRIEND"
                                           : "SIMPLE_ACTIVATION";
    const auto call = [&](Library &library) {
      return library.ActivationProc(name, OrNull(*bill), *amount, account->c_str(), OrNull(*referrer));
    };
    const auto amounts = [](Library &library) {
      return Amounts{{"credited", library.GetActivationAmount()}};
    };
    Operate(till, *card, {"activate", call, amounts});
  });
}

}  // namespace

void AddCardCommands(CLI::App &app, Till &till) {
  AddActivate(app, till);

  CLI::App *balance = app.add_subcommand("balance", "Ask for a card's balance");
  balance->callback([card = AddCard(balance), &till] {
    Operate(till, *card,
            {"balance", [](Library &library) { return library.BalanceProc(); },
             [](Library &library) {
               return Amounts{{"balance", library.GetBalance()}};
             },
             true, true, false});
  });

  CLI::App *deposit = app.add_subcommand("deposit", "Put an amount on a card");
  auto amount = AddAmount(deposit, "amount", "How much", true);
  deposit->callback([card = AddCard(deposit), amount, &till] {
    Operate(till, *card,
            {"deposit", [&](Library &library) { return library.DepositProc(*amount); }, nullptr});
  });

  CLI::App *exchange = app.add_subcommand("exchange", "Move a card's accounts to the card of a token");
  auto token = std::make_shared<std::string>();
  Needs(exchange->add_option("token", *token, "The token"));
  exchange->callback([card = AddCard(exchange), token, &till] {
    Operate(till, *card,
            {"exchange", [&](Library &library) { return library.ExchangeProc(token->c_str()); }, nullptr});
  });

  CLI::App *link = app.add_subcommand("link", "Link a card to another card's account");
  auto linked = std::make_shared<std::string>();
  Needs(link->add_option("linked", *linked, "Card number to link"));
  link->callback([card = AddCard(link), linked, &till] {
    Operate(till, *card,
            {"link", [&](Library &library) { return library.LinkCardProc(linked->c_str()); }, nullptr, true,
             false});
  });
}

}  // namespace reg
