// wince_file/tables.h: the tables of exports and imports, as assembler for the compiler of the library.
#pragma once

#include <ostream>
#include <vector>

#include "wince_file/definition.h"

namespace wince_file {

// The table goes into section .edata. Everything in it lies on its own size.
void PrintExports(std::ostream &out, const Definition &exports);

// The table goes into section .idata, the slots for the addresses into .iat; and for each import there is a
// function of its name in .text, which goes where its slot says.
void PrintImports(std::ostream &out, const std::vector<Definition> &imports);

}  // namespace wince_file
