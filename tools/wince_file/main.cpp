// wince_file: makes the file for the Windows CE terminals whose format no linker here writes. A linker for
// ELF does the linking; this program does what comes before it and behind it:
//
//   wince_file tables TABLES.S [--exports LIBRARY.def] SYSTEM.def...
//       The tables of exports and imports as assembler, to be linked in.
//   wince_file write x86|armv4|armv7 LINKED FILE
//       Writes the terminal's file.
#include <fstream>
#include <iostream>
#include <iterator>
#include <stdexcept>
#include <string>
#include <vector>

#include "wince_file/tables.h"
#include "wince_file/terminal_file.h"

namespace {

void WriteTables(const std::vector<std::string> &words) {
  auto word = words.begin() + 2;
  std::ofstream out(words[1]);
  if (*word == "--exports" && word + 1 != words.end()) {
    wince_file::PrintExports(out, wince_file::ReadDefinitionFile(word[1]));
    word += 2;
  }
  std::vector<wince_file::Definition> imports;
  for (; word != words.end(); ++word) imports.push_back(wince_file::ReadDefinitionFile(*word));
  wince_file::PrintImports(out, imports);
  if (!out.flush()) throw std::runtime_error(words[1] + " cannot be written");
}

void Write(const std::string &flavour, const std::string &from, const std::string &to) {
  std::ifstream in(from, std::ios::binary);
  const wince_file::Bytes linked{std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
  wince_file::Bytes file;
  try {
    file =
        wince_file::MakeTerminalFile(wince_file::FindFlavour(flavour), wince_file::ReadLinkedImage(linked));
  } catch (const std::runtime_error &error) {
    throw std::runtime_error(from + ": " + error.what());
  }
  std::ofstream out(to, std::ios::binary);
  out.write(reinterpret_cast<const char *>(file.data()), static_cast<std::streamsize>(file.size()));
  if (!out.flush()) throw std::runtime_error(to + " cannot be written");
}

}  // namespace

int main(int count, char **arguments) {
  const std::vector<std::string> words(arguments + 1, arguments + count);
  try {
    if (words.size() >= 3 && words[0] == "tables") {
      WriteTables(words);
    } else if (words.size() == 4 && words[0] == "write") {
      Write(words[1], words[2], words[3]);
    } else {
      throw std::runtime_error(
          "tables TABLES.S [--exports LIBRARY.def] SYSTEM.def... | write x86|armv4|armv7 LINKED FILE");
    }
  } catch (const std::exception &error) {
    std::cerr << "wince_file: " << error.what() << '\n';
    return 1;
  }
  return 0;
}
