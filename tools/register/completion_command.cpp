#include <CLI/CLI.hpp>
#include <iostream>
#include <memory>

#include "commands.h"

namespace reg {
namespace {

// What may follow the words of `path`: the commands below it and its options.
void PrintChoices(const CLI::App &app, const std::string &path) {
  std::string words;
  for (const CLI::Option *option : app.get_options()) {
    for (const std::string &name : option->get_lnames()) words += " --" + name;
  }
  const auto commands = app.get_subcommands([](const CLI::App *) { return true; });
  for (const CLI::App *command : commands) words += " " + command->get_name();
  std::cout << "    '" << path << "') words='" << (words.empty() ? "" : words.substr(1)) << "' ;;\n";
  for (const CLI::App *command : commands) PrintChoices(*command, path + "/" + command->get_name());
}

// Of every command, as a pattern of the shell.
std::string Paths(const CLI::App &app, const std::string &path) {
  std::string pattern;
  for (const CLI::App *command : app.get_subcommands([](const CLI::App *) { return true; })) {
    const std::string deeper = path + "/" + command->get_name();
    pattern += "|" + deeper + Paths(*command, deeper);
  }
  return pattern;
}

void PrintBashScript(const CLI::App &app) {
  std::cout << "# Completion of register's words for bash: eval \"$(register completion bash)\"\n"
               "_register() {\n"
               "  local path='' word words=''\n"
               "  for word in \"${COMP_WORDS[@]:1:COMP_CWORD-1}\"; do\n"
               "    case \"$path/$word\" in\n"
               "      "
            << Paths(app, "").substr(1)
            << ") path=\"$path/$word\" ;;\n"
               "    esac\n"
               "  done\n"
               "  case \"$path\" in\n";
  PrintChoices(app, "");
  std::cout << "  esac\n"
               "  COMPREPLY=($(compgen -W \"$words\" -- \"${COMP_WORDS[COMP_CWORD]}\"))\n"
               "}\n"
               "complete -o default -F _register register\n";
}

}  // namespace

void AddCompletionCommand(CLI::App &app, Till &) {
  CLI::App *command =
      app.add_subcommand("completion", "A script that completes the register's words in a shell");
  auto shell = std::make_shared<std::string>();
  command->add_option("shell", *shell, "bash")->required()->check(CLI::IsMember({"bash"}));
  // The option writes to it until the command is done.
  command->callback([&app, shell] { PrintBashScript(app); });
}

}  // namespace reg
