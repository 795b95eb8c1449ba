// fuzz/target.h: what every fuzz program is made of. Each reads an input, and aborts when the library breaks
// a promise that holds for every input; the sanitizers watch the rest.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

// The entry point that libFuzzer and replay.cpp call.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size);

namespace fuzz {

// Takes bytes off the front of an input, to choose options with; 0 when it is used up.
class Input {
 public:
  Input(const uint8_t *data, size_t size) : data_(data), size_(size) {}
  uint8_t Take() {
    if (size_ == 0) return 0;
    --size_;
    return *data_++;
  }
  std::string Rest() const { return std::string(reinterpret_cast<const char *>(data_), size_); }

 private:
  const uint8_t *data_;
  size_t size_;
};

// Ends the program with a message unless `kept` holds.
void Promise(bool kept, const char *what);

// A directory of the process's own as moduleDirectory, removed at its end; emptied by each call.
void EmptyFolder();
void WriteFile(const char *name, const std::string &bytes);
std::string ReadFile(const char *name);  // "" for a missing one

}  // namespace fuzz
