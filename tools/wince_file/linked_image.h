// wince_file/linked_image.h: what the linker made: a program of ARM or x86 in ELF, linked with
// --emit-relocs by file.ld.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace wince_file {

using Bytes = std::vector<unsigned char>;

// Addresses are relative to the place that the image was linked for.
struct Part {
  std::string name;
  uint32_t address, size;
  bool is_empty;  // nothing but zeroes, and no bytes
  Bytes bytes;
};

struct LinkedImage {
  bool is_x86;  // otherwise ARM
  uint32_t linked_for;
  uint32_t entry_point;     // odd in Thumb code
  std::vector<Part> parts;  // all that is loaded, in order
  // Where whole addresses lie, which move with the file; in order. The tables of imports and exports hold
  // none: what they point to is relative already.
  std::vector<uint32_t> addresses;
};

// Throws std::runtime_error for what is no such program, or holds what a terminal's loader does not move.
LinkedImage ReadLinkedImage(const Bytes &file);

// The tables' sections: see tables.h.
bool IsTable(const std::string &name);

}  // namespace wince_file
