#include "config/lumoconfig.h"

#include <cstring>

#include "foundation/file_names.h"
#include "foundation/file_sink.h"
#include "foundation/files.h"
#include "foundation/memory.h"
#include "foundation/result_codes.h"
#include "foundation/trace.h"

namespace lumo {
namespace {

SettingsRecord settings;

// A setting's text, kept for good: the register may hold a pointer to it. Equal texts share one entry, so
// that starting the library again with the same configuration takes no memory.
struct KeptText {
  KeptText *next;
  char *text;
};

KeptText *kept_texts;

const char *KeepText(const char *text) {
  if (text == nullptr) return nullptr;
  for (const KeptText *kept = kept_texts; kept != nullptr; kept = kept->next) {
    if (std::strcmp(kept->text, text) == 0) return kept->text;
  }
  auto *added = static_cast<KeptText *>(MemMalloc(sizeof(KeptText), LUMO_HERE));
  added->text = MemCopyText(text, LUMO_HERE);
  added->next = kept_texts;
  kept_texts = added;
  return added->text;
}

using TextField = const char *SettingsRecord::*;
using NumberField = int32_t SettingsRecord::*;
using LengthField = uint32_t SettingsRecord::*;

// A flag is read as any number; it differs in how it is saved.
enum class SettingKind : uint8_t { kText, kNumber, kFlag };

struct Setting {
  const char *key;
  const char *label;  // in the trace
  SettingKind kind;
  TextField text;
  LengthField length;  // null but for the two receipt texts
  NumberField number;
};

constexpr Setting Text(const char *key, const char *label, TextField field, LengthField length = nullptr) {
  return {key, label, SettingKind::kText, field, length, nullptr};
}
constexpr Setting Number(const char *key, const char *label, NumberField field) {
  return {key, label, SettingKind::kNumber, nullptr, nullptr, field};
}
constexpr Setting Flag(const char *key, const char *label, NumberField field) {
  return {key, label, SettingKind::kFlag, nullptr, nullptr, field};
}

// The places in kSettings, in the order in which a key looks for its name.
enum SettingIndex : uint8_t {
  kTerminalId,
  kProtocolVersion,
  kServerAddr,
  kServerAltAddr,
  kRetailNetworkName,
  kOfflinePath,
  kLogPath,
  kReceiptPath,
  kTimeout,
  kOfflineMode,
  kShiftMode,
  kLocalBonusOffline,
  kGlobalBonusOffline,
  kOrgFeeOffline,
  kLogSize,
  kReceiptHeader,
  kReceiptFooter,
  kSslMode,
  kSslKey,
  kSettingCount,
};

using S = SettingsRecord;
constexpr Setting kSettings[] = {
    Text("terminalId", "Terminal Id", &S::terminalId),
    Text("protocolVersion", "Protocol Version", &S::protocolVersion),
    Text("serverAddr", "Server Address", &S::serverAddr),
    Text("serverAltAddr", "Server Alt Address", &S::serverAltAddr),
    Text("retailNetworkName", "Retail Network Name", &S::retailNetworkName),
    Text("offlinePath", "Offline Path", &S::offlinePath),
    Text("logPath", "Log Path", &S::logPath),
    Text("receiptPath", "Receipt Path", &S::receiptPath),
    Number("timeout", "Timeout", &S::timeout),
    Flag("offlineMode", "Offline Mode", &S::offlineMode),
    Flag("shiftMode", "Shift Mode", &S::shiftMode),
    Number("localBonusOffline", "Local Bonus Offline", &S::localBonusOffline),
    Number("globalBonusOffline", "Global Bonus Offline", &S::globalBonusOffline),
    Number("orgFeeOffline", "Org Fee Offline", &S::orgFeeOffline),
    Number("logSize", "Log Size", &S::logSize),
    Text("receiptHeader", "Receipt Header", &S::receiptHeader, &S::receiptHeaderLength),
    Text("receiptFooter", "Receipt Footer", &S::receiptFooter, &S::receiptFooterLength),
    Number("sslMode", "SSL Mode", &S::sslMode),
    Text("sslKey", "SSL Key File", &S::sslKey),
};
static_assert(sizeof kSettings / sizeof kSettings[0] == kSettingCount, "one row for each SettingIndex");

// SaveConfig writes in this order, and writes no SSL settings.
constexpr SettingIndex kSavedSettings[] = {
    kServerAddr,      kServerAltAddr, kRetailNetworkName, kTerminalId,
    kProtocolVersion, kOfflineMode,   kLocalBonusOffline, kGlobalBonusOffline,
    kOrgFeeOffline,   kOfflinePath,   kTimeout,           kLogPath,
    kLogSize,         kReceiptPath,   kShiftMode,         kReceiptHeader,
    kReceiptFooter,
};

void ClearSettings() {
  settings = SettingsRecord{};
}

const Setting *FindSetting(const JsonMember &member) {
  for (const Setting &setting : kSettings) {
    if (KeyIsPrefixOf(member, setting.key)) return &setting;
  }
  return nullptr;
}

// A text is borrowed from the document until KeepSettingTexts.
void StoreSetting(const Setting &setting, const JsonNode &value) {
  if (setting.kind == SettingKind::kText) {
    const char *text = JsonText(value);
    settings.*setting.text = text;
    if (setting.length != nullptr) settings.*setting.length = static_cast<uint32_t>(std::strlen(text));
    Trace("%s [%s]\n", setting.label, text);
  } else {
    settings.*setting.number = JsonInt32(value);
    Trace("%s [%d]\n", setting.label, settings.*setting.number);
  }
}

void KeepSettingTexts() {
  for (const Setting &setting : kSettings) {
    if (setting.kind == SettingKind::kText) {
      SetSettingString(&(settings.*setting.text), settings.*setting.text);
    }
  }
}

int LoadConfigFile(const char *file_name) {
  const ScopedReader reader(JsonReaderCreate());
  if (reader.get() == nullptr) {  // GCOVR_EXCL_START: out of memory ends the process
    TraceError("Lumo Json Parser not created!\n");
    return ERR_JSON_MEMORY;
  }  // GCOVR_EXCL_STOP
  ClearSettings();
  const int result = ParseJsonFile(reader.get(), file_name);
  if (result != 0) {
    TraceError("parserJsonFile error [%d]\n", result);
    return result;
  }
  return ApplyConfigTree(JsonReaderRoot(reader.get()));
}

void WriteSetting(JsonPrinter *printer, const Setting &setting) {
  if (setting.kind == SettingKind::kText) {
    const char *text = settings.*setting.text;
    if (text != nullptr) WriteStringMember(printer, setting.key, text);
    return;
  }
  const int32_t value = settings.*setting.number;
  if (setting.kind == SettingKind::kFlag) {
    WriteIntMember(printer, setting.key, value != 0 ? 1 : 0);
  } else if (value != 0) {
    WriteIntMember(printer, setting.key, value);
  }
}

}  // namespace

const SettingsRecord &Settings() {
  return settings;
}

int LoadNewConfig() {
  Trace("LoadNewConfig\n");
  const int result = LoadConfigFile(kNewConfigFile);
  // Note: an existing CONFIG is not replaced, and CONFIG.JSN is then read again at every start.
  if (result == 0 && FileMove(kNewConfigFile, kConfigFile) != 0) TraceError("Cant save new config!\n");
  return result;
}

int LoadConfig() {
  Trace("LoadConfig\n");
  return LoadConfigFile(kConfigFile);
}

int InitConfig() {
  Trace("InitConfig()\n");
  return 0;
}

int ApplyConfigTree(const JsonNode *root) {
  if (root == nullptr) {
    TraceError("Config json root is NULL!\n");
    return ERR_CONFIG_LOAD;
  }
  if (root->type != JSON_OBJECT_BEGIN) return ERR_CONFIG_LOAD;
  for (uint32_t i = 0; i < root->count; ++i) {
    const JsonMember &member = root->members[i];
    const Setting *setting = FindSetting(member);
    if (setting != nullptr) {
      StoreSetting(*setting, member.value);
    } else {
      TraceWarning("Unknown config option [%.*s]\n", TracedKeyLength(member), member.key);
    }
  }
  KeepSettingTexts();
  return 0;
}

const char *SetSettingString(const char **field, const char *text) {
  *field = KeepText(text);
  return *field;
}

int SaveConfig() {
  const ScopedFile file(FileOpen(kConfigFile, "w+"));
  if (!FileIsValid(file.get())) return ERR_CONFIG_OPEN;
  FileSink sink;
  FileSinkInit(&sink, file.get());
  JsonPrinter printer;
  JsonPrinterInit(&printer, FileSinkWrite, &sink);
  JsonPrinterRaw(&printer, JSON_OBJECT_BEGIN, nullptr, 0);
  for (const SettingIndex index : kSavedSettings) WriteSetting(&printer, kSettings[index]);
  JsonPrinterRaw(&printer, JSON_OBJECT_END, nullptr, 0);
  JsonPrinterFree(&printer);
  FileSinkFlush(&sink);
  return 0;
}

void ReleaseSettings() {
  while (kept_texts != nullptr) {
    KeptText *released = kept_texts;
    kept_texts = released->next;
    MemFree(released->text, LUMO_HERE);
    MemFree(released, LUMO_HERE);
  }
  for (const Setting &setting : kSettings) {
    if (setting.kind == SettingKind::kText) settings.*setting.text = nullptr;
    if (setting.length != nullptr) settings.*setting.length = 0;
  }
}

}  // namespace lumo
