// architecture/exports_posix_test.cpp: what leaves the library file, and what it needs.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>
#include <iterator>
#include <memory>
#include <regex>
#include <set>
#include <sstream>
#include <string>

namespace {

// A path as one word of a shell's command.
std::string Quoted(const std::string &path) {
  std::string quoted = "'";
  for (const char byte : path) quoted += byte == '\'' ? "'\\''" : std::string(1, byte);
  return quoted + "'";
}

// Of a program run with these options on a file.
std::string Output(const std::string &program, const std::string &options,
                   const std::string &file = LUMO_LIBRARY_FILE) {
  const std::string command = Quoted(program) + " " + options + " " + Quoted(file);
  const std::unique_ptr<FILE, int (*)(FILE *)> pipe(popen(command.c_str(), "r"), pclose);
  std::string text;
  char buffer[4096];
  for (size_t count; (count = std::fread(buffer, 1, sizeof buffer, pipe.get())) > 0;) {
    text.append(buffer, count);
  }
  return text;
}

std::set<std::string> DeclaredCalls() {
  std::ifstream stream(LUMO_SOURCE_DIR "/include/lumo.h");
  const std::string header{std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
  std::set<std::string> names;
  const std::regex declaration("LUMO_API\\s+[A-Za-z_ *]+[ *]([A-Za-z]+)\\(");
  for (auto match = std::sregex_iterator(header.begin(), header.end(), declaration);
       match != std::sregex_iterator(); ++match) {
    names.insert((*match)[1]);
  }
  return names;
}

TEST(LibraryFile, ExportsExactlyTheCallsOfItsHeader) {
  std::set<std::string> exported;
  std::istringstream lines(Output(LUMO_NM, "-D --defined-only --format=posix"));
  for (std::string line; std::getline(lines, line);) exported.insert(line.substr(0, line.find(' ')));
  EXPECT_EQ(exported, DeclaredCalls());
  EXPECT_EQ(exported.size(), 55U);
}

// What a linked register asks the system for: it changes only when a register must be built anew.
TEST(LibraryFile, IsNamedAfterItsMajorVersion) {
  EXPECT_THAT(Output(LUMO_READELF, "-d"), testing::HasSubstr("Library soname: [liblumo.so.1]"));
}

TEST(LibraryFile, NeedsOnlyTheCLibrary) {
#if defined(__SANITIZE_ADDRESS__)
  const std::string allowed = "(lib(c|asan|ubsan|m|gcc_s|stdc\\+\\+)|ld-linux.*)\\.so.*";
#else
  const std::string allowed = "libc\\.so.*|ld-linux.*\\.so.*";
#endif
  const std::string dynamic = Output(LUMO_READELF, "-d");
  const std::regex needed("\\(NEEDED\\).*\\[(.*)\\]");
  int count = 0;
  for (auto match = std::sregex_iterator(dynamic.begin(), dynamic.end(), needed);
       match != std::sregex_iterator(); ++match) {
    EXPECT_TRUE(std::regex_match((*match)[1].str(), std::regex(allowed))) << (*match)[1];
    ++count;
  }
  EXPECT_GT(count, 0);
}

// Of the library's own code, with those that stand for the system's calls.
std::set<std::string> Functions(const std::string &file) {
  std::set<std::string> names;
  std::istringstream lines(Output(LUMO_NM, "--defined-only --format=posix --demangle", file));
  const std::regex function(R"((lumo::\w+|lumo_\w+)(\(.*)? [tT] .*)");
  std::smatch match;
  for (std::string line; std::getline(lines, line);) {
    if (std::regex_match(line, match, function)) names.insert(match[1]);
  }
  return names;
}

TEST(LibraryFile, HoldsNoFunctionThatNoCallUses) {
  const std::set<std::string> all = Functions(LUMO_STATIC_LIBRARY);
  const std::set<std::string> linked = Functions(LUMO_LIBRARY_FILE);
  EXPECT_GT(linked.size(), 100U);
  for (const char *name :
       {"lumo::InitConfig", "lumo::SaveConfig", "lumo::GetAdProcess", "lumo::StringAppendFormat",
        "lumo::FileCopy", "lumo::FileRead", "lumo::JsonPrinterPretty", "lumo::Md5Hex", "lumo::SetPrinterFlag",
        "lumo_CopyFileW"}) {
    EXPECT_EQ(all.count(name), 1U) << name;
    EXPECT_EQ(linked.count(name), 0U) << name;
  }
}

}  // namespace
