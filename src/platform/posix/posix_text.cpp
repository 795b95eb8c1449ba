#include <cstring>

#include "platform/posix/posix_internal.h"

namespace lumo {
namespace {

constexpr uint32_t kReplacement = 0xFFFD;

// The lead bytes, what may follow them and what they begin. Only the second byte's range differs between
// them: it keeps out longer forms than needed, the surrogates and what lies beyond the last code point.
struct LeadByte {
  uint8_t first, last;
  uint8_t second_low, second_high;
  uint8_t following;
  uint8_t mask;
};
constexpr LeadByte kLeadBytes[] = {
    {0xC2, 0xDF, 0x80, 0xBF, 1, 0x1F}, {0xE0, 0xE0, 0xA0, 0xBF, 2, 0x0F}, {0xE1, 0xEC, 0x80, 0xBF, 2, 0x0F},
    {0xED, 0xED, 0x80, 0x9F, 2, 0x0F}, {0xEE, 0xEF, 0x80, 0xBF, 2, 0x0F}, {0xF0, 0xF0, 0x90, 0xBF, 3, 0x07},
    {0xF1, 0xF3, 0x80, 0xBF, 3, 0x07}, {0xF4, 0xF4, 0x80, 0x8F, 3, 0x07},
};

// Takes one code point off [*text, end). What cannot be part of a character is one U+FFFD.
uint32_t TakeUtf8(const uint8_t **text, const uint8_t *end) {
  const uint8_t lead = *(*text)++;
  if (lead < 0x80) return lead;
  for (const LeadByte &row : kLeadBytes) {
    if (lead < row.first || lead > row.last) continue;
    uint32_t code_point = lead & row.mask;
    for (int i = 0; i < row.following; ++i) {
      const uint8_t low = i == 0 ? row.second_low : 0x80, high = i == 0 ? row.second_high : 0xBF;
      if (*text == end || **text < low || **text > high) return kReplacement;
      code_point = code_point << 6 | (*(*text)++ & 0x3F);
    }
    return code_point;
  }
  return kReplacement;
}

uint32_t TakeUtf16(const WCHAR **wide, const WCHAR *end) {
  const uint32_t unit = *(*wide)++;
  if (unit < 0xD800 || unit > 0xDFFF) return unit;
  if (unit > 0xDBFF || *wide == end || **wide < 0xDC00 || **wide > 0xDFFF) return kReplacement;
  return 0x10000 + ((unit - 0xD800) << 10) + (*(*wide)++ - 0xDC00U);
}

int Fail(DWORD error) {
  lumo_SetLastError(error);
  return 0;
}

}  // namespace

int WideLength(const WCHAR *wide) {
  int length = 0;
  while (wide[length] != 0) ++length;
  return length;
}

int lumo_MultiByteToWideChar(UINT code_page, DWORD, const char *text, int length, WCHAR *wide, int capacity) {
  if (code_page != CP_UTF8 || text == nullptr || length == 0 || capacity < 0 ||
      (wide == nullptr && capacity != 0)) {
    return Fail(ERROR_INVALID_PARAMETER);
  }
  auto position = reinterpret_cast<const uint8_t *>(text);
  const uint8_t *const end = position + (length < 0 ? std::strlen(text) + 1 : static_cast<size_t>(length));
  int units = 0;
  while (position != end) {
    const uint32_t code_point = TakeUtf8(&position, end);
    const int needed = code_point < 0x10000 ? 1 : 2;
    if (capacity != 0) {
      if (capacity - units < needed) return Fail(ERROR_INSUFFICIENT_BUFFER);
      if (needed == 1) {
        wide[units] = static_cast<WCHAR>(code_point);
      } else {
        wide[units] = static_cast<WCHAR>(0xD800 + ((code_point - 0x10000) >> 10));
        wide[units + 1] = static_cast<WCHAR>(0xDC00 + (code_point & 0x3FF));
      }
    }
    units += needed;
  }
  return units;
}

int lumo_WideCharToMultiByte(UINT code_page, DWORD, const WCHAR *wide, int length, char *text, int capacity,
                             const char *default_char, BOOL *used_default) {
  if (code_page != CP_UTF8 || wide == nullptr || length == 0 || capacity < 0 ||
      (text == nullptr && capacity != 0) || default_char != nullptr || used_default != nullptr) {
    return Fail(ERROR_INVALID_PARAMETER);
  }
  const WCHAR *position = wide;
  const WCHAR *const end = wide + (length < 0 ? WideLength(wide) + 1 : length);
  int bytes = 0;
  while (position != end) {
    const uint32_t code_point = TakeUtf16(&position, end);
    const int needed = code_point < 0x80 ? 1 : code_point < 0x800 ? 2 : code_point < 0x10000 ? 3 : 4;
    if (capacity != 0) {
      if (capacity - bytes < needed) return Fail(ERROR_INSUFFICIENT_BUFFER);
      constexpr uint8_t kMarks[] = {0, 0, 0xC0, 0xE0, 0xF0};
      for (int i = needed - 1, shift = 0; i > 0; --i, shift += 6) {
        text[bytes + i] = static_cast<char>(0x80 | (code_point >> shift & 0x3F));
      }
      text[bytes] = static_cast<char>(kMarks[needed] | code_point >> 6 * (needed - 1));
    }
    bytes += needed;
  }
  return bytes;
}

}  // namespace lumo
