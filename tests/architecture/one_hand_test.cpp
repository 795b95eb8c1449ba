// architecture/one_hand_test.cpp: one way to write what the formatter and clang-tidy do not see.
#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <regex>
#include <set>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

namespace {

namespace fs = std::filesystem;

const fs::path kTree = LUMO_SOURCE_DIR;
constexpr size_t kColumns = 110;

struct TextFile {
  std::string name;  // "src/engine/request.cpp"
  std::vector<std::string> lines;
};

std::vector<TextFile> FilesOf(const std::vector<std::string> &folders,
                              const std::set<std::string> &extensions = {".h", ".hpp", ".cpp"}) {
  std::vector<TextFile> files;
  for (const std::string &folder : folders) {
    for (const fs::directory_entry &entry : fs::recursive_directory_iterator(kTree / folder)) {
      if (extensions.count(entry.path().extension().string()) == 0) continue;
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
    if (!is_header && (file.name.rfind("tests/", 0) != 0 || fs::exists(path.replace_extension(".h")))) {
      continue;
    }
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

// Braces that one short statement does not need.
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

// The file as one text, with blanks for its comments, what its texts hold and the preprocessor's own lines.
std::string CodeOf(const TextFile &file) {
  std::string code;
  for (const std::string &line : file.lines) code += line + '\n';
  size_t blank_to = 0;
  const auto blank = [&](size_t from, size_t end) {
    blank_to = std::min(end, code.size());
    for (size_t i = from; i < blank_to; ++i) {
      if (code[i] != '\n') code[i] = ' ';
    }
  };
  const auto after = [&](const std::string &text, size_t from) {
    const size_t at = code.find(text, from);
    return at == std::string::npos ? code.size() : at + text.size();
  };
  bool is_blank_line = true;
  for (size_t i = 0; i < code.size(); i = std::max(i + 1, blank_to)) {
    const bool begins_line = is_blank_line;
    is_blank_line = code[i] == '\n' || (is_blank_line && code[i] == ' ');
    const char before = i == 0 ? '\n' : code[i - 1];
    if (code.compare(i, 2, "//") == 0) {
      blank(i, code.find('\n', i));
    } else if (code.compare(i, 2, "/*") == 0) {
      blank(i, after("*/", i + 2));
    } else if (code[i] == '"' && before == 'R') {
      const size_t bracket = code.find('(', i);
      const size_t end = after(")" + code.substr(i + 1, bracket - i - 1) + "\"", bracket);
      blank(i + 1, end - 1);
      ++blank_to;
    } else if (code[i] == '"' || (code[i] == '\'' && std::isdigit(static_cast<unsigned char>(before)) == 0)) {
      size_t end = i + 1;
      while (end < code.size() && code[end] != code[i]) end += code[end] == '\\' ? 2U : 1U;
      blank(i + 1, end);
      ++blank_to;
    } else if (code[i] == '\\' && code.compare(i, 2, "\\\n") == 0) {
      code[i] = ' ';
    } else if (begins_line && code[i] == '#' && code.compare(i, 7, "#define") != 0) {
      blank(i, code.find('\n', i));
    }
  }
  return code;
}

// Behind the bracket that closes the one at `open`.
size_t BehindBracket(const std::string &code, size_t open) {
  int depth = 0;
  for (size_t i = open; i < code.size(); ++i) {
    if (code[i] == '(') ++depth;
    if (code[i] == ')' && --depth == 0) return i + 1;
  }
  return code.size();
}

// The lines, counted from 1, of the conditions, loops and elses whose body stands below without braces.
std::vector<size_t> BodiesWithoutBraces(const std::string &code) {
  const auto is_in_name = [&](size_t i) {
    return std::isalnum(static_cast<unsigned char>(code[i])) != 0 || code[i] == '_';
  };
  std::vector<size_t> lines;
  size_t line = 1;
  for (size_t begin = 0, end = 0; begin < code.size(); begin = end) {
    end = begin + 1;
    if (code[begin] == '\n') ++line;
    if (!is_in_name(begin)) continue;
    while (end < code.size() && is_in_name(end)) ++end;
    const std::string word = code.substr(begin, end - begin);
    size_t head_end = end;
    if (word == "if" || word == "for" || word == "while") {
      const size_t open = code.find('(', end);
      if (open == std::string::npos) break;
      head_end = BehindBracket(code, open);
    } else if (word != "else" && word != "do") {
      continue;
    }
    const size_t body = code.find_first_not_of(" \n", head_end);
    if (body == std::string::npos || code[body] == '{' || code.find('\n', head_end) > body) continue;
    lines.push_back(line);
  }
  return lines;
}

TEST(OneHand, MissingBracesAreFound) {
  const auto lines = [](const std::string &text) {
    TextFile file;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);) file.lines.push_back(line);
    return BodiesWithoutBraces(CodeOf(file));
  };
  using Lines = std::vector<size_t>;
  EXPECT_EQ(lines("if (a)\n  b();\n"), Lines({1}));
  EXPECT_EQ(lines("x();\nfor (int i : {1, 2})\n  if (a) b();\n"), Lines({2}));
  EXPECT_EQ(lines("while (a(b) &&\n       c)\n  d();\n"), Lines({1}));
  EXPECT_EQ(lines("if (a) {\n} else\n  b();\n"), Lines({2}));
  EXPECT_EQ(lines("if (a) {\n} else if (b)\n  c();\n"), Lines({2}));
  EXPECT_EQ(lines("do\n  a();\nwhile (b);\n"), Lines({1}));
  EXPECT_EQ(lines("if (a)  // why\n  b();\n"), Lines({1}));
  EXPECT_EQ(lines("if constexpr (a)\n  b();\n"), Lines({1}));
  EXPECT_EQ(lines("#define A \\\n  if (b) \\\n    c()\n"), Lines({2}));
  EXPECT_EQ(lines("f(R\"x(\"if)x\");\nif (a == ')' || a == 10'000 || a == '\"')\n  b(\"(\");\n"), Lines({2}));
  EXPECT_EQ(lines("if (a) b();\nif (a &&\n    b) {\n  c();\n}\n"), Lines());
  EXPECT_EQ(lines("do {\n  a();\n} while (b);\nif (c) {\n} else {\n}\n"), Lines());
  EXPECT_EQ(lines("// if (a)\n/* if (a)\n*/ b();\ntext = \"if (a)\\\"\"\n    \"b\";\n"), Lines());
  EXPECT_EQ(lines("text = R\"(\nif (a)\n  b();\n)\";\nchecks_if(a)\n    .b();\n"), Lines());
  EXPECT_EQ(lines("#if (A)\nb();\n#else\nc();\n#endif\n"), Lines());
}

TEST(OneHand, ABodyBelowItsConditionHasBraces) {
  for (const TextFile &file : FilesOf({"src", "tools", "tests", "bench", "fuzz", "include", "examples"},
                                      {".h", ".hpp", ".cpp", ".c"})) {
    for (const size_t line : BodiesWithoutBraces(CodeOf(file))) {
      ADD_FAILURE() << file.name << ":" << line << ": " << file.lines[line - 1];
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

// One enumerator of lumo.h on `line`, "  ERR_BILL_OPEN = -105,", or one row of the tests' table of them,
// "    {-105, ERR_BILL_OPEN,": its code and its name. No name if it is neither.
std::pair<int, std::string> ResultCodeOf(const std::string &line) {
  int code = 0;
  char name[64] = "";
  if (std::sscanf(line.c_str(), " ERR_%50[A-Z_] = %d", name, &code) == 2 ||
      std::sscanf(line.c_str(), " {%d, ERR_%50[A-Z_],", &code, name) == 2) {
    return {code, std::string("ERR_") + name};
  }
  return {0, ""};
}

TEST(OneHand, EachResultCodeHasItsRowInTheTestsTable) {
  std::vector<std::pair<int, std::string>> promised, expected;
  const std::string lowest_is = "constexpr int32_t kLowestCode = ";
  std::string lowest;
  const auto take = [](const TextFile &file, std::vector<std::pair<int, std::string>> *codes) {
    for (const std::string &line : file.lines) {
      if (const auto code = ResultCodeOf(line); !code.second.empty()) codes->push_back(code);
    }
    std::sort(codes->begin(), codes->end());
  };
  for (const TextFile &file : FilesOf({"include", "tests/support", "src/foundation"})) {
    if (file.name == "include/lumo.h") take(file, &promised);
    if (file.name == "tests/support/result_codes.h") take(file, &expected);
    if (file.name != "src/foundation/result_codes.cpp") continue;
    for (const std::string &line : file.lines) {
      if (line.rfind(lowest_is, 0) == 0) lowest = line.substr(lowest_is.size());
    }
  }
  ASSERT_EQ(promised.size(), 41U);
  EXPECT_EQ(expected, promised);
  EXPECT_EQ(lowest, promised[0].second + ";") << "a code below it would have no message";
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
