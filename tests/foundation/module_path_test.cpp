// foundation/module_path_test.cpp: where the library's files lie.
#include "foundation/module_path.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

namespace {

using WideText = std::basic_string<lumo::WCHAR>;

std::string Narrow(const lumo::WCHAR *text) {
  return std::filesystem::path(WideText(text)).u8string();
}

WideText Wide(const std::string &text) {
  return std::filesystem::u8path(text).string<lumo::WCHAR>();
}

void SetDirectory(const std::string &directory) {
  lumo::SetModuleDirectory(Wide(directory).c_str());
}

std::string PathOf(const char *name) {
  lumo::WCHAR path[lumo::kPathUnits];
  const bool built = lumo::BuildPath(name, path);
  EXPECT_EQ(built, path[0] != 0);
  return Narrow(path);
}

std::string TracePath() {
  lumo::WCHAR path[lumo::kPathUnits];
  lumo::BuildTracePath(path);
  return Narrow(path);
}

struct Paths : testing::Test {
  Paths() {
    SetDirectory("");
    lumo::SetTraceTag(nullptr);
  }
};

using ModuleDirectory = Paths;
using BuildPath = Paths;
using TraceTag = Paths;

TEST(FreshProcess, HasNeitherModuleDirectoryNorTag) {
  EXPECT_EQ(Narrow(lumo::ModuleDirectory()), "");
  EXPECT_EQ(Narrow(lumo::TraceTag()), "");
}

TEST_F(ModuleDirectory, IsWhatWasSetLast) {
  SetDirectory("/a/longer/folder/");
  SetDirectory("/POS/");
  EXPECT_EQ(Narrow(lumo::ModuleDirectory()), "/POS/");
}

TEST_F(ModuleDirectory, KeepsAtMost259Units) {
  SetDirectory(std::string(300, 'd'));
  EXPECT_EQ(Narrow(lumo::ModuleDirectory()), std::string(259, 'd'));
}

TEST_F(BuildPath, PutsTheNameBehindTheModuleDirectory) {
  SetDirectory("/POS/");
  EXPECT_EQ(PathOf("CONFIG.JSN"), "/POS/CONFIG.JSN");
}

TEST_F(BuildPath, IsTheBareNameWithoutAModuleDirectory) {
  EXPECT_EQ(PathOf("CONFIG"), "CONFIG");
}

TEST_F(BuildPath, TakesANameThatBeginsWithASeparatorAsRelativeToo) {
  SetDirectory("/POS/");
  EXPECT_EQ(PathOf("/BILL"), "/POS//BILL");
}

TEST_F(BuildPath, ReadsNamesAsUtf8) {
  SetDirectory("/Касса/");
  EXPECT_EQ(PathOf("счёт.jsn"), "/Касса/счёт.jsn");
}

TEST_F(BuildPath, OfAnEmptyNameIsTheDirectory) {
  SetDirectory("/POS/");
  EXPECT_EQ(PathOf(""), "/POS/");
}

TEST_F(BuildPath, OfANullNameIsEmpty) {
  SetDirectory("/POS/");
  EXPECT_EQ(PathOf(nullptr), "");
}

TEST_F(BuildPath, Holds259Units) {
  SetDirectory("/POS/");
  EXPECT_EQ(PathOf(std::string(254, 'n').c_str()), "/POS/" + std::string(254, 'n'));
}

TEST_F(BuildPath, CutsNoLongerNameButGivesNone) {
  SetDirectory("/POS/");
  EXPECT_EQ(PathOf(std::string(255, 'n').c_str()), "");
  EXPECT_EQ(PathOf(std::string(100000, 'n').c_str()), "");
}

TEST_F(BuildPath, CountsUnitsNotBytes) {
  std::string name;
  for (int i = 0; i < 254; ++i) name += "ы";
  SetDirectory("/POS/");
  EXPECT_EQ(PathOf(name.c_str()), "/POS/" + name);
  EXPECT_EQ(PathOf((name + "ы").c_str()), "");
}

TEST(Utf8ToWide, ConvertsIntoOneSharedBuffer) {
  const lumo::WCHAR *first = lumo::Utf8ToWide("один");
  EXPECT_EQ(Narrow(first), "один");
  const lumo::WCHAR *second = lumo::Utf8ToWide("two");
  EXPECT_EQ(first, second);
  EXPECT_EQ(Narrow(first), "two");
}

TEST(Utf8ToWide, GivesTheEmptyTextForTheEmptyText) {
  EXPECT_EQ(Narrow(lumo::Utf8ToWide("")), "");
}

TEST(Utf8ToWide, GivesNullForNull) {
  EXPECT_EQ(lumo::Utf8ToWide(nullptr), nullptr);
}

TEST(Utf8ToWide, Holds511UnitsAndATerminator) {
  const std::string text(511, 'x');
  EXPECT_EQ(Narrow(lumo::Utf8ToWide(text.c_str())), text);
  EXPECT_EQ(lumo::Utf8ToWide((text + "x").c_str()), nullptr);
}

TEST_F(TraceTag, IsEmptyBeforeItIsSet) {
  EXPECT_EQ(Narrow(lumo::TraceTag()), "");
}

TEST_F(TraceTag, NamesTheTraceFile) {
  SetDirectory("/POS/");
  EXPECT_EQ(TracePath(), "/POS/TRACE.TXT");
  lumo::SetTraceTag("POS1");
  EXPECT_EQ(TracePath(), "/POS/TRACE_POS1.TXT");
  lumo::SetTraceTag("касса");
  EXPECT_EQ(TracePath(), "/POS/TRACE_касса.TXT");
}

TEST_F(TraceTag, IsClearedByANullOrEmptyTag) {
  lumo::SetTraceTag("POS1");
  lumo::SetTraceTag(nullptr);
  EXPECT_EQ(TracePath(), "TRACE.TXT");
  lumo::SetTraceTag("POS1");
  lumo::SetTraceTag("");
  EXPECT_EQ(TracePath(), "TRACE.TXT");
}

TEST_F(TraceTag, LeavesNothingOfALongerOne) {
  lumo::SetTraceTag("LONGER");
  lumo::SetTraceTag("K2");
  EXPECT_EQ(TracePath(), "TRACE_K2.TXT");
}

TEST_F(TraceTag, Holds258Units) {
  const std::string tag(258, 't');
  lumo::SetTraceTag(tag.c_str());
  EXPECT_EQ(Narrow(lumo::TraceTag()), tag);
}

TEST_F(TraceTag, IsEmptyWhenItDoesNotFit) {
  lumo::SetTraceTag(std::string(259, 't').c_str());
  EXPECT_EQ(Narrow(lumo::TraceTag()), "");
  EXPECT_EQ(TracePath(), "TRACE.TXT");
}

TEST_F(TraceTag, MakesNoPathWhenTheWholeIsTooLong) {
  SetDirectory("/POS/");
  lumo::SetTraceTag(std::string(244, 't').c_str());
  EXPECT_EQ(TracePath(), "/POS/TRACE_" + std::string(244, 't') + ".TXT");
  lumo::SetTraceTag(std::string(245, 't').c_str());
  EXPECT_EQ(TracePath(), "");
}

TEST_F(TraceTag, IsPartOfTheTracesNameAsLongAsThatFits) {
  lumo::SetTraceTag("TAG");
  const std::string folder(247, 'd');
  SetDirectory(folder);
  EXPECT_EQ(TracePath(), "");  // 247 units, "TRACE_", "TAG", ".TXT": one too many
  SetDirectory(folder.substr(1));
  EXPECT_EQ(TracePath(), folder.substr(1) + "TRACE_TAG.TXT");
  for (const size_t units : {251U, 254U}) {
    SetDirectory(std::string(units, 'd'));
    EXPECT_EQ(TracePath(), "") << units;
  }
}

}  // namespace
