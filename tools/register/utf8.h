// register/utf8.h: texts that may hold bytes that are no UTF-8.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace reg {

// How many bytes at `at` are a character; 0: none.
size_t CharacterBytes(std::string_view text, size_t at);

// With "?" in place of each byte that is part of no character.
std::string Mended(std::string_view text);

}  // namespace reg
