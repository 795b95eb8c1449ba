// wince_file/program_file.h: the headers and tables of a program file for Windows CE, as they lie in it. An
// address is relative to where the file is loaded.
#pragma once

#include <cstdint>

namespace wince_file {

constexpr uint32_t kPage = 0x1000;        // what sections begin on in memory
constexpr uint32_t kFileStep = 0x200;     // and in the file
constexpr uint32_t kPlaceStep = 0x10000;  // what the place that a file is linked for is a multiple of

constexpr uint16_t kDosSignature = 0x5A4D;
constexpr uint32_t kSignature = 0x4550;
constexpr uint16_t kPlainFormat = 0x10B;  // 32 bits
constexpr uint16_t kWindowsCe = 9;        // the subsystem

constexpr uint16_t kMachineX86 = 0x14C, kMachineArm = 0x1C0, kMachineArmNt = 0x1C4;

// Of FileHeader::kind.
constexpr uint16_t kRelocationsAreGone = 0x1, kIsExecutable = 0x2, kLinesAreGone = 0x4, kSymbolsAreGone = 0x8,
                   kIs32Bit = 0x100, kIsLibrary = 0x2000;
// Of SectionHeader::flags.
constexpr uint32_t kHoldsCode = 0x20, kHoldsData = 0x40, kDiscardable = 0x2000000, kExecutes = 0x20000000,
                   kReads = 0x40000000, kWrites = 0x80000000;

// Kinds of relocation: none, which fills a page's list up to a word, and a whole address.
constexpr uint32_t kFiller = 0, kWholeAddress = 3;

struct DosHeader {
  uint16_t signature;
  uint8_t unused[58];
  uint32_t header;  // offset of the signature, behind which the file's header lies
};

struct FileHeader {
  uint16_t machine;
  uint16_t section_count;
  uint32_t time;
  uint32_t symbol_table, symbol_count;
  uint16_t optional_header_size;
  uint16_t kind;
};

struct Directory {
  uint32_t address, size;
};

struct OptionalHeader {
  uint16_t format;
  uint8_t linker_version[2];
  uint32_t code_size, initialised_size, uninitialised_size;
  uint32_t entry_point;
  uint32_t code, data;
  uint32_t linked_for;
  uint32_t section_step, file_step;
  uint16_t system_version[2], version[2], subsystem_version[2];
  uint32_t unused;
  uint32_t image_size, headers_size;
  uint32_t checksum;
  uint16_t subsystem, library_flags;
  uint32_t stack_reserved, stack_committed, heap_reserved, heap_committed;
  uint32_t loader_flags;
  uint32_t directory_count;
  Directory exports, imports, resources, exceptions, certificates, relocations, debug, architecture,
      global_pointer, thread_data, load_configuration, bound_imports, import_slots, delayed_imports, managed,
      reserved;
};

struct SectionHeader {
  char name[8];
  uint32_t size, address;
  uint32_t file_size, file_offset;
  uint32_t relocations, lines;
  uint16_t relocation_count, line_count;
  uint32_t flags;
};

struct ExportTable {
  uint32_t flags, time, version;
  uint32_t library;
  uint32_t first_number;
  uint32_t function_count, name_count;
  uint32_t functions, names, numbers;
};

// One library of the import table, which ends with an empty one.
struct ImportTable {
  uint32_t names;
  uint32_t time, forwarder;
  uint32_t library;
  uint32_t slots;
};

static_assert(sizeof(DosHeader) == 64 && sizeof(FileHeader) == 20 && sizeof(OptionalHeader) == 224 &&
              sizeof(SectionHeader) == 40 && sizeof(ExportTable) == 40 && sizeof(ImportTable) == 20);

}  // namespace wince_file
