// api/attach_posix_test.cpp: answers that the system gives only in trouble. The program is linked so that the
// library's question for its own file name comes here.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "foundation/module_path.h"
#include "lumo.h"
#include "platform/platform.h"
#include "support/folder.h"

namespace {

using Wide = std::basic_string<lumo::WCHAR>;

bool answer_here = false;
bool buffer_was_clear = false;
lumo::HMODULE asked_module = nullptr;
Wide answer;  // empty: the system fails

}  // namespace

lumo::DWORD SystemModuleFileName(lumo::HMODULE module, lumo::WCHAR *name,
                                 lumo::DWORD capacity) __asm__("__real_lumo_GetModuleFileNameW");
lumo::DWORD AnswerModuleFileName(lumo::HMODULE module, lumo::WCHAR *name,
                                 lumo::DWORD capacity) __asm__("__wrap_lumo_GetModuleFileNameW");

lumo::DWORD AnswerModuleFileName(lumo::HMODULE module, lumo::WCHAR *name, lumo::DWORD capacity) {
  if (!answer_here) return SystemModuleFileName(module, name, capacity);
  asked_module = module;
  buffer_was_clear = std::all_of(name, name + capacity, [](lumo::WCHAR unit) { return unit == 0; });
  if (answer.empty()) {
    lumo::GetFileAttributesW(u"");  // sets the error
    return 0;
  }
  // Without a terminator when the name does not fit.
  const size_t count = std::min<size_t>(answer.size(), capacity);
  std::copy_n(answer.data(), count, name);
  return static_cast<lumo::DWORD>(count);
}

namespace {

class AttachInTrouble : public testing::Test {
 protected:
  AttachInTrouble() { answer_here = true; }
  ~AttachInTrouble() override { answer_here = false; }

  int Attach(const Wide &module_name) {
    answer = module_name;
    return DllAttach(&answer);
  }

  test::Folder folder;
};

TEST_F(AttachInTrouble, AsksForItsOwnModuleWithAClearBuffer) {
  EXPECT_EQ(Attach(u"/pos/liblumo.so"), 1);
  EXPECT_EQ(asked_module, &answer);
  EXPECT_TRUE(buffer_was_clear);
}

TEST_F(AttachInTrouble, CutsBehindTheLastSeparator) {
  EXPECT_EQ(Attach(u"/pos/bin/liblumo.so"), 1);
  EXPECT_EQ(Wide(lumo::ModuleDirectory()), u"/pos/bin/");
  EXPECT_EQ(Attach(u"/liblumo.so"), 1);
  EXPECT_EQ(Wide(lumo::ModuleDirectory()), u"/");
  EXPECT_EQ(Attach(u"/pos/"), 1);
  EXPECT_EQ(Wide(lumo::ModuleDirectory()), u"/pos/");
}

TEST_F(AttachInTrouble, WithoutANameItReturnsTheSystemsErrorAndKeepsTheFolder) {
  const Wide before = lumo::ModuleDirectory();
  const int result = Attach(u"");
  EXPECT_EQ(static_cast<lumo::DWORD>(result), lumo::GetLastError());
  EXPECT_GT(result, 1);
  EXPECT_EQ(Wide(lumo::ModuleDirectory()), before);
}

TEST_F(AttachInTrouble, WithoutASeparatorItReturnsZeroAndKeepsTheFolder) {
  const Wide before = lumo::ModuleDirectory();
  EXPECT_EQ(Attach(u"liblumo.so"), 0);
  EXPECT_EQ(Wide(lumo::ModuleDirectory()), before);
}

TEST_F(AttachInTrouble, APathOfAllTheUnitsThereAreIsTaken) {
  EXPECT_EQ(Attach(u"/" + Wide(257, u'x') + u"/"), 1);
  EXPECT_EQ(Wide(lumo::ModuleDirectory()).size(), 259U);
}

// Cut to the buffer it would name a folder above the file's own.
TEST_F(AttachInTrouble, APathThatDoesNotFitIsRefused) {
  const Wide before = lumo::ModuleDirectory();
  for (const Wide &path : {u"/pos/" + Wide(255, u'x'), u"/pos/" + Wide(300, u'x'), Wide(260, u'/'),
                           Wide(300, u'x'), Wide(258, u'/') + u"x/"}) {
    EXPECT_EQ(Attach(path), 122) << path.size();
    EXPECT_EQ(Wide(lumo::ModuleDirectory()), before);
  }
}

}  // namespace
