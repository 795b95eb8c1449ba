#include "register/process.h"

#include <chrono>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <thread>

#ifdef _WIN32
#include "support/wine.h"
#else
#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#endif

namespace test {
namespace {

constexpr char kInFile[] = "stdin";
constexpr char kOutFile[] = "stdout";
constexpr char kErrFile[] = "stderr";

// With line ends as everywhere.
std::string ReadOutput(const std::filesystem::path &file) {
  std::ifstream stream(file, std::ios::binary);
  std::string text{std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
#ifdef _WIN32
  for (size_t at; (at = text.find("\r\n")) != std::string::npos;) text.erase(at, 1);
#endif
  return text;
}

#ifdef _WIN32
HANDLE OpenFor(const std::filesystem::path &file, DWORD access, DWORD disposition) {
  SECURITY_ATTRIBUTES inherited = {sizeof inherited, nullptr, TRUE};
  return CreateFileW(file.c_str(), access, FILE_SHARE_READ | FILE_SHARE_WRITE, &inherited, disposition,
                     FILE_ATTRIBUTE_NORMAL, nullptr);
}
#else
// Takes no memory: the child of a process with threads inherits the locks they hold.
void Replace(int descriptor, const char *file, int flags) {
  const int opened = open(file, flags, 0600);
  dup2(opened, descriptor);
  close(opened);
}
#endif

}  // namespace

#ifdef _WIN32
Process::Process(const std::filesystem::path &program, const std::vector<std::string> &words,
                 const std::filesystem::path &folder, const std::string &input)
    : folder_(folder) {
  std::ofstream(folder / kInFile, std::ios::binary) << input;
  std::wstring line = L"\"" + program.wstring() + L"\"";
  for (const std::string &word : words) {
    line += L" \"";
    for (const wchar_t letter : std::filesystem::u8path(word).wstring()) {
      if (letter == L'"') line += L'\\';  // no word of a test has a backslash before one
      line += letter;
    }
    line += L"\"";
  }
  STARTUPINFOW start = {};
  start.cb = sizeof start;
  start.dwFlags = STARTF_USESTDHANDLES;
  start.hStdInput = OpenFor(folder / kInFile, GENERIC_READ, OPEN_EXISTING);
  start.hStdOutput = OpenFor(folder / kOutFile, GENERIC_WRITE, CREATE_ALWAYS);
  start.hStdError = OpenFor(folder / kErrFile, GENERIC_WRITE, CREATE_ALWAYS);
  PROCESS_INFORMATION process = {};
  const BOOL created = CreateProcessW(nullptr, line.data(), nullptr, nullptr, TRUE, 0, nullptr,
                                      folder.c_str(), &start, &process);
  for (HANDLE handle : {start.hStdInput, start.hStdOutput, start.hStdError}) CloseHandle(handle);
  if (!created) throw std::runtime_error("the program does not start");
  CloseHandle(process.hThread);
  process_ = process.hProcess;
}

Process::~Process() {
  if (!HasEnded()) {
    TerminateProcess(process_, 1);
    Wait();
  }
}

bool Process::HasEnded() {
  if (process_ == nullptr) return true;
  if (WaitForSingleObject(process_, 0) != WAIT_OBJECT_0) return false;
  DWORD status = 0;
  GetExitCodeProcess(process_, &status);
  status_ = static_cast<int>(status);
  CloseHandle(process_);
  process_ = nullptr;
  return true;
}

Outcome Process::Wait() {
  if (process_ != nullptr) WaitForSingleObject(process_, INFINITE);
  HasEnded();
  return {status_, Out(), Err()};
}
#else
Process::Process(const std::filesystem::path &program, const std::vector<std::string> &words,
                 const std::filesystem::path &folder, const std::string &input)
    : folder_(folder) {
  std::ofstream(folder / kInFile, std::ios::binary) << input;
  std::vector<std::string> copies = words;
  copies.insert(copies.begin(), program.string());
  std::vector<char *> arguments;
  for (std::string &word : copies) arguments.push_back(word.data());
  arguments.push_back(nullptr);
  process_ = fork();
  if (process_ < 0) throw std::runtime_error("the program does not start");
  if (process_ == 0) {
    std::signal(SIGHUP, SIG_DFL);  // also where the tests run under nohup
    if (chdir(folder.c_str()) != 0) _exit(127);
    Replace(STDIN_FILENO, kInFile, O_RDONLY);
    Replace(STDOUT_FILENO, kOutFile, O_WRONLY | O_CREAT | O_TRUNC);
    Replace(STDERR_FILENO, kErrFile, O_WRONLY | O_CREAT | O_TRUNC);
    execv(program.c_str(), arguments.data());
    _exit(127);
  }
}

Process::~Process() {
  if (!HasEnded()) {
    Signal(SIGKILL);
    Wait();
  }
}

void Process::Signal(int signal) const {
  kill(process_, signal);
}

bool Process::HasEnded() {
  int status = 0;
  if (process_ == 0) return true;
  if (waitpid(process_, &status, WNOHANG) == 0) return false;
  process_ = 0;
  status_ = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
  return true;
}

Outcome Process::Wait() {
  siginfo_t ignored;
  if (process_ != 0) waitid(P_PID, static_cast<id_t>(process_), &ignored, WEXITED | WNOWAIT);
  HasEnded();
  return {status_, Out(), Err()};
}
#endif

std::string Process::Out() const {
  return ReadOutput(folder_ / kOutFile);
}

std::string Process::Err() const {
  return ReadOutput(folder_ / kErrFile);
}

bool Eventually(const std::function<bool()> &is_so) {
  for (int tries = 0; tries < 3000; ++tries) {
    if (is_so()) return true;
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  }
  return false;
}

}  // namespace test
