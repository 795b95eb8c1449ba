// architecture/formats_test.cpp: every format of the library is one that its own formatter knows.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <regex>
#include <string>

namespace {

namespace fs = std::filesystem;

TEST(Formats, UseOnlyWhatTheFormatterKnows) {
  const std::regex text(R"re("(?:[^"\\]|\\.)*")re"), percent("%[^a-zA-Z%]*[a-zA-Z%]?"),
      known(R"re(%(0?[0-9]*|\*)(\.([0-9]+|\*))?[dsxX%])re");
  int formats = 0;
  for (const fs::directory_entry &entry : fs::recursive_directory_iterator(LUMO_SOURCE_DIR "/src")) {
    // In platform/ another formatter writes texts for a debugger.
    if (entry.path().string().find("/src/platform/") != std::string::npos) continue;
    if (!entry.is_regular_file() || entry.path().filename() == "debug_check.cpp") continue;
    std::ifstream source(entry.path());
    for (std::string line; std::getline(source, line);) {
      line.resize(std::min(line.find("//"), line.size()));
      if (line.find("scanf(") != std::string::npos) continue;
      for (std::sregex_iterator literal(line.begin(), line.end(), text), none; literal != none; ++literal) {
        const std::string bytes = literal->str();
        for (std::sregex_iterator found(bytes.begin(), bytes.end(), percent); found != none; ++found) {
          EXPECT_TRUE(std::regex_match(found->str(), known)) << entry.path() << ": " << line;
          ++formats;
        }
      }
    }
  }
  EXPECT_GT(formats, 200);
}

}  // namespace
