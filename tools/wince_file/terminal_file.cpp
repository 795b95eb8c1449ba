#include "wince_file/terminal_file.h"

#include <algorithm>
#include <cstring>
#include <stdexcept>

#include "wince_file/program_file.h"

namespace wince_file {
namespace {

constexpr Flavour kFlavours[] = {{"x86", kMachineX86, 4, true, false},
                                 {"armv4", kMachineArm, 4, false, false},
                                 {"armv7", kMachineArmNt, 8, false, true}};

uint32_t RoundUp(size_t number, uint32_t step) {
  return static_cast<uint32_t>((number + step - 1) / step * step);
}

// Which parts of the image make up a section of the file, one behind the other.
struct SectionPlan {
  const char *name;
  uint32_t flags;
  std::vector<std::string> parts;
};

const SectionPlan kText = {".text", kHoldsCode | kExecutes | kReads, {".text"}};
const SectionPlan kReadOnly = {".rdata", kHoldsData | kReads, {".rodata", ".edata", ".idata"}};
const SectionPlan kData = {".data", kHoldsData | kReads | kWrites, {".iat", ".data", ".bss"}};
const SectionPlan kRelocations = {".reloc", kHoldsData | kDiscardable | kReads, {}};

struct Section {
  const SectionPlan *plan;
  uint32_t address, size;
  Bytes bytes;
};

const Part *FindPart(const LinkedImage &image, const std::string &name) {
  const auto found = std::find_if(image.parts.begin(), image.parts.end(),
                                  [&](const Part &part) { return part.name == name; });
  return found == image.parts.end() ? nullptr : &*found;
}

Section Gather(const LinkedImage &image, const SectionPlan &plan, uint32_t address) {
  Section section = {&plan, address, 0, {}};
  for (const std::string &name : plan.parts) {
    const Part *const part = FindPart(image, name);
    if (part == nullptr) continue;
    if (part->address < address + section.size || (section.size == 0 && part->address != address)) {
      throw std::runtime_error(name + " was linked to the wrong place");
    }
    const uint32_t at = part->address - address;
    section.size = at + part->size;
    if (part->is_empty) continue;
    section.bytes.resize(at);
    section.bytes.insert(section.bytes.end(), part->bytes.begin(), part->bytes.end());
  }
  if (section.size == 0) throw std::runtime_error(std::string("there is nothing for ") + plan.name);
  return section;
}

void Append(Bytes *bytes, uint32_t number, size_t size) {
  for (size_t i = 0; i < size; ++i) bytes->push_back(static_cast<unsigned char>(number >> 8 * i));
}

// Page by page: its address, the size of its list, two bytes for each place in it, and a filler to end
// on a word.
Bytes RelocationTable(const std::vector<uint32_t> &addresses) {
  Bytes table;
  for (size_t first = 0, last = 0; first < addresses.size(); first = last) {
    const uint32_t page = addresses[first] / kPage;
    while (last < addresses.size() && addresses[last] / kPage == page) ++last;
    Append(&table, page * kPage, 4);
    Append(&table, 8 + RoundUp(2 * (last - first), 4), 4);
    for (size_t i = first; i < last; ++i) Append(&table, kWholeAddress << 12 | addresses[i] % kPage, 2);
    if ((last - first) % 2 != 0) Append(&table, kFiller, 2);
  }
  return table;
}

template <typename Record>
void Put(Bytes *file, size_t offset, const Record &record) {
  std::memcpy(file->data() + offset, &record, sizeof record);
}

// Appends the section's bytes to the file and writes its header.
SectionHeader Store(Bytes *file, const Section &section) {
  SectionHeader header = {};
  std::memcpy(header.name, section.plan->name, std::strlen(section.plan->name));
  header.size = section.size;
  header.address = section.address;
  header.file_offset = static_cast<uint32_t>(file->size());
  header.file_size = RoundUp(section.bytes.size(), kFileStep);
  header.flags = section.plan->flags;
  file->insert(file->end(), section.bytes.begin(), section.bytes.end());
  file->resize(header.file_offset + header.file_size);
  return header;
}

Directory DirectoryOf(const LinkedImage &image, const std::string &name) {
  const Part *const part = FindPart(image, name);
  return part == nullptr ? Directory{0, 0} : Directory{part->address, part->size};
}

}  // namespace

const Flavour &FindFlavour(const std::string &name) {
  for (const Flavour &flavour : kFlavours) {
    if (name == flavour.name) return flavour;
  }
  throw std::runtime_error("there is no flavour " + name);
}

Bytes MakeTerminalFile(const Flavour &flavour, const LinkedImage &image) {
  // An instruction of x86 lies anywhere.
  if (image.is_x86 != flavour.is_x86 || (!image.is_x86 && (image.entry_point % 2 != 0) != flavour.is_thumb)) {
    throw std::runtime_error("holds code of another instruction set");
  }
  std::vector<Section> sections;
  uint32_t next = kPage;
  size_t part_count = 0;
  for (const SectionPlan *const plan : {&kText, &kReadOnly, &kData}) {
    sections.push_back(Gather(image, *plan, next));
    next = RoundUp(next + sections.back().size, kPage);
    for (const std::string &name : plan->parts) {
      if (FindPart(image, name) != nullptr) ++part_count;
    }
  }
  if (part_count != image.parts.size()) throw std::runtime_error("has parts that the file has no place for");
  Bytes table = RelocationTable(image.addresses);
  if (table.empty()) throw std::runtime_error("holds no address, which no linked image does");
  sections.push_back({&kRelocations, next, static_cast<uint32_t>(table.size()), table});
  next = RoundUp(next + table.size(), kPage);

  constexpr uint32_t kHeader = sizeof(DosHeader), kFile = kHeader + sizeof kSignature,
                     kOptional = kFile + sizeof(FileHeader), kTable = kOptional + sizeof(OptionalHeader);
  Bytes file(RoundUp(kTable + sizeof(SectionHeader) * sections.size(), kFileStep));
  OptionalHeader optional = {};
  optional.headers_size = static_cast<uint32_t>(file.size());
  for (size_t i = 0; i < sections.size(); ++i) {
    const SectionHeader header = Store(&file, sections[i]);
    Put(&file, kTable + sizeof header * i, header);
    (sections[i].plan == &kText ? optional.code_size : optional.initialised_size) += header.file_size;
  }

  DosHeader dos = {};
  dos.signature = kDosSignature;
  dos.header = kHeader;
  Put(&file, 0, dos);
  Put(&file, kHeader, kSignature);

  // No date: the same objects give the same file.
  FileHeader header = {};
  header.machine = flavour.machine;
  header.section_count = static_cast<uint16_t>(sections.size());
  header.optional_header_size = sizeof optional;
  header.kind = kIsExecutable | kLinesAreGone | kSymbolsAreGone | kIs32Bit;
  optional.exports = DirectoryOf(image, ".edata");
  if (optional.exports.size != 0) header.kind |= kIsLibrary;
  Put(&file, kFile, header);

  optional.format = kPlainFormat;
  optional.entry_point = image.entry_point;
  optional.code = sections[0].address;
  optional.data = sections[1].address;
  optional.linked_for = image.linked_for;
  optional.section_step = kPage;
  optional.file_step = kFileStep;
  optional.system_version[0] = optional.subsystem_version[0] = flavour.system;
  optional.image_size = next;
  optional.subsystem = kWindowsCe;
  // The system's own figures for a program's first thread.
  optional.stack_reserved = 0x10000;
  optional.stack_committed = 0x1000;
  optional.heap_reserved = 0x100000;
  optional.heap_committed = 0x1000;
  optional.directory_count = 16;
  optional.imports = DirectoryOf(image, ".idata");
  optional.import_slots = DirectoryOf(image, ".iat");
  optional.relocations = {sections.back().address, sections.back().size};
  Put(&file, kOptional, optional);
  return file;
}

}  // namespace wince_file
