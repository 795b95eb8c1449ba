// wince/loader.h: loads a file of Windows CE into a program of Linux on the same processor, as the terminal's
// system would: into memory of its own, moved from where it was linked for, each section with its own
// protection, its imports bound to this program's stand-ins (system_calls.h). It is stricter than a terminal:
// what one of them might refuse or stumble over is refused here.
#pragma once

#include <cstdint>
#include <string>

namespace wince {

struct Module;

// The place of a file's image in memory, for whoever watches it from outside.
struct Place {
  uintptr_t address;
  uint32_t size;
};

// Loads a library and calls its entry point. Throws std::runtime_error, which says what is wrong with the
// file, or that its entry point refuses. A second load of a file is another library. Nothing is unloaded.
// With LUMO_LOAD_AT in the environment, a hexadecimal address, the files lie there, one behind the other.
Module *Load(const std::string &path);

// An export's address; null when there is none of that name.
void *Find(Module *module, const std::string &name);

// Loads a program and runs it, with this file as the process's own, until it ends the process or returns its
// status. Throws as Load does.
int Run(const std::string &path);

// Of a module, or of the running program for a null module; "" when there is none.
std::string PathOf(const void *module);
Place PlaceOf(const Module *module);

}  // namespace wince
