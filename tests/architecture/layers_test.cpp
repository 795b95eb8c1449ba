// architecture/layers_test.cpp: a line of code knows its layer.
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

const fs::path kProject = LUMO_SOURCE_DIR;

using Layers = std::set<std::string>;

// A layer is a folder of src/. It may include its own headers, those of the layers it stands on, and whatever
// they may include. "include" is the header that registers see: its calls are defined in api/, one of them is
// what the system calls in platform/, and its result codes reach everything else through foundation/. The
// benchmarks and the fuzz programs stand beside api/; their folders are those of the tests.
const std::map<std::string, Layers> kStandsOn = {
    {"bench", {"engine", "include", "support"}},
    {"fuzz", {"engine", "support"}},
    {"support", {}},
    {"api", {"engine", "updater", "include"}},
    {"engine", {"protocol", "journal"}},
    {"protocol", {"record"}},
    {"record", {"config"}},
    {"journal", {"foundation"}},
    {"updater", {"json"}},
    {"config", {"json"}},
    {"json", {"foundation"}},
    {"foundation", {"platform", "include"}},
    {"platform", {"include"}},
    {"include", {}},
};

Layers Below(const std::string &layer) {
  Layers below;
  for (const std::string &next : kStandsOn.at(layer)) {
    below.insert(next);
    Layers further = Below(next);
    further.erase("include");  // only for those that name it
    below.merge(further);
  }
  return below;
}

struct Source {
  std::string name;  // "engine/request.cpp"
  std::string layer;
  std::vector<std::string> includes;  // of the project's own headers
  std::vector<std::string> lines;
};

// The folder that the layers' folders stand in.
fs::path Root(const std::string &layer) {
  if (layer == "support") return kProject / "tests";
  return layer == "bench" || layer == "fuzz" || layer == "include" ? kProject : kProject / "src";
}

// The layer of a header as it is included: its first folder. A bare name is of its own folder or of include/.
std::string LayerOf(const Source &source, const std::string &header) {
  const size_t slash = header.find('/');
  if (slash != std::string::npos) return header.substr(0, slash);
  return fs::exists(kProject / "include" / header) ? "include" : source.layer;
}

std::vector<Source> SourcesIn(const fs::path &folder, const fs::path &root) {
  std::vector<Source> sources;
  const std::regex include("^\\s*#\\s*include\\s+\"([^\"]+)\"");
  for (const fs::directory_entry &entry : fs::recursive_directory_iterator(folder)) {
    const std::string extension = entry.path().extension().string();
    if (extension != ".h" && extension != ".cpp") continue;
    Source source;
    source.name = entry.path().lexically_relative(root).generic_string();
    source.layer = source.name.substr(0, source.name.find('/'));
    std::ifstream stream(entry.path());
    for (std::string line; std::getline(stream, line);) {
      std::smatch match;
      if (line.find('#') != std::string::npos && std::regex_search(line, match, include)) {
        source.includes.push_back(match[1]);
      }
      source.lines.push_back(line);
    }
    sources.push_back(source);
  }
  return sources;
}

std::vector<Source> LibrarySources() {
  return SourcesIn(kProject / "src", kProject / "src");
}

std::vector<Source> AllSources() {
  std::vector<Source> sources = LibrarySources();
  for (const auto &[layer, below] : kStandsOn) {
    if (Root(layer) != kProject) continue;
    for (Source &source : SourcesIn(kProject / layer, kProject)) sources.push_back(source);
  }
  return sources;
}

TEST(Layers, HaveAFolderEach) {
  for (const auto &[layer, below] : kStandsOn) EXPECT_TRUE(fs::is_directory(Root(layer) / layer)) << layer;
}

TEST(Layers, AreReadAtAll) {
  EXPECT_GT(LibrarySources().size(), 60U);
  EXPECT_GT(AllSources().size(), LibrarySources().size() + 20U);
}

