// register/process.h: a program in a process of its own, its outputs in files.
#pragma once

#include <filesystem>
#include <functional>
#include <string>
#include <vector>

namespace test {

struct Outcome {
  int status = -1;  // on POSIX systems, of one that a signal ended: 128 and its number
  std::string out;
  std::string err;
};

class Process {
 public:
  // Starts the program in `folder`, where the files of its outputs lie too, with the input to read.
  Process(const std::filesystem::path &program, const std::vector<std::string> &words,
          const std::filesystem::path &folder, const std::string &input = "");
  ~Process();  // ends it when it still runs
  Process(const Process &) = delete;
  Process &operator=(const Process &) = delete;

  Outcome Wait();
  bool HasEnded();
  // What it has printed so far.
  std::string Out() const;
  std::string Err() const;
#ifndef _WIN32
  void Signal(int signal) const;
#endif

 private:
  std::filesystem::path folder_;
  int status_ = -1;
#ifdef _WIN32
  void *process_ = nullptr;
#else
  int process_ = 0;
#endif
};

// Waits until it is so; false after half a minute.
bool Eventually(const std::function<bool()> &is_so);

}  // namespace test
