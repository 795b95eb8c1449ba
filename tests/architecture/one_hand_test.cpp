// architecture/one_hand_test.cpp: one way to write what the formatter and clang-tidy do not see.
#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <regex>
#include <set>
#include <string>
#include <vector>

namespace {

namespace fs = std::filesystem;

const fs::path kTree = LUMO_SOURCE_DIR;
constexpr size_t kColumns = 110;

struct TextFile {
  std::string name;  // "src/engine/request.cpp"
  std::vector<std::string> lines;
};

std::vector<TextFile> FilesOf(const std::vector<std::string> &folders) {
  std::vector<TextFile> files;
  for (const std::string &folder : folders) {
    for (const fs::directory_entry &entry : fs::recursive_directory_iterator(kTree / folder)) {
      const std::string extension = entry.path().extension().string();
      if (extension != ".h" && extension != ".hpp" && extension != ".cpp") continue;
      TextFile file;
      file.name = entry.path().lexically_relative(kTree).generic_string();
      std::ifstream stream(entry.path());
      for (std::string line; std::getline(stream, line);) file.lines.push_back(line);
      files.push_back(file);
    }
  }
  return files;
}

std::vector<TextFile> AllFiles() {
  return FilesOf({"src", "tools", "tests", "bench", "fuzz"});
}

// The line without its comment and what its texts hold.
std::string CodeOf(const std::string &line) {
  std::string code;
  bool in_text = false;
  for (size_t i = 0; i < line.size(); ++i) {
    if (!in_text && line.compare(i, 2, "//") == 0) break;
    if (line[i] == '"' && (i == 0 || line[i - 1] != '\'')) in_text = !in_text;
    if (in_text && line[i] == '\\') ++i;
    if (!in_text) code += line[i];
  }
  return code;
}

TEST(OneHand, FindsTheFiles) {
  EXPECT_GT(AllFiles().size(), 200U);
}

// The file as an #include names it: "engine/request.h", "engine/request_test.cpp", "bench/cost.h".
std::string IncludedAs(const std::string &name) {
  for (const char *root : {"src/", "tests/", "tools/"}) {
    if (name.rfind(root, 0) == 0) return name.substr(std::strlen(root));
  }
  return name;
}

// "// engine/request.h: what every request carries". A file of tests says it too, if it has no header.
TEST(OneHand, AHeaderAndATestSayFirstWhatTheyAreFor) {
  for (const TextFile &file : AllFiles()) {
    fs::path path = kTree / file.name;
    const bool is_header = path.extension() == ".h";
    if (!is_header && (file.name.rfind("tests/", 0) != 0 || fs::exists(path.replace_extension(".h"))))
      continue;
    const std::string begin = "// " + IncludedAs(file.name) + ": ";
    ASSERT_FALSE(file.lines.empty()) << file.name;
    EXPECT_EQ(file.lines[0].rfind(begin, 0), 0U) << file.name << ": " << file.lines[0];
    EXPECT_EQ(std::count(file.lines.begin(), file.lines.end(), "#pragma once"), is_header ? 1 : 0)
        << file.name;
  }
}

bool IsComment(const std::string &line) {
  const size_t begin = line.find_first_not_of(' ');
  return begin != std::string::npos && line.compare(begin, 2, "//") == 0;
}

// "// ---- Files ----" with an empty line on either side; any other comment belongs to the line below it.
TEST(OneHand, ALineOfItsOwnIsTheHeadOfASection) {
  const std::regex head(R"(^ *// ---- [^-].*[^-.] ----$)"), ruled(R"(^ *// ?--+( .*)?$)");
  for (const TextFile &file : AllFiles()) {
    for (size_t i = 1; i + 1 < file.lines.size(); ++i) {
      const std::string &line = file.lines[i];
      const bool alone = IsComment(line) && file.lines[i - 1].empty() && file.lines[i + 1].empty();
      EXPECT_EQ(alone, std::regex_match(line, head)) << file.name << ": " << line;
      EXPECT_EQ(std::regex_match(line, ruled), std::regex_match(line, head)) << file.name << ": " << line;
    }
  }
}

// What is left over where a comment was wrapped: the sentence is better said a little shorter. In lumo.h, as
// C has it: " * the last of it. */"
TEST(OneHand, ACommentDoesNotEndInALineOfAWordOrTwo) {
  const std::regex rest(R"(^( *(?:///?|\*) +)[^ ]+( [^ ]+)?(?: \*/)?$)"),
      above(R"(^( *(?:///?|\*) +)[^ ].*[^.:;]$)"), goes_on(R"(^ \* +[^ /].*)");
  for (const TextFile &file : FilesOf({"src", "tools", "tests", "bench", "fuzz", "include"})) {
    for (size_t i = 1; i < file.lines.size(); ++i) {
      std::smatch last, before;
      if (i + 1 < file.lines.size() &&
          (IsComment(file.lines[i + 1]) || std::regex_match(file.lines[i + 1], goes_on))) {
        continue;
      }
      if (!std::regex_match(file.lines[i], last, rest) ||
          !std::regex_match(file.lines[i - 1], before, above)) {
        continue;
      }
      EXPECT_NE(last[1], before[1]) << file.name << ": " << file.lines[i];
    }
  }
}

// The names that stand before an opening bracket and after nothing that makes them another's: "std::", "->".
std::vector<std::string> BareCalls(const std::string &code) {
  std::vector<std::string> names;
  for (size_t open = code.find('('); open != std::string::npos; open = code.find('(', open + 1)) {
    size_t begin = open;
    while (begin > 0 &&
           (std::isalnum(static_cast<unsigned char>(code[begin - 1])) != 0 || code[begin - 1] == '_')) {
      --begin;
    }
    if (begin < open && (begin == 0 || std::strchr(":*.>", code[begin - 1]) == nullptr)) {
      names.push_back(code.substr(begin, open - begin));
    }
  }
  return names;
}

TEST(OneHand, FunctionsOfTheCLibraryAreCalledByTheirFullName) {
  const std::set<std::string> library = {
      "memcpy",  "memset",  "memcmp",   "memmove", "memchr",   "strlen",   "strcmp",    "strncmp",
      "strcpy",  "strncpy", "strchr",   "strrchr", "strstr",   "strcat",   "strtol",    "puts",
      "fputs",   "fputc",   "fopen",    "fclose",  "fflush",   "fwrite",   "fread",     "printf",
      "vprintf", "fprintf", "vfprintf", "sprintf", "vsprintf", "snprintf", "vsnprintf", "sscanf",
      "malloc",  "calloc",  "realloc",  "free",    "exit",     "abort"};
  for (const TextFile &file : AllFiles()) {
    for (const std::string &line : file.lines) {
      if (line.find("extern \"") != std::string::npos) continue;  // one that is declared or replaced
      for (const std::string &name : BareCalls(CodeOf(line))) {
        EXPECT_EQ(library.count(name), 0U) << file.name << ": " << line;
      }
    }
  }
}

// clang-tidy sees braces that are missing; this sees those that one short statement does not need.
TEST(OneHand, AShortStatementStandsOnTheLineOfItsCondition) {
  const std::regex gtest(R"(^ *(EXPECT|ASSERT|FAIL|ADD)\w*\(.*)");  // holds an if of its own
  const std::regex head(R"(^( *)(if|for|while)( constexpr)? \(.*\) \{$)"), statement(R"(^ *[^{}#/ ].*;$)"),
      declaration(R"(^ *(const|constexpr|static|auto|struct|using) .*)"),
      inner(R"(^ *(if|for|while|do|case|default|switch)\b.*)");
  for (const TextFile &file : AllFiles()) {
    for (size_t i = 0; i + 2 < file.lines.size(); ++i) {
      std::smatch match;
      if (!std::regex_match(file.lines[i], match, head)) continue;
      const std::string &body = file.lines[i + 1];
      if (file.lines[i + 2] != match[1].str() + "}") continue;
      if (!std::regex_match(body, statement) || std::regex_match(body, declaration) ||
          std::regex_match(body, inner) || std::regex_match(body, gtest) ||
          body.find("//") != std::string::npos) {
        continue;
      }
      const size_t length = file.lines[i].size() - 1 + body.size() - body.find_first_not_of(' ');
      EXPECT_GT(length, kColumns) << file.name << ": " << file.lines[i];
    }
  }
}

TEST(OneHand, NamespacesFollowEachOther) {
  for (const TextFile &file : AllFiles()) {
    for (size_t i = 0; i + 2 < file.lines.size(); ++i) {
      EXPECT_FALSE(file.lines[i].rfind("namespace ", 0) == 0 && file.lines[i + 1].empty() &&
                   file.lines[i + 2] == "namespace {")
          << file.name;
    }
  }
}

// The result codes come from foundation/result_codes.h. lumo.h itself is for those that define its calls.
TEST(OneHand, ResultCodesComeFromOneHeader) {
  for (const TextFile &file : FilesOf({"src"})) {
    const bool defines_calls = file.name.rfind("src/api/", 0) == 0 ||
                               file.name.find("_attach.cpp") != std::string::npos ||
                               file.name == "src/foundation/result_codes.h";
    for (const std::string &line : file.lines) {
      EXPECT_TRUE(defines_calls || line != "#include \"lumo.h\"") << file.name;
    }
  }
}

// Inside platform/posix/ a bare name is the operating system's own. The names of the library's calls are
// given to the layers above alone, so none of these files can call ours by mistake.
TEST(OneHand, PosixFilesDoNotSeeTheNamesAbove) {
  int files = 0;
  for (const TextFile &file : FilesOf({"src/platform/posix"})) {
    if (file.name == "src/platform/posix/posix_attach.cpp") continue;  // it makes no call of the system
    const bool gives_names = file.name == "src/platform/posix/posix_platform.h";
    ++files;
    for (const std::string &line : file.lines) {
      EXPECT_EQ(line.find("#include \"platform/platform.h\""), std::string::npos) << file.name;
      EXPECT_EQ(line.find("#include \"platform/posix/posix_platform.h\""), std::string::npos) << file.name;
      EXPECT_TRUE(gives_names || line != "#include \"platform/win_names.h\"") << file.name;
    }
  }
  EXPECT_GT(files, 6);
}

}  // namespace
