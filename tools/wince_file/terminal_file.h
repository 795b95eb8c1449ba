// wince_file/terminal_file.h: the terminal's file made of a linked image.
#pragma once

#include <string>

#include "wince_file/linked_image.h"

namespace wince_file {

// A kind of terminal.
struct Flavour {
  const char *name;
  uint16_t machine;
  uint16_t system;  // the least version
  bool is_x86, is_thumb;
};

// "x86", "armv4" or "armv7"; throws std::runtime_error for another name.
const Flavour &FindFlavour(const std::string &name);

// A library when the image exports something, otherwise a program. The same image gives the same bytes.
// Throws std::runtime_error for an image of another instruction set, and for one whose parts do not lie as
// file.ld puts them.
Bytes MakeTerminalFile(const Flavour &flavour, const LinkedImage &image);

}  // namespace wince_file
