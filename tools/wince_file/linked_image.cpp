#include "wince_file/linked_image.h"

#include <elf.h>

#include <algorithm>
#include <cstring>
#include <iterator>
#include <stdexcept>

#include "wince_file/program_file.h"

namespace wince_file {
namespace {

// What a relocation of the linked image means to one that moves as a whole.
enum class Meaning { kDistance, kAddress, kOther };

Meaning MeaningOnArm(uint32_t kind) {
  switch (kind) {
    case R_ARM_ABS32:
    case R_ARM_TARGET1:
      return Meaning::kAddress;
    case R_ARM_NONE:
    case R_ARM_V4BX:
    case R_ARM_REL32:
    case R_ARM_PREL31:
    case R_ARM_PC24:
    case R_ARM_CALL:
    case R_ARM_JUMP24:
    case R_ARM_THM_PC22:
    case R_ARM_THM_JUMP24:
    case R_ARM_THM_JUMP19:
    case R_ARM_THM_PC11:
    case R_ARM_THM_PC9:
      return Meaning::kDistance;
    default:
      return Meaning::kOther;
  }
}

Meaning MeaningOnX86(uint32_t kind) {
  switch (kind) {
    case R_386_32:
      return Meaning::kAddress;
    case R_386_NONE:
    case R_386_PC32:
    case R_386_PLT32:
      return Meaning::kDistance;
    default:
      return Meaning::kOther;
  }
}

class Reader {
 public:
  explicit Reader(const Bytes &file) : file_(file) {}
  LinkedImage Read();

 private:
  template <typename Record>
  Record At(size_t offset) const {
    Record record;
    if (offset > file_.size() || sizeof record > file_.size() - offset) {
      throw std::runtime_error("the linked file is cut off");
    }
    std::memcpy(&record, file_.data() + offset, sizeof record);
    return record;
  }
  std::string NameOf(const Elf32_Shdr &section) const;
  bool IsMoved(const Elf32_Shdr &symbols, uint32_t symbol) const;
  void ReadPart(const Elf32_Shdr &section);
  void ReadAddresses(const Elf32_Shdr &relocations);
  void TakeAddress(Part *part, uint32_t address);

