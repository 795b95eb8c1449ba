// architecture/rooms_test.cpp: a line of code knows its room.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <functional>
#include <map>
#include <regex>
#include <set>
#include <string>
#include <vector>

namespace {

namespace fs = std::filesystem;

const fs::path kSource = fs::path(LUMO_SOURCE_DIR) / "src";

// A layer may include its own files and those of the layers named here.
const std::map<std::string, std::set<std::string>> kMayInclude = {
    {"api",
     {"engine", "protocol", "record", "journal", "updater", "config", "json", "foundation", "platform"}},
    {"engine", {"protocol", "record", "journal", "config", "json", "foundation", "platform"}},
    {"protocol", {"record", "journal", "config", "json", "foundation", "platform"}},
    {"record", {"config", "json", "foundation", "platform"}},
    {"journal", {"foundation", "platform"}},
    {"updater", {"json", "foundation", "platform"}},
    {"config", {"json", "foundation", "platform"}},
    {"json", {"foundation", "platform"}},
    {"foundation", {"platform"}},
    {"platform", {}},
};

struct Source {
  std::string name;  // "engine/request.cpp"
  std::string room;
  std::vector<std::string> includes;  // of the project's own headers
  std::vector<std::string> lines;
};

std::vector<Source> Sources() {
  std::vector<Source> sources;
  const std::regex include("^\\s*#\\s*include\\s+\"([^\"]+)\"");
  for (const fs::directory_entry &entry : fs::recursive_directory_iterator(kSource)) {
    const std::string extension = entry.path().extension().string();
    if (extension != ".h" && extension != ".cpp") continue;
    Source source;
    source.name = entry.path().lexically_relative(kSource).generic_string();
    source.room = source.name.substr(0, source.name.find('/'));
    std::ifstream stream(entry.path());
    for (std::string line; std::getline(stream, line);) {
      std::smatch match;
      if (std::regex_search(line, match, include)) source.includes.push_back(match[1]);
      source.lines.push_back(line);
    }
    sources.push_back(source);
  }
  return sources;
}

TEST(Rooms, AreReadAtAll) {
  EXPECT_GT(Sources().size(), 60U);
}

TEST(Rooms, IncludeOnlyWhatStandsBelowThem) {
  for (const Source &source : Sources()) {
    const auto rule = kMayInclude.find(source.room);
    ASSERT_NE(rule, kMayInclude.end()) << source.name << " is in no room";
    for (const std::string &header : source.includes) {
      const std::string room = header.substr(0, header.find('/'));
      if (kMayInclude.count(room) == 0 || room == source.room) continue;
      EXPECT_TRUE(rule->second.count(room) != 0) << source.name << " includes " << header;
    }
  }
}

TEST(Rooms, HaveNoCycleBetweenFiles) {
  // A header and its source file count as one.
  std::map<std::string, std::set<std::string>> graph;
  const auto stem = [](const std::string &name) { return name.substr(0, name.rfind('.')); };
  for (const Source &source : Sources()) {
    for (const std::string &header : source.includes) {
      if (stem(header) != stem(source.name)) graph[stem(source.name)].insert(stem(header));
    }
  }
  std::map<std::string, int> state;  // 1 on the path, 2 done
  std::vector<std::string> path;
  const std::function<void(const std::string &)> visit = [&](const std::string &file) {
    path.push_back(file);
    state[file] = 1;
    for (const std::string &next : graph[file]) {
      EXPECT_NE(state[next], 1) << "cycle: " << testing::PrintToString(path) << " -> " << next;
      if (state[next] == 0) visit(next);
    }
    state[file] = 2;
    path.pop_back();
  };
  for (const Source &source : Sources()) {
    if (state[stem(source.name)] == 0) visit(stem(source.name));
  }
}

TEST(Rooms, AbovePlatformNoLineAsksWhereItIsCompiled) {
  const std::regex directive("^\\s*#"), unconditional("^\\s*#\\s*(include|define|undef|pragma)\\b.*");
  for (const Source &source : Sources()) {
    if (source.room == "platform") continue;
    for (const std::string &line : source.lines) {
      EXPECT_TRUE(!std::regex_search(line, directive) || std::regex_match(line, unconditional))
          << source.name << ": " << line;
    }
  }
}

// Of the standard library only what every terminal has; of platform/ only what is the same on every host.
TEST(Rooms, AbovePlatformOnlyTheseHeadersAreIncluded) {
  const std::set<std::string> allowed = {"<cstdarg>",
                                         "<cstddef>",
                                         "<cstdint>",
                                         "<cstdio>",
                                         "<cstdlib>",
                                         "<cstring>",
                                         "\"lumo.h\"",
                                         "\"platform/platform.h\"",
                                         "\"platform/byte_scan.h\""};
  const std::regex include("^\\s*#\\s*include\\s*(.*)$"), own("\"([a-z]+)/[a-z0-9_]+\\.h\"");
  for (const Source &source : Sources()) {
    if (source.room == "platform") continue;
    for (const std::string &line : source.lines) {
      std::smatch match;
      if (!std::regex_search(line, match, include)) continue;
      const std::string header = match[1];
      const bool is_own =
          std::regex_match(header, match, own) && match[1] != "platform" && kMayInclude.count(match[1]) != 0;
      EXPECT_TRUE(is_own || allowed.count(header) != 0) << source.name << " includes " << header;
    }
  }
}

}  // namespace
