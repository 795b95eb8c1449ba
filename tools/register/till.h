// register/till.h: what the register's commands share: the library file, the options of the command line, and
// how an outcome is shown.
#pragma once

#include <filesystem>
#include <functional>
#include <memory>
#include <stdexcept>
#include <string>

#include "facts.h"
#include "interrupt.h"
#include "library.h"

namespace reg {

// How the register ends. An interrupt ends it with 128 and the signal's number.
enum Status : int {
  kDone = 0,
  kRefused = 1,   // by the library or the server; something waits; a terminal is not fit
  kBadWords = 2,  // the command line, or a line typed, is not understood
  kNoFile = 3,    // a file cannot be read, written or loaded
  kLibraryEnded = 4,
};

// What a command cannot do; its text is for whoever typed the command.
struct Failure : std::runtime_error {
  Failure(Status its_status, const std::string &text) : std::runtime_error(text), status(its_status) {}
  Status status;
};

// A call of the library that returned a code.
struct Refused {
  int code;
  std::string message;
  Facts facts;  // of the operation
};

struct Till {
  std::filesystem::path libraryFile;
  std::string tag;   // names the trace file
  std::string card;  // the card the next operation is for, unless it names another
  std::string cashier = "1";
  bool asJson = false;
  bool showsProgress = false;  // where no person looks, too
  std::unique_ptr<Library> library;
  std::unique_ptr<Busy> busy;
  bool started = false;
  int status = kDone;  // of the last command

  // The library file's folder, which holds all of lumo's files.
  std::filesystem::path Folder() const;
  std::filesystem::path TraceFile() const;
  // Throws Failure when the name, which the library takes as one in its folder, is that of the library file
  // or of a file that lumo keeps: whatever is written there is lost.
  void RefuseKeptFile(const std::string &name) const;

  // From here on an interrupt waits for the end of the command.
  Library &Loaded();
  // The library after LUMOInit, which writes files. A command that only looks reads the files instead.
  Library &Started();
  // No call runs or is about to: an interrupt may end the register. Called at the end of every command.
  void Rest() { busy.reset(); }
  // LUMOClean, when LUMOInit was called.
  void End();

  // Throws Refused for a code.
  void Check(int code);

  // The outcome on standard output: the facts as a line of JSON when that is asked for, otherwise
  // what `text` prints.
  void Show(const Facts &facts, const std::function<void()> &text) const;
};

// "-" for nothing.
const char *OrDash(const char *text);
const char *OrDash(const std::string &text);

}  // namespace reg
