#include "utf8.h"

#include <algorithm>

namespace reg {

size_t CharacterBytes(std::string_view text, size_t at) {
  const auto lead = static_cast<unsigned char>(text[at]);
  if (lead < 0x80) return 1;
  const size_t length = lead >= 0xC2 && lead < 0xE0   ? 2
                        : lead >= 0xE0 && lead < 0xF0 ? 3
                        : lead >= 0xF0 && lead < 0xF5 ? 4
                                                      : 0;
  if (length == 0 || at + length > text.size()) return 0;
  const auto next = static_cast<unsigned char>(text[at + 1]);
  if ((lead == 0xE0 && next < 0xA0) || (lead == 0xED && next > 0x9F) || (lead == 0xF0 && next < 0x90) ||
      (lead == 0xF4 && next > 0x8F)) {
    return 0;
  }
  for (size_t i = 1; i < length; ++i) {
    if ((static_cast<unsigned char>(text[at + i]) & 0xC0) != 0x80) return 0;
  }
  return length;
}

std::string Mended(std::string_view text) {
  std::string mended;
  for (size_t at = 0; at < text.size();) {
    const size_t length = CharacterBytes(text, at);
    mended.append(length != 0 ? text.substr(at, length) : "?");
    at += std::max<size_t>(length, 1);
  }
  return mended;
}

}  // namespace reg
