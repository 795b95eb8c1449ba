#include "lumo_check/report.h"

namespace lumo {
namespace check {

void Text::PutByte(unsigned byte) {
  if (size_ + 1 >= sizeof bytes_) return;
  bytes_[size_++] = static_cast<char>(byte);
  bytes_[size_] = 0;
}

// As UTF-8.
void Text::PutCharacter(unsigned long code_point) {
  const auto rest = [this, code_point](int shift) {
    PutByte(0x80U | (static_cast<unsigned>(code_point >> shift) & 0x3FU));
  };
  const auto lead = [this, code_point](unsigned mark, int shift) {
    PutByte(mark | static_cast<unsigned>(code_point >> shift));
  };
  if (code_point < 0x80) return lead(0, 0);
  if (code_point < 0x800) return lead(0xC0, 6), rest(0);
  if (code_point < 0x10000) return lead(0xE0, 12), rest(6), rest(0);
  return lead(0xF0, 18), rest(12), rest(6), rest(0);
}

Text &Text::Put(const char *text) {
  if (text == nullptr) text = "(null)";
  for (; *text != 0; ++text) {
    if (*text == '\n') PutByte('\r');
    PutByte(static_cast<unsigned char>(*text));
  }
  return *this;
}

Text &Text::Put(const WCHAR *text) {
  for (; *text != 0; ++text) {
    unsigned long code_point = *text;
    if (code_point >= 0xD800 && code_point < 0xDC00 && text[1] >= 0xDC00 && text[1] < 0xE000) {
      code_point = 0x10000 + ((code_point - 0xD800) << 10) + (*++text - 0xDC00U);
    }
    PutCharacter(code_point);
  }
  return *this;
}

Text &Text::Put(int number) {
  if (number < 0) PutByte('-');
  return Put(number < 0 ? 0UL - static_cast<unsigned long>(number) : static_cast<unsigned long>(number));
}

Text &Text::Put(unsigned long number, int digits) {
  char reversed[20];
  int count = 0;
  do {
    reversed[count++] = static_cast<char>('0' + number % 10);
    number /= 10;
  } while (number != 0 || count < digits);
  while (count > 0) PutByte(static_cast<unsigned char>(reversed[--count]));
  return *this;
}

void PutTime(Text *text) {
  SYSTEMTIME now;
  GetSystemTime(&now);
  text->Put(static_cast<unsigned long>(now.wYear), 4).Put("-").Put(static_cast<unsigned long>(now.wMonth), 2);
  text->Put("-").Put(static_cast<unsigned long>(now.wDay), 2).Put("T");
  text->Put(static_cast<unsigned long>(now.wHour), 2)
      .Put(":")
      .Put(static_cast<unsigned long>(now.wMinute), 2);
  text->Put(":").Put(static_cast<unsigned long>(now.wSecond), 2).Put("Z");
}

bool Report::Open(const WCHAR *path) {
  file_ = CreateFileW(path, GENERIC_WRITE, 0, nullptr, OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
  if (file_ == INVALID_HANDLE_VALUE) return false;
  SetFilePointer(file_, 0, nullptr, FILE_END);
  ticks_ = GetTickCount();
  return true;
}

void Report::Close() {
  CloseHandle(file_);
}

void Report::BeginStep(const char *word) {
  const DWORD now = GetTickCount(), passed = now - ticks_;
  ticks_ = now;
  for (DWORD limit = 100000; limit > 1 && passed < limit; limit /= 10) line_.Put(" ");
  line_.Put(static_cast<unsigned long>(passed)).Put(" ms  ").Put(word);
}

void Report::EndLine() {
  if (!line_.IsEnded()) line_.Put("\n");
  DWORD written;
  WriteFile(file_, line_.bytes(), line_.size(), &written, nullptr);
  line_.Clear();
}

}  // namespace check
}  // namespace lumo
