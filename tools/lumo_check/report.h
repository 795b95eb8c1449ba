// lumo_check/report.h: the report's file, a line for each thing that was tried. Every line is written as soon
// as it is known: where the program stops, the last line says what came before.
#pragma once

#include "lumo_check/system.h"

namespace lumo {
namespace check {

// A text that is put together: what does not fit is cut off.
class Text {
 public:
  Text &Put(const char *text);
  Text &Put(const WCHAR *text);
  Text &Put(int number);
  Text &Put(unsigned long number, int digits = 1);
  void Clear() { bytes_[size_ = 0] = 0; }

  const char *bytes() const { return bytes_; }
  DWORD size() const { return size_; }
  bool IsEnded() const { return size_ != 0 && bytes_[size_ - 1] == '\n'; }

 private:
  void PutByte(unsigned byte);
  void PutCharacter(unsigned long code_point);

  char bytes_[1024] = "";
  DWORD size_ = 0;
};

// The time as the library writes it, such as "2012-12-05T10:00:00Z".
void PutTime(Text *text);

class Report {
 public:
  // Goes on behind what the file holds.
  bool Open(const WCHAR *path);
  void Close();

  // A line that stands for itself, or several of them.
  template <typename... Parts>
  void Say(const Parts &...parts) {
    (line_.Put(parts), ...);
    EndLine();
  }
  // What was tried and came as it should, or not; behind the milliseconds since the line before.
  template <typename... Parts>
  void Step(bool is_right, const Parts &...parts) {
    ++(is_right ? right_ : failed_);
    BeginStep(is_right ? "ok      " : "FAILED  ");
    Say(parts...);
  }
  // What is neither right nor wrong, and good to know.
  template <typename... Parts>
  void Note(const Parts &...parts) {
    BeginStep("note    ");
    Say(parts...);
  }

  int right() const { return right_; }
  int failed() const { return failed_; }

 private:
  void BeginStep(const char *word);
  void EndLine();

  HANDLE file_ = nullptr;
  DWORD ticks_ = 0;
  int right_ = 0, failed_ = 0;
  Text line_;
};

}  // namespace check
}  // namespace lumo
