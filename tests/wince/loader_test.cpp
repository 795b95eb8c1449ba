// wince/loader_test.cpp: what is wrong with a library file is found: by the loader, or by the first sale.
// Each fault is planted into a copy of the file that LUMO_LIBRARY_FILE names.
#include "wince/loader.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <stdexcept>
#include <string>
#include <vector>

#include "lumo.h"
#include "support/fresh_folder.h"
#include "wince/system_calls.h"
#include "wince_file/program_file.h"

namespace {

namespace fs = std::filesystem;

using testing::HasSubstr;
using wince_file::ExportTable;
using wince_file::FileHeader;
using wince_file::ImportTable;
using wince_file::kPage;
using wince_file::OptionalHeader;
using wince_file::SectionHeader;

// True when it says so itself. What ends it ends a child.
bool InAnotherProcess(const std::function<bool()> &succeeds) {
  const pid_t child = fork();
  if (child == 0) {
    alarm(60);
    bool success = false;
    try {
      success = succeeds();
    } catch (const std::runtime_error &) {
    }
    _exit(success ? 0 : 1);
  }
  int status = 0;
  waitpid(child, &status, 0);
  return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

// A copy of the library file in a folder of its own.
class LibraryFile : public testing::Test {
 protected:
  LibraryFile() {
    std::ifstream stream(std::getenv("LUMO_LIBRARY_FILE"), std::ios::binary);
    file.assign(std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>());
    headerOffset = At<wince_file::DosHeader>(0).header + 4;
  }

  // Places in the file.
  template <typename Record>
  Record &At(size_t offset) {
    if (offset + sizeof(Record) > file.size()) throw std::out_of_range("beyond the file");
    return *reinterpret_cast<Record *>(&file[offset]);
  }
  FileHeader &header() { return At<FileHeader>(headerOffset); }
  OptionalHeader &optional() { return At<OptionalHeader>(headerOffset + sizeof(FileHeader)); }
  SectionHeader &section(size_t i) {
    return At<SectionHeader>(headerOffset + sizeof(FileHeader) + sizeof(OptionalHeader) +
                             i * sizeof(SectionHeader));
  }
  SectionHeader &SectionOf(uint32_t address) {
    for (size_t i = 0; i < header().section_count; ++i) {
      if (address >= section(i).address && address - section(i).address < section(i).size) return section(i);
    }
    throw std::out_of_range("in no section");
  }
  // Of the image, where the file holds it.
  template <typename Record>
  Record &InImage(uint32_t address) {
    const SectionHeader &section = SectionOf(address);
    return At<Record>(section.file_offset + address - section.address);
  }
  ImportTable &imports(size_t i) {
    return InImage<ImportTable>(optional().imports.address + static_cast<uint32_t>(i * sizeof(ImportTable)));
  }
  ExportTable &exports() { return InImage<ExportTable>(optional().exports.address); }
  // The first import of the first library.
  char *FirstImport() { return &InImage<char>(InImage<uint32_t>(imports(0).names) + 2); }

  // Where the relocations lie in the image, and where each says an address is.
  struct Relocation {
    uint32_t entry, place;
  };
  std::vector<Relocation> Relocations() {
    std::vector<Relocation> found;
    const uint32_t begin = optional().relocations.address, end = begin + optional().relocations.size;
    for (uint32_t at = begin; at < end; at += InImage<uint32_t>(at + 4)) {
      for (uint32_t entry = at + 8; entry < at + InImage<uint32_t>(at + 4); entry += 2) {
        const uint16_t word = InImage<uint16_t>(entry);
        if (word >> 12 == wince_file::kWholeAddress) {
          found.push_back({entry, InImage<uint32_t>(at) + (word & 0xFFF)});
        }
      }
    }
    return found;
  }
  bool IsInCode(uint32_t address) { return (SectionOf(address).flags & wince_file::kExecutes) != 0; }

  std::string Save() {
    std::ofstream stream(folder / "lumo.dll", std::ios::binary);
    stream.write(reinterpret_cast<const char *>(file.data()), static_cast<std::streamsize>(file.size()));
    return (folder / "lumo.dll").string();
  }

  std::string Trace() {
    std::ifstream stream(folder / "TRACE.TXT", std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
  }

  // What the loader has against the file; "" when it takes it.
  std::string Refusal() {
    try {
      wince::Load(Save());
    } catch (const std::runtime_error &error) {
      return error.what();
    }
    return "";
  }

  // True when a register makes its first sale with the file, in a process of its own. Nobody is at the
  // server's address: the library pays by itself.
  bool Sells() {
    return InAnotherProcess([this] { return SellsHere(); });
  }
  bool SellsHere();

  std::vector<unsigned char> file;
  size_t headerOffset = 0;
  test::FreshFolder fresh;
  const fs::path folder = fresh.path();
};

// The library's calls, with the stack on any word, as a terminal's programs may have it: this program's own
// compiler keeps it on two words, or four.
#if defined(__arm__)
extern "C" uintptr_t CallOnOddWord(uintptr_t first, uintptr_t second, const void *function);
__asm__(
    ".text\n.balign 4\n.arm\n.global CallOnOddWord\n.type CallOnOddWord, %function\nCallOnOddWord:\n"
    "  push {r4, lr}\n  sub sp, sp, #4\n  blx r2\n  add sp, sp, #4\n  pop {r4, pc}\n");
#else
extern "C" uintptr_t CallOnOddWord(uintptr_t first, uintptr_t second, const void *function);
__asm__(
    ".text\n.global CallOnOddWord\n.type CallOnOddWord, @function\nCallOnOddWord:\n"
    "  push 8(%esp)\n  push 8(%esp)\n  call *20(%esp)\n  add $8, %esp\n  ret\n");
#endif

uintptr_t Word(const char *text) {
  return reinterpret_cast<uintptr_t>(text);
}
uintptr_t Word(int number) {
  return static_cast<uintptr_t>(number);
}

// Of a call's first instruction, in the image.
uint32_t AddressOf(wince::Module *module, const char *name) {
  const auto address =
      reinterpret_cast<uintptr_t>(wince::Find(module, name)) - wince::PlaceOf(module).address;
#if defined(__arm__)
  return static_cast<uint32_t>(address) & ~1U;
#else
  return static_cast<uint32_t>(address);
#endif
}

bool LibraryFile::SellsHere() {
  wince::Module *const module = wince::Load(Save());
  const auto call = [module](const char *name, auto first, auto second) {
    return CallOnOddWord(Word(first), Word(second), wince::Find(module, name));
  };
  std::ofstream(folder / "CONFIG")
      << R"({"terminalId":"12345","serverAddr":"http://127.0.0.1:1/ws","timeout":5,"logSize":10,"offlineMode":1,)"
      << R"("localBonusOffline":3,"globalBonusOffline":2,"orgFeeOffline":1})";
  std::ofstream(folder / "STATE") << R"({"reqId":"1234512120500007","offline":0,"shiftState":0,"update":0})";
  if (call("LUMOInit", 0, 0) != 0 || call("CreateTransaction", "9000000001", "7") != 0) return false;
  if (call("CreateAmountBill", 10000, "BILL.JSN") != 0 || call("PaymentProc", 0, "BILL.JSN") != 0) {
    return false;
  }
  const std::string slip = reinterpret_cast<const char *>(call("getReceiptBodyPtr", 0, 0));
  return call("GetEarnBonusAmount", 0, 0) == 500 &&
         slip.find("\n                  100.00\n") != std::string::npos &&
         slip.find("RRN: 12345") != std::string::npos && call("CloseTransaction", 0, 0) == 0 &&
         // Lines of several arguments.
         Trace().find("\nNo BOM found 7B 22 74\n") != std::string::npos &&
         Trace().find("\nCreateTransaction [9000000001] [7]\n") != std::string::npos;
}

TEST_F(LibraryFile, LoadsAndSells) {
  EXPECT_EQ(Refusal(), "");
  EXPECT_TRUE(Sells());
}

TEST_F(LibraryFile, HasEveryCallOfTheHeader) {
  wince::Module *const module = wince::Load(Save());
  EXPECT_NE(wince::Find(module, "LUMOInit"), nullptr);
  EXPECT_NE(wince::Find(module, "lumoClearOffline"), nullptr);
  EXPECT_EQ(wince::Find(module, "LumoEntry"), nullptr);
}

TEST_F(LibraryFile, ALoadedOneDoesNotLieWhereItWasLinkedFor) {
  const uint32_t linked_for = optional().linked_for;
  wince::Module *const first = wince::Load(Save()), *const second = wince::Load(Save());
  EXPECT_NE(wince::PlaceOf(first).address, linked_for);
  EXPECT_NE(wince::PlaceOf(first).address, wince::PlaceOf(second).address);
}

TEST_F(LibraryFile, ForAnotherMachineIsRefused) {
  constexpr uint16_t kOthers[] = {0x1C2, 0x166, 0x8664};
  for (const uint16_t machine : kOthers) {
    header().machine = machine;
    EXPECT_THAT(Refusal(), HasSubstr("is another one"));
  }
}

TEST_F(LibraryFile, ForAnotherSystemIsRefused) {
  optional().subsystem = 3;
  EXPECT_THAT(Refusal(), HasSubstr("subsystem 3 is another one"));
}

TEST_F(LibraryFile, ThatIsAProgramIsRefused) {
  header().kind = static_cast<uint16_t>(header().kind & ~wince_file::kIsLibrary);
  EXPECT_THAT(Refusal(), HasSubstr("is no library"));
}

TEST_F(LibraryFile, OfAnotherLengthIsRefused) {
  file.push_back(0);
  EXPECT_THAT(Refusal(), HasSubstr("bytes of no section"));
  file.resize(file.size() / 2);
  EXPECT_THAT(Refusal(), HasSubstr("out of place in the file"));
  file.resize(100);
  EXPECT_NE(Refusal(), "");
  file.clear();
  EXPECT_THAT(Refusal(), HasSubstr("is no program file"));
}

TEST_F(LibraryFile, WithSectionsOutOfPlaceIsRefused) {
  section(1).address += kPage;
  EXPECT_THAT(Refusal(), HasSubstr("section 2 is out of place"));
}

TEST_F(LibraryFile, WithCodeThatCanBeOverwrittenIsRefused) {
  SectionOf(optional().entry_point & ~1U).flags |= wince_file::kWrites;
  EXPECT_THAT(Refusal(), HasSubstr("code that can be overwritten"));
}

TEST_F(LibraryFile, WithThreadLocalDataIsRefused) {
  optional().thread_data = {kPage, 24};
  EXPECT_THAT(Refusal(), HasSubstr("thread-local"));
}

TEST_F(LibraryFile, WithAnImportThatNobodyHasIsRefused) {
  FirstImport()[0] = 'X';
  EXPECT_THAT(Refusal(), HasSubstr("coredll.dll has no X"));
}

TEST_F(LibraryFile, WithALibraryThatNobodyHasIsRefused) {
  std::memcpy(&InImage<char>(imports(1).library), "ws3", 3);
  EXPECT_THAT(Refusal(), HasSubstr("ws3.dll has no "));
}

TEST_F(LibraryFile, WithAnImportByNumberIsRefused) {
  InImage<uint32_t>(imports(0).names) = 0x80000000 | 17;
  InImage<uint32_t>(imports(0).slots) = 0x80000000 | 17;
  EXPECT_THAT(Refusal(), HasSubstr("imports number 17 from coredll.dll"));
}

TEST_F(LibraryFile, WithTwoImportsExchangedDoesNotSell) {
  for (const uint32_t list : {imports(0).names, imports(0).slots}) {
    std::swap(InImage<uint32_t>(list), InImage<uint32_t>(list + 8));
  }
  EXPECT_EQ(Refusal(), "");
  EXPECT_FALSE(Sells());
}

TEST_F(LibraryFile, WithImportsThatCannotBeWrittenIsRefused) {
  SectionOf(imports(0).slots).flags &= ~wince_file::kWrites;
  EXPECT_THAT(Refusal(), HasSubstr("the imports from coredll.dll cannot be written"));
}

TEST_F(LibraryFile, WithTablesOffTheirWordsIsRefused) {
  const std::vector<unsigned char> whole = file;
  const struct {
    const char *name;
    std::function<void()> shift;
    const char *refusal;
  } kTables[] = {
      {"imports", [this] { optional().imports.address += 2; }, "the table of imports, at 0x"},
      {"names of imports", [this] { imports(0).names += 1; },
       "the imports from coredll.dll do not lie on words"},
      {"slots of imports", [this] { imports(1).slots += 2; }, "the imports from ws2.dll do not lie on words"},
      {"exports", [this] { optional().exports.address += 1; }, "the table of exports, at 0x"},
      {"functions", [this] { exports().functions += 2; }, "its exports do not lie on words"},
      {"names of exports", [this] { exports().names += 2; }, "its exports do not lie on words"},
      {"numbers of exports", [this] { exports().numbers += 1; }, "its exports do not lie on words"},
      {"relocations", [this] { optional().relocations.address += 2; }, "has no relocations"},
  };
  for (const auto &table : kTables) {
    file = whole;
    table.shift();
    EXPECT_THAT(Refusal(), HasSubstr(table.refusal)) << table.name;
  }
}

TEST_F(LibraryFile, WithExportsOutOfOrderIsRefused) {
  std::swap(InImage<uint32_t>(exports().names), InImage<uint32_t>(exports().names + 4));
  EXPECT_THAT(Refusal(), HasSubstr("is out of order"));
}

TEST_F(LibraryFile, WithDataForAnExportIsRefused) {
  InImage<uint32_t>(exports().functions) = exports().names & ~3U;
  EXPECT_THAT(Refusal(), HasSubstr("is no code"));
}

TEST_F(LibraryFile, WithoutRelocationsIsRefused) {
  optional().relocations.size = 0;
  EXPECT_THAT(Refusal(), HasSubstr("has no relocations"));
  header().kind |= wince_file::kRelocationsAreGone;
  EXPECT_THAT(Refusal(), HasSubstr("cannot be moved"));
}

TEST_F(LibraryFile, WithARelocationOfAnotherKindIsRefused) {
  for (const unsigned kind : {1U, 2U, 4U, 5U, 7U, 10U}) {
    uint16_t &entry = InImage<uint16_t>(Relocations()[0].entry);
    const uint16_t before = entry;
    entry = static_cast<uint16_t>(kind << 12 | (before & 0xFFF));
    EXPECT_THAT(Refusal(), HasSubstr("a relocation of kind " + std::to_string(kind)));
    entry = before;
  }
}

// A word further there may be another address, which moves with it.
TEST_F(LibraryFile, WithARelocationElsewhereIsRefused) {
  for (const Relocation &relocation : Relocations()) {
    uint16_t &entry = InImage<uint16_t>(relocation.entry);
    if ((entry & 0xFFF) > 0xFF0 || IsInCode(relocation.place)) continue;
    entry = static_cast<uint16_t>(entry + 2);
    EXPECT_NE(Refusal(), "");
    entry = static_cast<uint16_t>(entry - 2);
    return;
  }
  FAIL() << "no address among the data";
}

TEST_F(LibraryFile, WithoutOneOfItsRelocationsIsRefused) {
  int count = 0;
  for (const Relocation &relocation : Relocations()) {
    // Bytes of instructions may look like an address where they lie anywhere.
    if (IsInCode(relocation.place) && header().machine != wince_file::kMachineArm) continue;
    uint16_t &entry = InImage<uint16_t>(relocation.entry);
    const uint16_t before = entry;
    entry = wince_file::kFiller;
    EXPECT_THAT(Refusal(), HasSubstr("is not moved")) << std::hex << relocation.place;
    entry = before;
    ++count;
  }
  EXPECT_GT(count, 100);
}

// What no search finds is met by whoever calls that code: nothing lies where the file was linked for.
TEST_F(LibraryFile, WithoutARelocationOfACallEndsThere) {
  if (header().machine == wince_file::kMachineArm) return;
  wince::Module *const whole = wince::Load(Save());
  const uint32_t version = AddressOf(whole, "lumoVersion");
  for (const Relocation &relocation : Relocations()) {
    // The first one in or behind its instructions.
    if (relocation.place < version) continue;
    ASSERT_LT(relocation.place, version + 64);
    InImage<uint16_t>(relocation.entry) = wince_file::kFiller;
    break;
  }
  wince::Module *const module = wince::Load(Save());
  EXPECT_EXIT(CallOnOddWord(0, 0, wince::Find(module, "lumoVersion")), testing::KilledBySignal(SIGSEGV), "");
}

#if defined(__arm__)
TEST_F(LibraryFile, WithEntriesOfTheOtherInstructionSetIsRefused) {
  const std::vector<unsigned char> whole = file;
  InImage<uint32_t>(exports().functions) ^= 1;
  EXPECT_THAT(Refusal(), HasSubstr("is no code"));
  file = whole;
  optional().entry_point ^= 1;
  EXPECT_THAT(Refusal(), HasSubstr("its entry point is no code"));
}

// The emulator knows them all unless it is told the processor.
TEST_F(LibraryFile, WithAnInstructionOfALaterProcessorEndsThere) {
  constexpr uint32_t kUxtb = 0xE6EF0071;  // ARMv6: uxtb r0, r1
  constexpr uint32_t kLda = 0x0FAFE8D1;   // ARMv8: lda r0, [r1]
  wince::Module *const whole = wince::Load(Save());
  const uint32_t version = AddressOf(whole, "lumoVersion");
  const bool is_thumb = header().machine == wince_file::kMachineArmNt;
  InImage<uint32_t>(version) = is_thumb ? kLda : kUxtb;
  wince::Module *const module = wince::Load(Save());
  EXPECT_EXIT(CallOnOddWord(0, 0, wince::Find(module, "lumoVersion")), testing::KilledBySignal(SIGILL), "");
}
#endif

// The stand-ins are those of the lists, and the file imports nothing else.
TEST_F(LibraryFile, ImportsOnlyWhatTheListsName) {
  size_t count = 0;
  for (size_t i = 0; imports(i).library != 0; ++i) {
    for (uint32_t at = imports(i).names; InImage<uint32_t>(at) != 0; at += 4, ++count) {
      const char *const name = &InImage<char>(InImage<uint32_t>(at) + 2);
      EXPECT_NE(wince::FindSystemCall(&InImage<char>(imports(i).library), name), nullptr) << name;
    }
  }
  EXPECT_GT(count, 40U);
  EXPECT_EQ(wince::FindSystemCall("coredll.dll", "socket"), nullptr);
  EXPECT_EQ(wince::FindSystemCall("ws2.dll", "CreateFileW"), nullptr);
  EXPECT_NE(wince::FindSystemCall("COREDLL.dll", "CreateFileW"), nullptr);
}

}  // namespace
