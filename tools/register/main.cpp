// A cash register on the command line: drives the library file through lumo.h, as a shop's register does.
#include <CLI/CLI.hpp>
#include <cstdio>
#include <string>
#include <vector>

#include "commands.h"
#include "interrupt.h"
#include "lumo.h"
#include "options.h"

#ifdef _WIN32
#include <windows.h>
// After windows.h, which it needs.
#include <shellapi.h>
#else
#include <fcntl.h>
#include <unistd.h>
#endif

namespace {

#ifdef _WIN32
std::filesystem::path FindLibrary(const std::filesystem::path &folder) {
  return folder / "lumo.dll";
}

// The words of the command line as UTF-8, which the console then shows too.
std::vector<std::string> TakeWords(int, char **) {
  SetConsoleOutputCP(CP_UTF8);
  int count = 0;
  wchar_t **const line = CommandLineToArgvW(GetCommandLineW(), &count);
  std::vector<std::string> words;
  for (int i = 0; i < count; ++i) words.push_back(std::filesystem::path(line[i]).u8string());
  LocalFree(line);
  return words;
}
#else
// Where the library is installed, a terminal's folder has a link to it, under the name that programs ask for.
std::filesystem::path FindLibrary(const std::filesystem::path &folder) {
  const std::filesystem::path file = folder / "liblumo.so";
  const std::filesystem::path link = folder / ("liblumo.so." + std::to_string(LUMO_VERSION_MAJOR));
  std::error_code error;
  return !std::filesystem::exists(file, error) && std::filesystem::exists(link, error) ? link : file;
}

// A stream that was closed stays one that cannot be used: otherwise the next file that is opened would take
// its number, and what is printed would go into a file of the terminal.
void KeepStreams() {
  int descriptor = 0;
  do {
    descriptor = open("/dev/null", O_RDONLY);
  } while (descriptor >= 0 && descriptor <= STDERR_FILENO);
  if (descriptor >= 0) close(descriptor);
}

std::vector<std::string> TakeWords(int count, char **words) {
  return {words, words + count};
}
#endif

int Run(std::vector<std::string> words) {
  // Never destroyed: an interrupt may come at any moment.
  reg::Till &till = *new reg::Till;
  // A register that was called by its name alone is that of the current folder.
  till.libraryFile = FindLibrary(std::filesystem::u8path(words[0]).parent_path());
  reg::WatchForInterrupts([&till] { till.End(); });

  CLI::App app(
      "A cash register on the command line. It loads the lumo library file and does what a shop's register "
      "does.",
      "register");
  reg::AddGeneralOptions(app, till);
  reg::AddCommands(app, till);
  reg::AddInteractiveCommand(app, till);
  reg::AddCompletionCommand(app, till);
  reg::TakeOnlyText(app);
  reg::TakeNoValuesForFlags(app);
  words.erase(words.begin());
  std::reverse(words.begin(), words.end());  // as CLI11 takes them
  const int status = reg::Parse(app, till, [&] { app.parse(words); });
  reg::EndProcess(status);
}

}  // namespace

int main(int argc, char **argv) {
  try {
#ifndef _WIN32
    KeepStreams();
#endif
    return Run(TakeWords(argc, argv));
  } catch (...) {
    std::fputs("register: it cannot go on\n", stderr);
    return reg::kNoFile;
  }
}
