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
    out << "  .word import." << name << '\n';
  }
  out << "  .word 0\n";
}

// The number in front of a name is a hint where to look first.
void PrintHints(std::ostream &out, const Definition &from) {
  for (const std::string &name : from.names) {
    out << "  .balign 2\nimport." << name << ": .hword 0\n  .asciz \"" << name << "\"\n";
  }
}

// By BX, since the system's code may be of the other instruction set.
void PrintFunction(std::ostream &out, const std::string &name) {
  out << "  .section .text." << name << ", \"ax\", %progbits\n"
      << "  .balign 4\n"
      << "  FUNCTION\n"
      << "  .global " << name << "\n  .hidden " << name << "\n  .type " << name << ", %function\n"
      << name << ":\n"
      << "  ldr r12, 1f\n"
      << "  ldr r12, [r12]\n"
      << "  bx r12\n"
      << "  .balign 4\n"
      << "1: .word slot." << name << '\n';
}

// Both tables are assembled for ARM or Thumb, whichever the compiler is told.
constexpr char kSyntax[] =
    "  .syntax unified\n"
    "#ifdef __thumb__\n"
    "#define FUNCTION .thumb_func\n"
    "#else\n"
    "#define FUNCTION .arm\n"
    "#endif\n";

}  // namespace

void PrintExports(std::ostream &out, const Definition &exports) {
  // The system finds names by halving, so they lie in the order of their bytes.
  std::vector<std::string> names = exports.names;
  std::sort(names.begin(), names.end());
  out << "  .section .edata, \"a\", %progbits\n"
      << "  .balign 4\n"
      << "  .word 0, 0, 0, library.exported, 1, " << names.size() << ", " << names.size()
      << ", exported.functions, exported.names, exported.numbers\n";
  out << "exported.functions:\n";
  for (const std::string &name : names) out << "  .word " << name << '\n';
  out << "exported.names:\n";
  for (const std::string &name : names) out << "  .word export." << name << '\n';
  out << "exported.numbers:\n";
  for (size_t i = 0; i < names.size(); ++i) out << "  .hword " << i << '\n';
  PrintText(out, "library.exported", exports.library);
  for (const std::string &name : names) PrintText(out, "export." + name, name);
}

void PrintImports(std::ostream &out, const std::vector<Definition> &imports) {
  out << kSyntax << "  .section .idata, \"a\", %progbits\n  .balign 4\n";
  for (const Definition &from : imports) {
    out << "  .word names." << from.library << ", 0, 0, library." << from.library << ", slots."
        << from.library << '\n';
  }
  out << "  .word 0, 0, 0, 0, 0\n";
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