TEST(Layers, IncludeOnlyWhatStandsBelowThem) {
  for (const Source &source : AllSources()) {
    ASSERT_EQ(kStandsOn.count(source.layer), 1U) << source.name << " is in no layer";
    const Layers below = Below(source.layer);
    for (const std::string &header : source.includes) {
      const std::string layer = LayerOf(source, header);
      EXPECT_TRUE(layer == source.layer || below.count(layer) != 0) << source.name << " includes " << header;
    }
  }
}

std::string Stem(const std::string &name) {
  return name.substr(0, name.rfind('.'));
}

// Which files each file includes. A header and its source file count as one.
std::map<std::string, std::set<std::string>> IncludeGraph() {
  std::map<std::string, std::set<std::string>> graph;
  for (const Source &source : LibrarySources()) {
    for (const std::string &header : source.includes) {
      if (Stem(header) != Stem(source.name)) graph[Stem(source.name)].insert(Stem(header));
    }
  }
  return graph;
}

TEST(Layers, HaveNoCycleBetweenFiles) {
  std::map<std::string, std::set<std::string>> graph = IncludeGraph();
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
  for (const Source &source : LibrarySources()) {
    if (state[Stem(source.name)] == 0) visit(Stem(source.name));
  }
}

// The sources that the library file is made of.
std::vector<std::string> BuiltSources() {
  std::ifstream stream(kProject / "src" / "CMakeLists.txt");
  std::vector<std::string> sources;
  bool inside = false;
  for (std::string line; std::getline(stream, line);) {
    inside = inside || line.rfind("set(lumo_sources", 0) == 0;
    std::smatch match;
    if (inside && std::regex_search(line, match, std::regex("^  ([a-z0-9_/]+\\.cpp)"))) {
      sources.push_back(match[1]);
    }
    if (inside && line.find(')') != std::string::npos) break;
  }
  return sources;
}

TEST(Layers, HoldNothingInTheLibraryFileThatNoCallReaches) {
  std::map<std::string, std::set<std::string>> graph = IncludeGraph();
  std::set<std::string> reached;
  const std::function<void(const std::string &)> reach = [&](const std::string &file) {
    if (!reached.insert(file).second) return;
    for (const std::string &next : graph[file]) reach(next);
  };
  const std::vector<std::string> sources = BuiltSources();
  ASSERT_GT(sources.size(), 40U);
  for (const std::string &source : sources) {
    if (source.rfind("api/", 0) == 0) reach(Stem(source));
  }
  for (const std::string &source : sources) EXPECT_EQ(reached.count(Stem(source)), 1U) << source;
}

TEST(Layers, AbovePlatformNoLineAsksWhereItIsCompiled) {
  const std::regex directive("^\\s*#"), unconditional("^\\s*#\\s*(include|define|undef|pragma)\\b.*");
  for (const Source &source : LibrarySources()) {
    if (source.layer == "platform") continue;
    for (const std::string &line : source.lines) {
      EXPECT_TRUE(!std::regex_search(line, directive) || std::regex_match(line, unconditional))
          << source.name << ": " << line;
    }
  }
}

// Of the standard library only what every terminal has; of platform/ nothing that belongs to one host.
TEST(Layers, AbovePlatformOnlyTheseHeadersAreIncluded) {
  const std::set<std::string> standard = {"<cstdarg>", "<cstddef>", "<cstdint>",
                                          "<cstdio>",  "<cstdlib>", "<cstring>"};
  const std::regex include("^\\s*#\\s*include\\s*(.*)$"), own("\"([a-z]+/)?[a-z0-9_]+\\.h\"");
  for (const Source &source : LibrarySources()) {
    if (source.layer == "platform") continue;
    for (const std::string &line : source.lines) {
      std::smatch match;
      if (!std::regex_search(line, match, include)) continue;
      const std::string header = match[1];
      EXPECT_TRUE(std::regex_match(header, own) || standard.count(header) != 0)
          << source.name << " includes " << header;
    }
  }
}

}  // namespace
