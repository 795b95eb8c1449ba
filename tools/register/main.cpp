// A cash register on the command line: drives the library file through lumo.h, as a shop's register does.
#include <CLI/CLI.hpp>
#include <cstdio>
#include <exception>
#include <iostream>
#include <string>

#include "commands.h"

namespace {

#ifdef _WIN32
constexpr char kLibraryName[] = "lumo.dll";
#else
constexpr char kLibraryName[] = "liblumo.so";
#endif

// One line, one command, until "quit" or the end of the input.
int Interactive(reg::Till &till) {
  std::cout
      << "Type a command, \"help\" for the list, \"card NUMBER\" to choose a card, \"quit\" to leave.\n";
  std::string line;
  while (std::cout << "> " << std::flush, std::getline(std::cin, line)) {
    CLI::App app("", "");
    reg::AddCommands(app, till);
    app.add_subcommand("help", "This list")->callback([&app] { std::cout << app.help(); });
    bool quit = false;
    app.add_subcommand("quit", "Leave")->callback([&quit] { quit = true; });
    CLI::App *card = app.add_subcommand("card", "Choose the card for the next operations");
    card->add_option("number", till.card, "Card number")->required();
    if (line.find_first_not_of(" \t\r") == std::string::npos) continue;
    reg::Parse(app, till, [&] { app.parse(line, false); });
    if (quit) break;
  }
  till.End();
  return 0;
}

int Run(int argc, char **argv) {
  reg::Till till;
  till.libraryFile = std::filesystem::path(argv[0]).parent_path() / kLibraryName;

  CLI::App app(
      "A cash register on the command line. It loads the lumo library file and does what a shop's register "
      "does.",
      "register");
  app.add_option("-l,--library", till.libraryFile, "The library file; its folder holds all of lumo's files")
      ->capture_default_str();
  app.add_option("--tag", till.tag, "Trace into TRACE_<tag>.TXT");
  app.add_flag("--json", till.asJson, "Facts as one line of JSON on standard output");
  reg::AddCommands(app, till);
  bool interactive = false;
  app.add_subcommand("interactive", "Take commands one after another from standard input")
      ->callback([&interactive] { interactive = true; });
  const int status = reg::Parse(app, till, [&] { app.parse(argc, argv); });
  if (status == 0 && interactive) return Interactive(till);
  return status;
}

}  // namespace

int main(int argc, char **argv) {
  try {
    return Run(argc, argv);
  } catch (const std::exception &error) {
    std::fprintf(stderr, "register: %s\n", error.what());
    return 2;
  }
}
