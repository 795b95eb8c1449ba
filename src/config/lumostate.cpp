#include "config/lumostate.h"

#include <cstring>

#include "foundation/arithmetic.h"
#include "foundation/dates.h"
#include "foundation/file_names.h"
#include "foundation/files.h"
#include "foundation/format.h"
#include "foundation/lumostring.h"
#include "foundation/memory.h"
#include "foundation/result_codes.h"
#include "foundation/trace.h"
#include "json/lumojson.h"

namespace lumo {
namespace {

constexpr char kEmptyState[] = "{}";
constexpr size_t kStateDateBytes = 30;  // terminator included; a longer text is cut

struct StateRecord {
  char *reqId;    // owned; null when absent
  char *shiftId;  // owned; null when absent
  int32_t shiftState;
  int32_t offline;
  int32_t update;
  char shiftOpenDate[kStateDateBytes];
  char shiftCloseDate[kStateDateBytes];
};

StateRecord state;
char *request_id_copy;  // owned; what CopyRequestId handed out last

// `source` may be the field's own text.
void ReplaceText(char **field, const char *source) {
  char *copy = MemCopyText(source, LUMO_HERE);
  MemFreeText(field);
  *field = copy;
}

// `source` may be the field itself; null clears it.
void ReplaceDate(char (&field)[kStateDateBytes], const char *source) {
  const size_t length = Smaller(std::strlen(TextOrEmpty(source)), kStateDateBytes - 1);
  if (length != 0) std::memmove(field, source, length);
  std::memset(field + length, 0, kStateDateBytes - length);
}

void ClearState() {
  MemFreeText(&state.reqId);
  MemFreeText(&state.shiftId);
  state = StateRecord{};
}

using TextField = char *StateRecord::*;
using DateField = char (StateRecord::*)[kStateDateBytes];
using FlagField = int32_t StateRecord::*;

struct StateMember {
  const char *key;
  const char *label;  // of a flag, in the trace
  TextField text;     // the member's field is the one of these three that is not null
  DateField date;
  FlagField flag;
  bool emptyIsNone;  // of a text
};

constexpr StateMember Text(const char *key, TextField field) {
  return {key, nullptr, field, nullptr, nullptr, false};
}
constexpr StateMember TextOrNone(const char *key, TextField field) {
  return {key, nullptr, field, nullptr, nullptr, true};
}
constexpr StateMember Date(const char *key, DateField field) {
  return {key, nullptr, nullptr, field, nullptr, false};
}
constexpr StateMember Flag(const char *key, const char *label, FlagField field) {
  return {key, label, nullptr, nullptr, field, false};
}

// In the order in which a key looks for its name, and in which they are written.
constexpr StateMember kStateMembers[] = {
    Text("reqId", &StateRecord::reqId),
    TextOrNone("shiftId", &StateRecord::shiftId),
    Date("shiftOpenDate", &StateRecord::shiftOpenDate),
    Date("shiftCloseDate", &StateRecord::shiftCloseDate),
    Flag("offline", "offlineState", &StateRecord::offline),
    Flag("shiftState", "shiftState", &StateRecord::shiftState),
    Flag("update", "needUpdate", &StateRecord::update),
};

// Only an integer counts: a flag written as a text, a fraction or `true` is off.
void StoreFlag(const StateMember &member, const JsonNode &value) {
  if (value.type == JSON_INT) {
    state.*member.flag = JsonInt32(value);
  } else {
    state.*member.flag = 0;
    TraceWarning("Wrong JSON type for %s [%d]\n", member.label, static_cast<int>(value.type));
  }
}

void StoreMember(const StateMember &member, const JsonNode &value) {
  if (member.flag != nullptr) {
    StoreFlag(member, value);
    return;
  }
  const char *text = JsonText(value);
  if (member.date != nullptr) {
    ReplaceDate(state.*member.date, text);
  } else {
    ReplaceText(&(state.*member.text), member.emptyIsNone && text[0] == 0 ? nullptr : text);
  }
}

// A text that is null and a date that is empty are left out.
void WriteMember(JsonPrinter *printer, const StateMember &member) {
  if (member.flag != nullptr) {
    WriteIntMember(printer, member.key, state.*member.flag);
  } else if (member.text != nullptr) {
    if (state.*member.text != nullptr) WriteStringMember(printer, member.key, state.*member.text);
  } else if ((state.*member.date)[0] != 0) {
    WriteStringMember(printer, member.key, state.*member.date);
  }
}

void ApplyStateMember(const JsonMember &member) {
  for (const StateMember &known : kStateMembers) {
    if (KeyIsPrefixOf(member, known.key)) {
      StoreMember(known, member.value);
      return;
    }
  }
  TraceWarning("Unsupported state element [%.*s]\n", TracedKeyLength(member), member.key);
}

int ApplyStateTree(const JsonNode *root) {
  if (root == nullptr) {
    TraceError("State json root is NULL!\n");
    return ERR_STATE_LOAD;
  }
  if (root->type != JSON_OBJECT_BEGIN) {
    TraceError("State json structure error!\n");
    return ERR_STATE_LOAD;
  }
  for (uint32_t i = 0; i < root->count; ++i) ApplyStateMember(root->members[i]);
  return 0;
}

// Note: a state that cannot be parsed gives way to an empty one, and all values start again from zero.
int ResetStateFile() {
  const uint32_t length = sizeof kEmptyState - 1;
  // What could not be written is met, and told, by the next save.
  return FileReplace(kStateFile, kEmptyState, length) == Replaced::kNotOpened ? ERR_STATE_CREATE : 0;
}

// Another program holds the file: there is one, and nothing of it was read.
bool IsHeld(int result, const JsonReader *reader) {
  return result == ERR_JSON_FILE_OPEN && !JsonReaderReadFailed(reader) && !FileIsMissing(kStateFile);
}

bool CanBeOpened(const char *name) {
  const ScopedFile file(FileOpen(name, "r+"));
  return FileIsValid(file.get());
}

void PrintState(String *text) {
  JsonPrinter printer;
  JsonPrinterInit(&printer, StringSink, text);
  JsonPrinterRaw(&printer, JSON_OBJECT_BEGIN, nullptr, 0);
  for (const StateMember &member : kStateMembers) WriteMember(&printer, member);
  JsonPrinterRaw(&printer, JSON_OBJECT_END, nullptr, 0);
  JsonPrinterFree(&printer);
}

}  // namespace

int LoadState() {
  const ScopedReader reader(JsonReaderCreate());
  Trace("LoadState\n");
  int result = ParseJsonFile(reader.get(), kStateFile);
  if (IsHeld(result, reader.get()) && CanBeOpened(kStateFile)) {
    result = ParseJsonFile(reader.get(), kStateFile);
  }
  if (IsHeld(result, reader.get())) {
    // A state that is there must not give way to an empty one unread.
    ClearState();
    return ERR_STATE_CREATE;
  }
  if (JsonReaderReadFailed(reader.get())) {
    // What is in memory is what this process wrote last: better than nothing at all.
    return ERR_STATE_LOAD;
  }
  ClearState();
  return result == 0 ? ApplyStateTree(JsonReaderRoot(reader.get())) : ResetStateFile();
}

int SaveState() {
  Trace("SaveState\n");
  const ScopedString text(StringCreate());
  PrintState(text.get());
  const Replaced replaced = FileReplace(kStateFile, StringGetText(text.get()), StringGetLength(text.get()));
  if (replaced == Replaced::kNotOpened) TraceWarning("SaveState: Cant open file!\n");
  return replaced == Replaced::kDone ? 0 : ERR_STATE_OPEN;
}

int InitState() {
  Trace("InitState\n");
  ClearState();
  return 0;
}

void ReleaseState() {
  ClearState();
}

int OpenShift(const char *shift_id) {
  Trace("OpenShift \n");
  // The text may be the record's own, which a reload frees.
  const ScopedText given_id(MemCopyText(shift_id, LUMO_HERE));
  if (GetShiftState() != 0) return ERR_SHIFT_ALREADY_OPEN;
  // Note: without an identifier the shift is named after the time the previous one was opened; the empty text
  // when there was none.
  SetShiftId(given_id.get() != nullptr ? given_id.get() : state.shiftOpenDate);
  SetShiftState(1);
  SetShiftOpenDate(IsoTimestamp());
  return 0;
}

int CloseShift(bool transaction_exists) {
  Trace("CloseShift\n");
  if (transaction_exists) return ERR_SHIFT_TRANSACTION_OPEN;
  if (GetShiftState() != 1) return 0;
  SetShiftCloseDate(IsoTimestamp());
  SetShiftState(0);
  return 0;
}

int GetShiftState() {
  LoadState();
  return state.shiftState;
}

const char *GetShiftId() {
  LoadState();
  return state.shiftId;
}

const char *GetShiftOpenDate() {
  LoadState();
  return state.shiftOpenDate;
}

const char *GetShiftCloseDate() {
  LoadState();
  return state.shiftCloseDate;
}

int SetShiftId(const char *shift_id) {
  ReplaceText(&state.shiftId, shift_id);
  return SaveState();
}

int SetShiftState(int32_t value) {
  state.shiftState = value;
  return SaveState();
}

int SetShiftOpenDate(const char *date) {
  ReplaceDate(state.shiftOpenDate, date);
  return SaveState();
}

int SetShiftCloseDate(const char *date) {
  ReplaceDate(state.shiftCloseDate, date);
  return SaveState();
}

int GetOfflineState() {
  LoadState();
  return state.offline;
}

int SetOfflineState(int32_t value) {
  state.offline = value;
  return SaveState();
}

int GetNeedUpdate() {
  return state.update;
}

int SetNeedUpdate(int32_t value) {
  state.update = value;
  return SaveState();
}

int SetRequestId(const char *request_id) {
  if (request_id == nullptr) return 0;
  ReplaceText(&state.reqId, request_id);
  return SaveState();
}

const char *RequestId() {
  return state.reqId;
}

const char *CopyRequestId() {
  ReplaceText(&request_id_copy, state.reqId);
  return request_id_copy;
}

}  // namespace lumo
