#include <CLI/CLI.hpp>
#include <algorithm>
#include <iostream>
#include <memory>

#include "commands.h"
#include "options.h"

namespace reg {
namespace {

// CLI11 gives the help of the command that was typed, and that is "help".
void ListCommands(const CLI::App &app) {
  for (const CLI::App *command : app.get_subcommands([](const CLI::App *) { return true; })) {
    std::string name = command->get_name();
    name.resize(std::max<size_t>(name.size(), 14), ' ');
    std::cout << "  " << name << command->get_description() << '\n';
  }
}

void AddHelp(CLI::App &app) {
  CLI::App *help =
      app.add_subcommand("help", "This list; with a command's name, what there is to say about it");
  auto name = std::make_shared<std::string>();
  help->add_option("command", *name, "A command");
  help->callback([&app, name] {
    if (name->empty()) {
      ListCommands(app);
      return;
    }
    const auto found =
        app.get_subcommands([&](const CLI::App *command) { return command->check_name(*name); });
    if (found.empty()) throw Failure(kBadWords, "no such command: " + *name);
    std::cout << found[0]->help();
  });
}

// CLI11 would take what follows it as one word. Inside a word or behind a backslash, a quote is a letter.
bool HasOpenQuote(const std::string &line) {
  char open = 0;
  char before = ' ';
  for (const char byte : line) {
    if (open != 0) {
      if (byte == open && before != '\\') open = 0;
    } else if ((byte == '"' || byte == '\'' || byte == '`') &&
               (before == ' ' || before == '\t' || before == '=')) {
      open = byte;
    }
    before = byte;
  }
  return open != 0;
}

// One line, one command, until "quit" or the end of the input. The register's status is the worst of them.
int TakeLines(Till &till) {
  if (!till.asJson) {
    std::cout
        << "Type a command, \"help\" for the list, \"card NUMBER\" to choose a card, \"quit\" to leave.\n";
  }
  int worst = kDone;
  std::string line;
  while (!till.asJson && std::cout << "> ", std::cout << std::flush, std::getline(std::cin, line)) {
    if (line.find_first_not_of(" \t\r") == std::string::npos) continue;
    if (line.back() == '\r') line.pop_back();
    CLI::App app("", "");
    AddCommands(app, till);
    AddHelp(app);
    app.require_subcommand(0, 1);  // an unknown word is then named in the complaint
    bool quit = false;
    app.add_subcommand("quit", "Leave")->callback([&quit] { quit = true; });
    CLI::App *card = app.add_subcommand("card", "Choose the card for the next operations");
    card->add_option("number", till.card, "Card number")->required();
    TakeOnlyText(app);
    TakeNoValuesForFlags(app);
    worst = std::max(worst, Parse(app, till, [&] {
                       if (HasOpenQuote(line)) throw Failure(kBadWords, "a quote is not closed: " + line);
                       app.parse(line, false);
                     }));
    if (quit) break;
  }
  return worst;
}

}  // namespace

void AddInteractiveCommand(CLI::App &app, Till &till) {
  app.add_subcommand("interactive", "Take commands one after another from standard input")->callback([&till] {
    till.status = TakeLines(till);
  });
}

}  // namespace reg
