// wince_file/terminal_file_test.cpp: the terminal's file of a small image, and what the maker refuses.
#include "wince_file/terminal_file.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sstream>
#include <stdexcept>

#include "wince_file/definition.h"

namespace {

using wince_file::Bytes;
using wince_file::FindFlavour;
using wince_file::LinkedImage;
using wince_file::MakeTerminalFile;

// A page of code, one of constants and one of data; its addresses lie at 0x1000, 0x1008 and 0x3000.
LinkedImage SmallImage() {
  LinkedImage image = {};
  image.linked_for = 0x10000000;
  image.entry_point = 0x1000;
  image.parts = {{".text", 0x1000, 16, false, Bytes(16, 0x11)},
                 {".rodata", 0x2000, 4, false, Bytes(4, 0x22)},
                 {".edata", 0x2004, 4, false, Bytes(4, 0x33)},
                 {".data", 0x3000, 4, false, Bytes(4, 0x44)},
                 {".bss", 0x3010, 0x2000, true, {}}};
  image.addresses = {0x1000, 0x1008, 0x3000};
  return image;
}

uint32_t Number(const Bytes &file, size_t offset, size_t size) {
  uint32_t number = 0;
  for (size_t i = size; i-- > 0;) number = number << 8 | file.at(offset + i);
  return number;
}

std::string Refusal(const char *flavour, const LinkedImage &image) {
  try {
    MakeTerminalFile(FindFlavour(flavour), image);
  } catch (const std::runtime_error &error) {
    return error.what();
  }
  return "";
}

TEST(TerminalFile, SaysWhatItIs) {
  const Bytes file = MakeTerminalFile(FindFlavour("armv4"), SmallImage());
  EXPECT_EQ(Number(file, 0, 2), 0x5A4DU);
  EXPECT_EQ(Number(file, 0x40, 4), 0x4550U);
  EXPECT_EQ(Number(file, 0x44, 2), 0x1C0U);        // the machine
  EXPECT_EQ(Number(file, 0x48, 4), 0U);            // no date
  EXPECT_EQ(Number(file, 0x56, 2), 0x210EU);       // a library of 32 bits
  EXPECT_EQ(Number(file, 0x58 + 16, 4), 0x1000U);  // the entry point
  EXPECT_EQ(Number(file, 0x58 + 28, 4), 0x10000000U);
  EXPECT_EQ(Number(file, 0x58 + 48, 2), 4U);       // the system
  EXPECT_EQ(Number(file, 0x58 + 56, 4), 0x7000U);  // in memory
  EXPECT_EQ(Number(file, 0x58 + 68, 2), 9U);       // the subsystem
  EXPECT_EQ(file.size(), 5U * 0x200);
}

TEST(TerminalFile, WithoutExportsIsAProgram) {
  LinkedImage image = SmallImage();
  image.parts.erase(image.parts.begin() + 2);
  EXPECT_EQ(Number(MakeTerminalFile(FindFlavour("armv4"), image), 0x56, 2), 0x010EU);
}

// Two pages, and a filler that ends the first one's list on a word is not needed, the second one's is.
TEST(TerminalFile, ListsWhereAddressesLie) {
  const Bytes file = MakeTerminalFile(FindFlavour("armv4"), SmallImage());
  const uint32_t expected[] = {0x1000, 12, 0x30083000, 0x3000, 12, 0x00003000};
  for (size_t i = 0; i < 6; ++i) EXPECT_EQ(Number(file, 4 * 0x200 + 4 * i, 4), expected[i]) << i;
  EXPECT_EQ(Number(file, 0x58 + 96 + 8 * 5, 4), 0x6000U);
  EXPECT_EQ(Number(file, 0x58 + 100 + 8 * 5, 4), 24U);
}

TEST(TerminalFile, OfTheSameImageIsTheSame) {
  EXPECT_EQ(MakeTerminalFile(FindFlavour("armv4"), SmallImage()),
            MakeTerminalFile(FindFlavour("armv4"), SmallImage()));
}

TEST(TerminalFile, IsRefusedForAnImageOfAnotherInstructionSet) {
  EXPECT_EQ(Refusal("armv7", SmallImage()), "holds code of another instruction set");
  EXPECT_EQ(Refusal("x86", SmallImage()), "holds code of another instruction set");
  LinkedImage thumb = SmallImage();
  thumb.entry_point |= 1;
  EXPECT_EQ(Refusal("armv7", thumb), "");
  EXPECT_EQ(Refusal("armv4", thumb), "holds code of another instruction set");
}

TEST(TerminalFile, IsRefusedForPartsThatItHasNoPlaceFor) {
  LinkedImage image = SmallImage();
  image.parts.push_back({".ctors", 0x6000, 4, false, Bytes(4)});
  EXPECT_EQ(Refusal("armv4", image), "has parts that the file has no place for");
  image = SmallImage();
  image.parts[3].address = 0x3004;
  EXPECT_EQ(Refusal("armv4", image), ".data was linked to the wrong place");
  image = SmallImage();
  image.addresses.clear();
  EXPECT_NE(Refusal("armv4", image), "");
}

TEST(Flavour, OfAnotherNameIsUnknown) {
  EXPECT_THROW(FindFlavour("armv5"), std::runtime_error);
}

TEST(LinkedImage, ThatIsNoProgramOfOursIsRefused) {
  EXPECT_THROW(wince_file::ReadLinkedImage({}), std::runtime_error);
  EXPECT_THROW(wince_file::ReadLinkedImage(Bytes(4096)), std::runtime_error);
}

wince_file::Definition Read(const std::string &text) {
  std::istringstream stream(text);
  return wince_file::ReadDefinition(stream);
}

TEST(Definition, IsALibraryAndItsNames) {
  const auto definition = Read("; a comment\nLIBRARY coredll.dll\r\nEXPORTS\n  free ; another\n\n\tmalloc\n");
  EXPECT_EQ(definition.library, "coredll.dll");
  EXPECT_THAT(definition.names, testing::ElementsAre("free", "malloc"));
}

TEST(Definition, OfAnythingElseIsRefused) {
  for (const char *const text :
       {"", "LIBRARY a.dll\n", "LIBRARY a.dll\nEXPORTS\n", "EXPORTS\nf\n", "LIBRARY a.dll\nEXPORTS\nf = g\n",
        "LIBRARY a.dll\nEXPORTS\nf @1\n", "LIBRARY a.dll\nf\nEXPORTS\n"}) {
    EXPECT_THROW(Read(text), std::runtime_error) << text;
  }
}

}  // namespace