  const Bytes &file_;
  std::vector<Elf32_Shdr> sections_;
  uint32_t names_ = 0;  // offset of the sections' names
  LinkedImage image_ = {};
};

std::string Reader::NameOf(const Elf32_Shdr &section) const {
  std::string name;
  for (uint32_t at = names_ + section.sh_name; At<char>(at) != 0; ++at) name += At<char>(at);
  return name;
}

// An address of nothing, or a plain number, stays what it is.
bool Reader::IsMoved(const Elf32_Shdr &symbols, uint32_t symbol) const {
  const auto entry = At<Elf32_Sym>(symbols.sh_offset + sizeof(Elf32_Sym) * symbol);
  return entry.st_shndx != SHN_UNDEF && entry.st_shndx != SHN_ABS;
}

void Reader::ReadPart(const Elf32_Shdr &section) {
  Part part = {NameOf(section),
               section.sh_addr - image_.linked_for,
               section.sh_size,
               section.sh_type == SHT_NOBITS,
               {}};
  if (!part.is_empty) {
    if (section.sh_offset > file_.size() || section.sh_size > file_.size() - section.sh_offset) {
      throw std::runtime_error("the linked file is cut off");
    }
    const auto begin = file_.begin() + section.sh_offset;
    part.bytes.assign(begin, begin + section.sh_size);
  }
  image_.parts.push_back(part);
}

void Reader::TakeAddress(Part *part, uint32_t address) {
  const uint32_t at = address - part->address;
  if (address < part->address || part->bytes.size() < 4 || at > part->bytes.size() - 4) {
    throw std::runtime_error(part->name + " holds an address beyond its bytes");
  }
  // An instruction of x86 may hold one anywhere.
  if (!image_.is_x86 && address % 4 != 0) {
    throw std::runtime_error(part->name + " holds an address that does not lie on a word");
  }
  if (!IsTable(part->name)) {
    image_.addresses.push_back(address);
    return;
  }
  uint32_t target = 0;
  std::memcpy(&target, &part->bytes[at], sizeof target);
  target -= image_.linked_for;
  std::memcpy(&part->bytes[at], &target, sizeof target);
}

void Reader::ReadAddresses(const Elf32_Shdr &relocations) {
  if (relocations.sh_info >= sections_.size() || relocations.sh_link >= sections_.size()) {
    throw std::runtime_error("the linked file is damaged");
  }
  const Elf32_Shdr &target = sections_[relocations.sh_info];
  if ((target.sh_flags & SHF_ALLOC) == 0 || target.sh_size == 0) return;
  const std::string name = NameOf(target);
  const auto part = std::find_if(image_.parts.begin(), image_.parts.end(),
                                 [&](const Part &candidate) { return candidate.name == name; });
  for (uint32_t at = 0; at < relocations.sh_size; at += sizeof(Elf32_Rel)) {
    const auto entry = At<Elf32_Rel>(relocations.sh_offset + at);
    const uint32_t kind = ELF32_R_TYPE(entry.r_info);
    const Meaning meaning = image_.is_x86 ? MeaningOnX86(kind) : MeaningOnArm(kind);
    if (meaning == Meaning::kDistance) continue;
    if (meaning == Meaning::kOther) {
      throw std::runtime_error(
          name + " holds half an address, or a relocation of another kind: " + std::to_string(kind));
    }
    if (!IsMoved(sections_[relocations.sh_link], ELF32_R_SYM(entry.r_info))) continue;
    TakeAddress(&*part, entry.r_offset - image_.linked_for);
  }
}

LinkedImage Reader::Read() {
  const auto header = At<Elf32_Ehdr>(0);
  if (std::memcmp(header.e_ident, ELFMAG, SELFMAG) != 0 || header.e_ident[EI_CLASS] != ELFCLASS32 ||
      header.e_ident[EI_DATA] != ELFDATA2LSB || header.e_type != ET_EXEC ||
      (header.e_machine != EM_ARM && header.e_machine != EM_386)) {
    throw std::runtime_error("is no linked program of ARM or x86");
  }
  image_.is_x86 = header.e_machine == EM_386;
  for (uint32_t i = 0; i < header.e_shnum; ++i) {
    sections_.push_back(At<Elf32_Shdr>(header.e_shoff + sizeof(Elf32_Shdr) * i));
  }
  names_ = sections_.at(header.e_shstrndx).sh_offset;

  // The first page is the headers'.
  std::vector<Elf32_Shdr> loaded;
  std::copy_if(sections_.begin(), sections_.end(), std::back_inserter(loaded), [](const Elf32_Shdr &section) {
    return (section.sh_flags & SHF_ALLOC) != 0 && section.sh_size != 0;
  });
  std::stable_sort(loaded.begin(), loaded.end(), [](const Elf32_Shdr &left, const Elf32_Shdr &right) {
    return left.sh_addr < right.sh_addr;
  });
  if (loaded.empty() || loaded[0].sh_addr % kPlaceStep != kPage) {
    throw std::runtime_error("is not linked for a place that a file can have");
  }
  image_.linked_for = loaded[0].sh_addr - kPage;
  image_.entry_point = header.e_entry - image_.linked_for;
  for (const Elf32_Shdr &section : loaded) ReadPart(section);

  for (const Elf32_Shdr &section : sections_) {
    if (section.sh_type == SHT_RELA) throw std::runtime_error("has relocations of another form");
    if (section.sh_type == SHT_REL) ReadAddresses(section);
  }
  std::sort(image_.addresses.begin(), image_.addresses.end());
  return image_;
}

}  // namespace

bool IsTable(const std::string &name) {
  return name == ".edata" || name == ".idata" || name == ".iat";
}

LinkedImage ReadLinkedImage(const Bytes &file) {
  return Reader(file).Read();
}

}  // namespace wince_file
