#include "fatal_end.h"

#include <fcntl.h>

#include <csignal>
#include <cstdlib>
#include <cstring>

#include "running_call.h"
#include "till.h"

#ifdef _WIN32
#include <io.h>
#include <windows.h>
#else
#include <unistd.h>
#endif

namespace reg {
namespace {

#ifdef _WIN32
using Letter = wchar_t;
int Open(const Letter *path) {
  return _wopen(path, _O_RDONLY | _O_BINARY);
}
constexpr auto kRead = _read;
constexpr auto kWrite = _write;
constexpr auto kSeek = _lseek;
#else
using Letter = char;
int Open(const Letter *path) {
  return open(path, O_RDONLY);
}
constexpr auto kRead = read;
constexpr auto kWrite = write;
constexpr auto kSeek = lseek;
#endif

enum class Cause { kExit, kBreak, kCrash };

// What is needed at the end, when neither memory nor the C library's files can be asked for any more.
Letter trace_path[4096];
bool tells_program = false;

void Say(const char *text, int descriptor = 2) {
  // Nobody is left to tell that it cannot be said.
  if (kWrite(descriptor, text, static_cast<unsigned>(std::strlen(text))) < 0) return;
}

// "" without one.
const char *LastLineOfTrace() {
  static char tail[2048 + 1];
  const int file = Open(trace_path);
  if (file < 0) return "";
  const auto size = kSeek(file, 0, 2);
  kSeek(file, size > 2048 ? size - 2048 : 0, 0);
  const auto count = kRead(file, tail, 2048);
  if (count <= 0) return "";
  char *end = tail + count;
  while (end != tail && (end[-1] == '\n' || end[-1] == '\r')) --end;
  *end = '\0';
  char *line = end;
  while (line != tail && line[-1] != '\n') --line;
  return line;
}

void Tell(Cause cause) {
  const char *line = LastLineOfTrace();
  Say("register: the library ended the process inside ");
  Say(RunningCall::Name());
  Say("\n  the trace ends: ");
  Say(*line != '\0' ? line : "(there is none)");
  Say("\n");
  if (cause == Cause::kExit) {
    Say("  A line of the slip had 1024 bytes or more, or there was no memory: look at the card number, and "
        "at the\n"
        "  shop's name, header and footer in CONFIG.\n");
  } else if (cause == Cause::kBreak) {
    Say("  A record of LOG holds an activation of a type that nobody knows: take its line out of LOG.\n");
  } else {
    Say("  That is a fault of the library: keep the folder as it is now for whoever looks into it.\n");
  }
  Say("  An operation may have been done or not: ask by its RRN, as after a lost answer. The next start "
      "finishes\n"
      "  what was left half done.\n");
}

void OnExit() {
  if (RunningCall::Name() == nullptr) return;
  Tell(Cause::kExit);
  _exit(kLibraryEnded);
}

#ifdef _WIN32
LONG WINAPI OnException(EXCEPTION_POINTERS *exception) {
  if (RunningCall::Name() == nullptr) return EXCEPTION_CONTINUE_SEARCH;
  const bool is_break = exception->ExceptionRecord->ExceptionCode == EXCEPTION_BREAKPOINT;
  Tell(is_break ? Cause::kBreak : Cause::kCrash);
  TerminateProcess(GetCurrentProcess(), kLibraryEnded);
  return EXCEPTION_CONTINUE_SEARCH;
}
#else
void OnSignal(int signal) {
  if (RunningCall::Name() == RunningCall::kLoading) {
    Say("register: cannot load the library: its file is damaged; take it out of the package again\n");
    if (tells_program) Say("{\"error\":\"cannot load the library: its file is damaged\"}\n", 1);
    _exit(kNoFile);
  }
  if (RunningCall::Name() == nullptr) {
    // Not the library's doing: the usual end.
    std::signal(signal, SIG_DFL);
    raise(signal);
    return;
  }
  Tell(signal == SIGTRAP ? Cause::kBreak : Cause::kCrash);
  _exit(kLibraryEnded);
}
#endif

}  // namespace

void WatchForFatalEnds(const std::filesystem::path &trace_file, bool as_json) {
  tells_program = as_json;
  const bool is_watched = trace_path[0] != 0;
  const auto &path = trace_file.native();
  if (path.size() < sizeof trace_path / sizeof *trace_path) {
    std::memcpy(trace_path, path.c_str(), (path.size() + 1) * sizeof(Letter));
  }
  if (is_watched) return;
  std::atexit(OnExit);
#ifdef _WIN32
  SetUnhandledExceptionFilter(OnException);
#else
  // On a stack of its own, since the usual one may be what ran out.
  static char stack[64 * 1024];
  stack_t own = {};
  own.ss_sp = stack;
  own.ss_size = sizeof stack;
  sigaltstack(&own, nullptr);
  struct sigaction action = {};
  action.sa_handler = OnSignal;
  action.sa_flags = SA_ONSTACK | SA_NODEFER;
  for (const int signal : {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGABRT, SIGTRAP}) {
    sigaction(signal, &action, nullptr);
  }
#endif
}

}  // namespace reg
