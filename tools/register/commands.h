// commands.h: what the register can do, as command-line words. The same words work one at a time from a shell
// and one after another in the interactive mode.
#pragma once

#include <CLI/CLI.hpp>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>

#include "library.h"

namespace reg {

struct Till {
  std::filesystem::path libraryFile;
  std::string tag;   // names the trace file
  std::string card;  // the card the next operation is for, unless it names another
  std::string cashier = "1";
  std::unique_ptr<Library> library;
  bool started = false;
  int status = 0;  // of the last command
};

void AddCommands(CLI::App &app, Till &till);

// Runs `parse`, which hands words to `app`, and returns the command's status: 0 done, 1 refused by the
// library (its code and message are on standard error), 2 not understood.
int Parse(CLI::App &app, Till &till, const std::function<void()> &parse);

}  // namespace reg
