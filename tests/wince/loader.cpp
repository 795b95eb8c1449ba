#include "wince/loader.h"

#include <sys/mman.h>

#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iterator>
#include <map>
#include <memory>
#include <stdexcept>
#include <vector>

#include "wince/system_calls.h"
#include "wince_file/program_file.h"

namespace wince {

using wince_file::Directory;
using wince_file::ExportTable;
using wince_file::FileHeader;
using wince_file::ImportTable;
using wince_file::kPage;
using wince_file::OptionalHeader;
using wince_file::SectionHeader;

struct Module {
  ~Module() {
    if (image != nullptr) munmap(image, size);
  }

  std::string path;
  unsigned char *image = nullptr;
  uint32_t size = 0;
  std::map<std::string, uint32_t> exports;
};

namespace {

constexpr uint32_t kAttach = 1;
constexpr uint32_t kByNumber = 0x80000000;

#if defined(__arm__)
constexpr uint16_t kMachines[] = {wince_file::kMachineArm, wince_file::kMachineArmNt};
#elif defined(__i386__)
constexpr uint16_t kMachines[] = {wince_file::kMachineX86};
#endif

// The running program.
const Module *program = nullptr;

// A terminal goes into Thumb code by an address's lowest bit; code of ARM lies on words.
bool IsEntry(uint16_t machine, uint32_t address) {
  if (machine == wince_file::kMachineArmNt) return address % 2 == 1;
  return machine != wince_file::kMachineArm || address % 4 == 0;
}

// One file being loaded. Each step throws what is wrong with it.
class Loader {
 public:
  explicit Loader(const std::string &path) : module_(std::make_unique<Module>()) { module_->path = path; }

  Module *LoadLibrary();
  int RunProgram();

 private:
  [[noreturn]] void Fail(const char *format, ...) const __attribute__((format(printf, 2, 3)));

  void Prepare(bool is_library);
  void ReadFile();
  void ReadHeaders(bool is_library);
  void ReadSections();
  void Map();
  void Relocate();
  void Move(uint32_t address);
  void RefuseForgottenAddresses() const;
  void BindImports();
  void BindLibrary(const char *library, uint32_t names, uint32_t slots);
  const void *FindImport(const char *library, uint32_t entry) const;
  void ReadExports();
  void Protect() const;

  // Of the file.
  template <typename Record>
  Record InFile(size_t offset) const {
    Record record = {};
    if (offset <= file_.size() && sizeof record <= file_.size() - offset) {
      std::memcpy(&record, file_.data() + offset, sizeof record);
    }
    return record;
  }
  // Of the image, and only from inside it.
  bool Has(uint32_t address, uint32_t size) const {
    return address >= kPage && address <= module_->size && size <= module_->size - address;
  }
  template <typename Record>
  Record At(uint32_t address) const {
    Record record = {};
    std::memcpy(&record, module_->image + address, sizeof record);
    return record;
  }
  void Put(uint32_t address, uint32_t word) { std::memcpy(module_->image + address, &word, sizeof word); }
  const char *Text(uint32_t address) const {
    if (!Has(address, 1)) return nullptr;
    const char *const text = reinterpret_cast<const char *>(module_->image + address);
    return std::memchr(text, 0, module_->size - address) == nullptr ? nullptr : text;
  }
  uint32_t ImageAddress() const { return static_cast<uint32_t>(reinterpret_cast<uintptr_t>(module_->image)); }
  const SectionHeader *SectionOf(uint32_t address) const {
    for (const SectionHeader &section : sections_) {
      if (address >= section.address && address - section.address < section.size) return &section;
    }
    return nullptr;
  }
  bool IsCode(uint32_t address) const {
    const SectionHeader *const section = SectionOf(address & ~1U);
    return section != nullptr && (section->flags & wince_file::kExecutes) != 0 &&
           IsEntry(header_.machine, address);
  }
  bool IsX86() const { return header_.machine == wince_file::kMachineX86; }

