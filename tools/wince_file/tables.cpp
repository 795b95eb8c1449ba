#include "wince_file/tables.h"

#include <algorithm>
#include <string>

namespace wince_file {
namespace {

void PrintText(std::ostream &out, const std::string &label, const std::string &text) {
  out << label << ": .asciz \"" << text << "\"\n";
}

// The words of one library's table: what the system shall look for; and a zero behind them.
void PrintNames(std::ostream &out, const Definition &from, const std::string &label_prefix) {
  for (const std::string &name : from.names) {
    if (!label_prefix.empty()) out << label_prefix << name << ':';
    out << "  .4byte import." << name << '\n';
  }
  out << "  .4byte 0\n";
}

// The number in front of a name is a hint where to look first.
void PrintHints(std::ostream &out, const Definition &from) {
  for (const std::string &name : from.names) {
    out << "  .balign 2\nimport." << name << ": .2byte 0\n  .asciz \"" << name << "\"\n";
  }
}

void PrintFunction(std::ostream &out, const std::string &name) {
  out << "  .section .text." << name << ", \"ax\", %progbits\n"
      << "  FUNCTION " << name << '\n';
}

// The tables are assembled for whichever processor the compiler is told. ARM goes by BX, since the system's
// code may be of the other instruction set.
constexpr char kMacros[] =
    "#if defined(__i386__)\n"
    "  .macro FUNCTION name\n"
    "  .global \\name\n  .hidden \\name\n  .type \\name, %function\n"
    "\\name:\n"
    "  jmp *slot.\\name\n"
    "  .endm\n"
    "#else\n"
    "  .syntax unified\n"
    "  .macro FUNCTION name\n"
    "  .balign 4\n"
    "#if defined(__thumb__)\n"
    "  .thumb_func\n"
    "#else\n"
    "  .arm\n"
    "#endif\n"
    "  .global \\name\n  .hidden \\name\n  .type \\name, %function\n"
    "\\name:\n"
    "  ldr r12, 1f\n"
    "  ldr r12, [r12]\n"
    "  bx r12\n"
    "  .balign 4\n"
    "1: .4byte slot.\\name\n"
    "  .endm\n"
    "#endif\n";

}  // namespace

void PrintExports(std::ostream &out, const Definition &exports) {
  // The system finds names by halving, so they lie in the order of their bytes.
  std::vector<std::string> names = exports.names;
  std::sort(names.begin(), names.end());
  out << "  .section .edata, \"a\", %progbits\n"
      << "  .balign 4\n"
      << "  .4byte 0, 0, 0, library.exported, 1, " << names.size() << ", " << names.size()
      << ", exported.functions, exported.names, exported.numbers\n";
  out << "exported.functions:\n";
  for (const std::string &name : names) out << "  .4byte " << name << '\n';
  out << "exported.names:\n";
  for (const std::string &name : names) out << "  .4byte export." << name << '\n';
  out << "exported.numbers:\n";
  for (size_t i = 0; i < names.size(); ++i) out << "  .2byte " << i << '\n';
  PrintText(out, "library.exported", exports.library);
  for (const std::string &name : names) PrintText(out, "export." + name, name);
}

void PrintImports(std::ostream &out, const std::vector<Definition> &imports) {
  out << kMacros << "  .section .idata, \"a\", %progbits\n  .balign 4\n";
  for (const Definition &from : imports) {
    out << "  .4byte names." << from.library << ", 0, 0, library." << from.library << ", slots."
        << from.library << '\n';
  }
  out << "  .4byte 0, 0, 0, 0, 0\n";
  for (const Definition &from : imports) {
    out << "names." << from.library << ":\n";
    PrintNames(out, from, "");
  }
  for (const Definition &from : imports) {
    PrintHints(out, from);
    PrintText(out, "library." + from.library, from.library);
  }
  out << "  .section .iat, \"aw\", %progbits\n  .balign 4\n";
  for (const Definition &from : imports) {
    out << "slots." << from.library << ":\n";
    PrintNames(out, from, "slot.");
  }
  for (const Definition &from : imports) {
    for (const std::string &name : from.names) PrintFunction(out, name);
  }
}

}  // namespace wince_file
