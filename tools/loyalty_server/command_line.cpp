#include "loyalty_server/command_line.h"

#include <CLI/CLI.hpp>
#include <fstream>
#include <iostream>
#include <sstream>
#include <stdexcept>

namespace loyalty {
namespace {

// ---- The program's options ----

constexpr const char *kCards =
    "\nWithout --shop there are these cards (any terminal but 99999, which is locked, may use them):\n"
    "  1000000001 active, with 500.00 GLOBAL, 200.00 LOCAL, 50.00 DISCOUNT\n"
    "  1000000002 active and empty\n"
    "  1000000003, 1000000004, 1000000005, 1000000008 sold, not active\n"
    "  1000000006 locked\n"
    "  1000000007 sold; the token TOKEN7 exchanges another card for it\n";

constexpr const char *kExits =
    "\nExit status: 0 ended by quit or an interrupt, 1 failed, 2 an option or a file it names cannot be "
    "used,\n"
    "3 an address cannot be listened on, 4 the data file cannot be used.\n";

constexpr const char *kCommands = "\nCommands are read from standard input; \"help\" lists them.\n";

#if !LOYALTY_DATA_AND_PAGE
constexpr const char *kWithout =
    "\nThis build has no --data and no --page: all is in memory, and there is no page.\n";
#else
constexpr const char *kWithout = "";
#endif

std::string ReadFile(const std::string &name) {
  std::ifstream file(name, std::ios::binary);
  file.peek();  // a folder opens, and fails here
  if (!file.is_open() || file.bad()) throw std::invalid_argument(name + " cannot be read");
  std::ostringstream text;
  text << file.rdbuf();
  return text.str();
}

// Reads a file and says its name when what it holds is wrong.
template <typename Parse>
auto Parsed(const std::string &name, Parse parse) {
  const std::string text = ReadFile(name);
  try {
    return parse(text);
  } catch (const std::invalid_argument &error) {
    throw std::invalid_argument(name + ": " + error.what());
  }
}

struct ShopOptions {
  std::string file;
  Rates rates;
  std::string version;
  std::string update;
  std::vector<std::string> terminals;
};

Shop ReadShop(const CLI::App &app, const ShopOptions &options) {
  Shop shop = options.file.empty() ? BuiltInShop() : Parsed(options.file, ShopFromJson);
  const auto take = [&app](const char *name, int32_t value, int32_t *out) {
    if (app.count(name) != 0) *out = value;
  };
  take("--global", options.rates.global, &shop.rates.global);
  take("--local", options.rates.local, &shop.rates.local);
  take("--discount", options.rates.discount, &shop.rates.discount);
  take("--fee", options.rates.organizerFee, &shop.rates.organizerFee);
  take("--spend-limit", options.rates.spendLimit, &shop.rates.spendLimit);
  if (!options.version.empty()) shop.protocolVersion = options.version;
  if (!options.update.empty()) FindUpdate(options.update, &shop.update);
  if (app.count("--any-bill") != 0) shop.isBillChecked = false;
  if (app.count("--no-resume-ids") != 0) shop.isIdResumedAfterReplay = false;
  for (const std::string &terminal : options.terminals) {
    shop.isAnyTerminalKnown = false;
    shop.terminals.emplace(terminal, false);
  }
  return shop;
}

// ---- Commands ----

struct Command {
  const char *name;
  const char *arguments;
  const char *help;
};

constexpr Command kCommandList[] = {
    {"cards", "", "every card with its bonuses"},
    {"card", "NUMBER [STATE]", "one card; makes it sold, active or locked"},
    {"payments", "", "every payment with its state"},
    {"terminals", "", "every terminal with its last request id"},
    {"terminal", "ID lock|unlock", "closes or opens the programme to a terminal"},
    {"last", "ID", "the last request id of a terminal"},
    {"update", "none|offered|required", "what terminals are told of a new version"},
    {"ad", "TEXT", "the advertisement"},
    {"fault", "[FAULT]", "shows or sets the fault in force"},
    {"faults", "FILE", "one fault after another, as the lines of a file say"},
    {"help", "", "these lines"},
    {"quit", "", "stops the server"},
};

std::string CardLine(const Programme &programme, const Card &card) {
  const Purses &purses = programme.PursesOf(card);
  std::string line =
      card.number + "  " + CardStateName(card.state) + "  account " + std::to_string(card.account + 1);
  for (const AccountType type : kAllAccountTypes) {
    const Purse &purse = purses[static_cast<size_t>(type)];
    line += std::string("  ") + AccountName(type) + " " + AmountText(purse.balance);
    if (purse.reserved != 0) line += " (reserved " + AmountText(purse.reserved) + ")";
    if (purse.expected != 0) line += " (expected " + AmountText(purse.expected) + ")";
  }
  return line + "\n";
}

std::string Cards(const Programme &programme) {
  std::string text;
  for (const auto &entry : programme.cards()) text += CardLine(programme, entry.second);
  return text;
}

std::string ChangedCard(Programme *programme, const std::string &number, const std::string &state_name) {
  CardState state;
  if (FindCardState(state_name, &state)) programme->SetCardState(number, state);
  const Card *card = programme->FindCard(number);
  return card == nullptr ? "no such card\n" : CardLine(*programme, *card);
}

// What terminals have sent, made fit for a line: nobody can forge another one.
std::string Shown(const std::string &text) {
  return Printable(text, text.size());
}

std::string Payments(const Programme &programme) {
  std::string text;
  for (const auto &entry : programme.payments()) {
    const Payment &payment = entry.second;
    text += Shown(payment.requestId) + "  card " + payment.card + "  sum " + AmountText(payment.totalSum) +
            "  " + PaymentStateName(payment.state) + "\n";
  }
  return text.empty() ? "no payments\n" : text;
}

std::string Terminals(const Programme &programme) {
  std::string text;
  for (const auto &entry : programme.Terminals()) {
    text += Shown(entry.first) + "  last " +
            (entry.second.lastId.empty() ? "none" : Shown(entry.second.lastId)) +
            (entry.second.isLocked ? "  locked" : "") + "\n";
  }
  return text.empty() ? "no terminals\n" : text;
}

std::string FaultLine(const Server &server) {
  const FaultPlan faults = server.faults();
  std::string line = "fault " + Shown(FaultText(faults.fault()));
  if (faults.step_count() > 1) {
    line += "  (" + std::to_string(faults.step() + 1) + " of " + std::to_string(faults.step_count()) + ")";
  }
  return line + "\n";
}

// What follows the command in these is one text, spaces and quotes included.
bool IsFollowedByText(const std::string &command) {
  return command == "ad" || command == "fault" || command == "faults";
}

// The words of a line, the last one first, as the parser takes them.
std::vector<std::string> ReversedWords(const std::string &line) {
  std::istringstream stream(line);
  std::vector<std::string> words(1);
  stream >> words[0] >> std::ws;
  if (IsFollowedByText(words[0])) {
    std::string text;
    std::getline(stream, text);
    while (!text.empty() && (text.back() == '\r' || text.back() == ' ')) text.pop_back();
    if (!text.empty()) words.insert(words.end(), {"--", text});
  } else {
    for (std::string word; stream >> word;) words.push_back(word);
  }
  std::reverse(words.begin(), words.end());
  return words;
}

}  // namespace

std::optional<Settings> ReadCommandLine(int argc, const char *const *argv, int *out_status) {
  CLI::App app{"A loyalty server for the bench: cards, bonuses and payments, faults on demand."};
  Settings settings;
  ShopOptions shop;
  std::string fault;
  std::string fault_script;
  long long idle_seconds = 30;
  uint16_t page_port = 0;

  const CLI::Range percent(0, 100);
  app.add_option("--address", settings.server.address, "Address to listen on")->capture_default_str();
  app.add_option("--port", settings.server.port, "Port to listen on; 0 takes a free one")
      ->capture_default_str();
  app.add_option("--shop", shop.file, "JSON file with cards, terminals and rates");
  app.add_option("--global", shop.rates.global, "Percent earned as GLOBAL bonuses")->check(percent);
  app.add_option("--local", shop.rates.local, "Percent earned as LOCAL bonuses")->check(percent);
  app.add_option("--discount", shop.rates.discount, "Percent earned as DISCOUNT bonuses")->check(percent);
  app.add_option("--fee", shop.rates.organizerFee, "Percent of the organiser's fee")->check(percent);
  app.add_option("--spend-limit", shop.rates.spendLimit, "Percent of a position that bonuses may pay")
      ->check(percent);
  app.add_option("--terminal", shop.terminals, "Serve only this terminal; may be given several times");
  app.add_option("--protocol", shop.version, "Protocol version; \"1\" takes every 1.x");
  app.add_option("--update", shop.update, "Tell terminals of a new version")
      ->check(CLI::IsMember({"none", "offered", "required"}));
  app.add_flag("--any-bill", "Take bills whose positions do not add up");
  app.add_flag("--no-resume-ids",
               "Answer a replayed record with its own request id: the terminal then goes on from there and "
               "repeats ids");
  const auto *fault_option = app.add_option("--fault", fault, "Start with a fault, as \"cut 120 times 2\"");
  app.add_option("--faults", fault_script,
                 "Start with one fault after another, as the lines of this file say")
      ->excludes("--fault");
#if LOYALTY_DATA_AND_PAGE
  app.add_option("--data", settings.dataFile, "Keep cards, payments and request ids in this file");
  const auto *page =
      app.add_option("--page", page_port, "Show a page in the browser, on this port; 0 takes a free one");
  app.add_option("--page-address", settings.pageAddress, "Address of the page")
      ->needs("--page")
      ->capture_default_str();
#endif
  app.add_option("--idle", idle_seconds, "Drop a client that is silent for so many seconds")
      ->check(CLI::Range(1LL, 86400LL))
      ->capture_default_str();
  app.add_option("--max-request", settings.server.mostBodyBytes, "Longest request body in bytes")
      ->check(CLI::Range(1LL, 1LL << 30))
      ->capture_default_str();
  app.add_option("--log", settings.logFile, "Append the log to this file instead of standard error");
  app.add_flag("--quiet", settings.isQuiet, "No log");
  // An empty value is a variable of a script that was never set; nothing good can be meant by it.
  const CLI::Validator not_empty([](const std::string &value) { return value.empty() ? "is empty" : ""; },
                                 "");
  for (CLI::Option *option : app.get_options()) option->check(not_empty);
  app.footer(std::string(kCards) + kCommands + kExits + kWithout + "\nFaults:\n" + FaultHelp());
  *out_status = kBadOptions;
  try {
    app.parse(argc, argv);
    settings.shop = ReadShop(app, shop);
    if (*fault_option) settings.faults = FaultPlan(ParseFault(fault));
    if (!fault_script.empty()) settings.faults = Parsed(fault_script, ParseFaultScript);
  } catch (const CLI::ParseError &error) {
    if (app.exit(error) == 0) *out_status = kEnded;
    return std::nullopt;
  } catch (const std::invalid_argument &error) {
    std::cerr << "loyalty_server: " << error.what() << "\n";
    return std::nullopt;
  }
  settings.server.idleTime = std::chrono::seconds(idle_seconds);
#if LOYALTY_DATA_AND_PAGE
  if (*page) settings.pagePort = page_port;
#else
  (void)page_port;
#endif
  return settings;
}

std::string ConsoleHelp() {
  std::string text;
  for (const Command &command : kCommandList) {
    std::string line = std::string(command.name) + " " + command.arguments;
    line.resize(std::max<size_t>(line.size(), 28), ' ');
    text += line + " " + command.help + "\n";
  }
  return text + "\nFAULT is one of\n" + FaultHelp();
}

ConsoleReply RunCommand(Server *server, const std::string &line) {
  ConsoleReply reply;
  if (line.find_first_not_of(" \t\r") == std::string::npos) return reply;

  CLI::App app;
  std::string number;
  std::string word;
  std::string text;
  app.set_help_flag();
  app.require_subcommand(1);
  const auto add = [&app](const char *name, const std::function<void()> &run) {
    CLI::App *command = app.add_subcommand(name);
    command->set_help_flag();
    command->callback(run);
    return command;
  };
  const auto look = [server](const std::function<void(const Programme &)> &visitor) {
    server->Look(visitor);
  };
  add("cards", [&] { look([&](const Programme &programme) { reply.text = Cards(programme); }); });
  add("payments", [&] { look([&](const Programme &programme) { reply.text = Payments(programme); }); });
  add("terminals", [&] { look([&](const Programme &programme) { reply.text = Terminals(programme); }); });
  add("help", [&] { reply.text = ConsoleHelp(); });
  add("quit", [&] { reply.isQuit = true; })->alias("exit");

  CLI::App *card = add("card", [&] {
    server->Visit([&](Programme &programme) { reply.text = ChangedCard(&programme, number, word); });
  });
  card->add_option("NUMBER", number)->required();
  card->add_option("STATE", word)->check(CLI::IsMember({"sold", "active", "locked"}));

  CLI::App *terminal = add("terminal", [&] {
    server->Visit([&](Programme &programme) { programme.LockTerminal(number, word == "lock"); });
    reply.text = "terminal " + number + (word == "lock" ? " is locked\n" : " is open\n");
  });
  terminal->add_option("ID", number)->required();
  terminal->add_option("CHANGE", word)->required()->check(CLI::IsMember({"lock", "unlock"}));

  add("last",
      [&] {
        look([&](const Programme &programme) { word = programme.LastRequestId(number); });
        reply.text = (word.empty() ? "none" : Shown(word)) + "\n";
      })
      ->add_option("ID", number)
      ->required();

  add("update",
      [&] {
        Update update = Update::kNone;
        FindUpdate(word, &update);
        server->Visit([&](Programme &programme) { programme.SetUpdate(update); });
        reply.text = "update " + word + "\n";
      })
      ->add_option("VERSION", word)
      ->required()
      ->check(CLI::IsMember({"none", "offered", "required"}));

  add("ad", [&] {
    server->Visit([&](Programme &programme) { programme.SetAdvertisement(text); });
    reply.text = "ad " + text + "\n";
  })->add_option("TEXT", text);

  add("fault", [&] {
    if (!text.empty()) server->SetFault(ParseFault(text));
    reply.text = FaultLine(*server);
  })->add_option("FAULT", text);

  add("faults",
      [&] {
        server->SetFaults(Parsed(text, ParseFaultScript));
        reply.text = FaultLine(*server);
      })
      ->add_option("FILE", text)
      ->required();

  std::vector<std::string> words = ReversedWords(line);
  const std::string name = words.back();
  if (app.get_subcommands([&name](const CLI::App *command) { return command->check_name(name); }).empty()) {
    reply.text = "no such command: " + Printable(name) + "; try help\n";
    return reply;
  }
  try {
    app.parse(words);
  } catch (const CLI::ExtrasError &) {
    reply.text = name + ": a word too many; try help\n";
  } catch (const std::exception &error) {
    reply.text = name + ": " + error.what() + "\n";
  }
  return reply;
}

}  // namespace loyalty