  std::unique_ptr<Module> module_;
  std::vector<unsigned char> file_;
  uint32_t header_offset_ = 0;  // of the file's header
  FileHeader header_ = {};
  OptionalHeader optional_ = {};
  std::vector<SectionHeader> sections_;
};

void Loader::Fail(const char *format, ...) const {
  char text[300];
  va_list arguments;
  va_start(arguments, format);
  std::vsnprintf(text, sizeof text, format, arguments);
  va_end(arguments);
  throw std::runtime_error(module_->path + ": " + text);
}

void Loader::ReadFile() {
  std::ifstream stream(module_->path, std::ios::binary);
  if (!stream) Fail("cannot be opened");
  file_.assign(std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>());
}

void Loader::ReadHeaders(bool is_library) {
  const auto dos = InFile<wince_file::DosHeader>(0);
  if (dos.signature != wince_file::kDosSignature || dos.header % 4 != 0 ||
      InFile<uint32_t>(dos.header) != wince_file::kSignature) {
    Fail("is no program file");
  }
  header_offset_ = dos.header + 4;
  header_ = InFile<FileHeader>(header_offset_);
  bool is_ours = false;
  for (const uint16_t machine : kMachines) is_ours = is_ours || header_.machine == machine;
  if (!is_ours) Fail("machine 0x%X is another one", header_.machine);
  if ((header_.kind & wince_file::kIsExecutable) == 0) Fail("was not linked to its end");
  if (((header_.kind & wince_file::kIsLibrary) != 0) != is_library) {
    Fail("is no %s", is_library ? "library" : "program");
  }
  if ((header_.kind & wince_file::kRelocationsAreGone) != 0) Fail("cannot be moved");

  optional_ = InFile<OptionalHeader>(header_offset_ + sizeof header_);
  if (header_.optional_header_size != sizeof optional_ || optional_.format != wince_file::kPlainFormat) {
    Fail("has a header of another kind");
  }
  if (optional_.directory_count != 16) Fail("has %u tables instead of 16", optional_.directory_count);
  if (optional_.linked_for % wince_file::kPlaceStep != 0) Fail("is linked for 0x%X", optional_.linked_for);
  if (optional_.section_step != kPage || optional_.file_step != wince_file::kFileStep) {
    Fail("has its sections laid out for another system");
  }
  if (optional_.subsystem != wince_file::kWindowsCe) Fail("subsystem %u is another one", optional_.subsystem);
  if (optional_.thread_data.size != 0) Fail("has thread-local data");
  if (optional_.delayed_imports.size != 0) Fail("has imports to be bound later");
  module_->size = optional_.image_size;
}

void Loader::ReadSections() {
  const uint32_t headers = optional_.headers_size;
  const uint32_t table = header_offset_ + static_cast<uint32_t>(sizeof header_ + sizeof optional_);
  if (headers % wince_file::kFileStep != 0 || headers > file_.size() ||
      table + sizeof(SectionHeader) * header_.section_count > headers) {
    Fail("its headers are longer than they say");
  }
  uint32_t next_address = (headers + kPage - 1) / kPage * kPage, next_offset = headers;
  for (uint32_t i = 0; i < header_.section_count; ++i) {
    const auto section = InFile<SectionHeader>(table + sizeof(SectionHeader) * i);
    if (section.address != next_address || section.size == 0 || section.size > 0x1000000) {
      Fail("section %u is out of place", i + 1);
    }
    if (section.file_size % wince_file::kFileStep != 0 ||
        section.file_offset != (section.file_size == 0 ? 0 : next_offset) ||
        section.file_size > file_.size() - next_offset) {
      Fail("section %u is out of place in the file", i + 1);
    }
    if ((section.flags & wince_file::kWrites) != 0 && (section.flags & wince_file::kExecutes) != 0) {
      Fail("section %u holds code that can be overwritten", i + 1);
    }
    next_address = (section.address + section.size + kPage - 1) / kPage * kPage;
    next_offset += section.file_size;
    sections_.push_back(section);
  }
  if (sections_.empty() || next_address != module_->size) {
    Fail("its size in memory is not that of its sections");
  }
  if (next_offset != file_.size()) Fail("has bytes of no section");
}

void Loader::Map() {
  static uintptr_t next;
  if (const char *const place = std::getenv("LUMO_LOAD_AT"); place != nullptr && next == 0) {
    next = std::strtoul(place, nullptr, 16);
  }
  void *const wish = reinterpret_cast<void *>(next);
  // Nothing may lie where the file was linked for: an address that was not moved leads nowhere.
  mmap(reinterpret_cast<void *>(static_cast<uintptr_t>(optional_.linked_for)), module_->size, PROT_NONE,
       MAP_PRIVATE | MAP_ANONYMOUS | MAP_FIXED_NOREPLACE, -1, 0);
  void *const image = mmap(wish, module_->size, PROT_READ | PROT_WRITE,
                           MAP_PRIVATE | MAP_ANONYMOUS | (wish == nullptr ? 0 : MAP_FIXED_NOREPLACE), -1, 0);
  if (image == MAP_FAILED) Fail("there is no room for it");
  if (next != 0) next += module_->size;
  module_->image = static_cast<unsigned char *>(image);
  for (const SectionHeader &section : sections_) {
    const uint32_t size = section.file_size < section.size ? section.file_size : section.size;
    std::memcpy(module_->image + section.address, file_.data() + section.file_offset, size);
  }
}

void Loader::Move(uint32_t address) {
  if (SectionOf(address) == nullptr || SectionOf(address + 3) != SectionOf(address)) {
    Fail("moves something at 0x%X, where nothing is", address);
  }
  // An instruction of x86 may hold its address anywhere.
  if (!IsX86() && address % 4 != 0) Fail("the address at 0x%X does not lie on a word", address);
  const uint32_t target = At<uint32_t>(address) - optional_.linked_for;
  // An address just behind the last thing of a section is one, too.
  if (target < kPage || target > module_->size) Fail("what is moved at 0x%X is no address", address);
  Put(address, target + ImageAddress());
}

void Loader::Relocate() {
  uint32_t at = optional_.relocations.address;
  const uint32_t end = at + optional_.relocations.size;
  if (at == end || at % 4 != 0 || !Has(at, end - at)) Fail("has no relocations");
  uint32_t page_before = 0;
  while (at < end) {
    if (end - at < 8) Fail("its relocations are cut off");
    const auto page = At<uint32_t>(at), size = At<uint32_t>(at + 4);
    if (page % kPage != 0 || page <= page_before || size < 8 || size % 4 != 0 || size > end - at) {
      Fail("its relocations at 0x%X are damaged", at);
    }
    for (uint32_t entry = at + 8; entry < at + size; entry += 2) {
      const uint32_t kind = At<uint16_t>(entry) >> 12;
      if (kind == wince_file::kFiller) continue;
      if (kind != wince_file::kWholeAddress) {
        Fail("has a relocation of kind %u, which not every terminal knows", kind);
      }
      Move(page + (At<uint16_t>(entry) & 0xFFF));
    }
    page_before = page;
    at += size;
  }
}

// A word that could still be an address of the place the file was linked for is one that no relocation named.
// Bytes of Thumb and of x86 instructions may look like one.
void Loader::RefuseForgottenAddresses() const {
  for (const SectionHeader &section : sections_) {
    const bool is_code = (section.flags & wince_file::kExecutes) != 0;
    if (is_code && header_.machine != wince_file::kMachineArm) continue;
    for (uint32_t at = section.address; at + 4 <= section.address + section.size; at += 4) {
      if (At<uint32_t>(at) - optional_.linked_for < module_->size) {
        Fail("the address at 0x%X is not moved", at);
      }
    }
  }
}

const void *Loader::FindImport(const char *library, uint32_t entry) const {
  // The numbers of one system's functions are not another's.
  if ((entry & kByNumber) != 0) Fail("imports number %u from %s", entry & ~kByNumber, library);
  const char *const name = entry % 2 == 0 ? Text(entry + 2) : nullptr;
  if (name == nullptr) Fail("an import from %s has no name", library);
  const void *const function = FindSystemCall(library, name);
  if (function == nullptr) Fail("%s has no %s", library, name);
  return function;
}

void Loader::BindLibrary(const char *library, uint32_t names, uint32_t slots) {
  for (; Has(names, 4) && Has(slots, 4); names += 4, slots += 4) {
    const auto entry = At<uint32_t>(names);
    if (At<uint32_t>(slots) != entry) Fail("an import from %s has two names", library);
    if (entry == 0) return;
    const SectionHeader *const section = SectionOf(slots);
    if (section == nullptr || (section->flags & wince_file::kWrites) == 0) {
      Fail("the imports from %s cannot be written", library);
    }
    Put(slots, static_cast<uint32_t>(reinterpret_cast<uintptr_t>(FindImport(library, entry))));
  }
  Fail("the imports from %s are cut off", library);
}

// A processor that cannot read a word from just anywhere reads these tables.
void Loader::BindImports() {
  uint32_t at = optional_.imports.address;
  if (at % 4 != 0) Fail("the table of imports, at 0x%X, does not lie on a word", at);
  for (; Has(at, sizeof(ImportTable)); at += static_cast<uint32_t>(sizeof(ImportTable))) {
    const auto table = At<ImportTable>(at);
    if (table.library == 0) return;
    const char *const library = Text(table.library);
    if (library == nullptr) Fail("its imports are damaged");
    if (table.names % 4 != 0 || table.slots % 4 != 0) {
      Fail("the imports from %s do not lie on words", library);
    }
    BindLibrary(library, table.names, table.slots);
  }
  Fail("its imports are cut off");
}

void Loader::ReadExports() {
  const uint32_t at = optional_.exports.address;
  if (at == 0 || at % 4 != 0 || !Has(at, sizeof(ExportTable))) {
    Fail("the table of exports, at 0x%X, does not lie on a word", at);
  }
  const auto table = At<ExportTable>(at);
  if (table.functions % 4 != 0 || table.names % 4 != 0 || table.numbers % 2 != 0) {
    Fail("its exports do not lie on words");
  }
  if (table.function_count > 0xFFFF || table.name_count > 0xFFFF ||
      !Has(table.functions, 4 * table.function_count) || !Has(table.names, 4 * table.name_count) ||
      !Has(table.numbers, 2 * table.name_count)) {
    Fail("its exports are damaged");
  }
  std::string before;
  for (uint32_t i = 0; i < table.name_count; ++i) {
    const char *const name = Text(At<uint32_t>(table.names + 4 * i));
    const uint32_t number = At<uint16_t>(table.numbers + 2 * i);
    if (name == nullptr || number >= table.function_count) Fail("export %u is damaged", i + 1);
    // The system finds names by halving.
    if (before >= name) Fail("export %s is out of order", name);
    const auto function = At<uint32_t>(table.functions + 4 * number);
    if (!IsCode(function)) Fail("export %s is no code", name);
    module_->exports[name] = function;
    before = name;
  }
}

void Loader::Protect() const {
  for (const SectionHeader &section : sections_) {
    unsigned char *const from = module_->image + section.address;
    const int rights = PROT_READ | ((section.flags & wince_file::kWrites) != 0 ? PROT_WRITE : 0) |
                       ((section.flags & wince_file::kExecutes) != 0 ? PROT_EXEC : 0);
    if (mprotect(from, section.size, rights) != 0) Fail("a section cannot be protected");
    __builtin___clear_cache(reinterpret_cast<char *>(from), reinterpret_cast<char *>(from + section.size));
  }
  // The headers are nobody's to read.
  if (mprotect(module_->image, sections_[0].address, PROT_NONE) != 0) Fail("its headers cannot be protected");
}

void Loader::Prepare(bool is_library) {
  ReadFile();
  ReadHeaders(is_library);
  ReadSections();
  Map();
  Relocate();
  RefuseForgottenAddresses();
  BindImports();
  if (is_library) ReadExports();
  if (!is_library && optional_.exports.size != 0) Fail("exports something");
  Protect();
  if (!IsCode(optional_.entry_point)) Fail("its entry point is no code");
}

Module *Loader::LoadLibrary() {
  Prepare(true);
  const auto entry_point =
      reinterpret_cast<int (*)(void *, uint32_t, void *)>(module_->image + optional_.entry_point);
  // The system names a module to its code by what is no address in it.
  if (const int answer = entry_point(module_.get(), kAttach, nullptr); answer != 1) {
    Fail("its entry point answers %d", answer);
  }
  return module_.release();
}

int Loader::RunProgram() {
  Prepare(false);
  const auto entry_point =
      reinterpret_cast<int (*)(void *, void *, const void *, int)>(module_->image + optional_.entry_point);
  program = module_.get();
  constexpr char16_t kNoWords[] = u"";
  constexpr int kShown = 5;
  return entry_point(module_.get(), nullptr, kNoWords, kShown);
}

}  // namespace

Module *Load(const std::string &path) {
  return Loader(path).LoadLibrary();
}

void *Find(Module *module, const std::string &name) {
  const auto found = module->exports.find(name);
  return found == module->exports.end() ? nullptr : module->image + found->second;
}

int Run(const std::string &path) {
  return Loader(path).RunProgram();
}

std::string PathOf(const void *module) {
  const Module *const asked = module == nullptr ? program : static_cast<const Module *>(module);
  return asked == nullptr ? "" : asked->path;
}

Place PlaceOf(const Module *module) {
  return {reinterpret_cast<uintptr_t>(module->image), module->size};
}

}  // namespace wince
