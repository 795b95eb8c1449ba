// architecture/one_hand_test.cpp: one way to write what the formatter and clang-tidy do not see.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <regex>
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
      if (extension != ".h" && extension != ".cpp") continue;
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

// The line without its comment and its texts.
std::string CodeOf(const std::string &line) {
  static const std::regex text(R"re("(?:[^"\\]|\\.)*")re");
  const std::string code = std::regex_replace(line, text, "\"\"");
  return code.substr(0, code.find("//"));
}

TEST(OneHand, FindsTheFiles) {
  EXPECT_GT(AllFiles().size(), 200U);
}

// "// engine/request.h: what every request carries", with the folder as files include it.
TEST(OneHand, AHeaderSaysFirstWhatItIsFor) {
  for (const TextFile &file : AllFiles()) {
    const fs::path path = file.name;
    if (path.extension() != ".h") continue;
    const std::string folder = path.parent_path().filename().string();
    const std::string begin = folder + "/" + path.filename().string() + ": ";
    ASSERT_FALSE(file.lines.empty()) << file.name;
    EXPECT_EQ(file.lines[0].rfind("// ", 0), 0U) << file.name;
    EXPECT_NE(file.lines[0].find(begin), std::string::npos) << file.name << ": " << file.lines[0];
    bool once = false;
    for (const std::string &line : file.lines) once = once || line == "#pragma once";
    EXPECT_TRUE(once) << file.name;
  }
}

TEST(OneHand, FunctionsOfTheCLibraryAreCalledByTheirFullName) {
  const std::regex bare(
      R"((^|[^:*\w.>])(mem(cpy|set|cmp|move|chr)|str(len|n?cmp|n?cpy|r?chr|str|cat|tol)|f?puts|fputc|fopen|)"
      R"(fclose|fflush|fwrite|fread|v?f?printf|v?sn?printf|sscanf|malloc|calloc|realloc|free|exit|abort)\()");
  for (const TextFile &file : AllFiles()) {
    for (const std::string &line : file.lines) {
      const std::string code = CodeOf(line);
      if (code.find("extern \"\"") != std::string::npos) continue;  // one that is declared or replaced
      EXPECT_FALSE(std::regex_search(code, bare)) << file.name << ": " << line;
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
    ++files;
    for (const std::string &line : file.lines) {
      EXPECT_EQ(line.find("#include \"platform/platform.h\""), std::string::npos) << file.name;
      EXPECT_EQ(line.find("#include \"platform/posix/posix_platform.h\""), std::string::npos) << file.name;
    }
  }
  EXPECT_GT(files, 6);
}

}  // namespace
