#include "journal/logger.h"

#include <cstring>

#include "foundation/file_names.h"
#include "foundation/files.h"
#include "foundation/format.h"
#include "foundation/memory.h"
#include "foundation/result_codes.h"
#include "foundation/trace.h"
#include "journal/line_file.h"

namespace lumo {
namespace {

constexpr size_t kLongestName = 260;  // of a copy, its suffix included, without a warning

int32_t log_size = 0;

// OFFLINE made way for OFFLINE_TMP, which then could not be given its name.
bool commit_is_unfinished;

// A replay sent all of OFFLINE, and then what an earlier one had left took its place.
bool others_took_place;

// How many lines LOG had when this process wrote it last. As long as its length and time are the same, nobody
// else wrote it, and it need not be read to be counted.
struct {
  bool isKnown;
  FileStamp stamp;
  int32_t lines;
} log_count;

// Exact when every line could be read, or when it was remembered.
struct LineCount {
  int32_t lines;
  bool isExact;
};

LineCount CountLinesOf(const char *file_name) {
  const ScopedFile file(FileOpen(file_name, "rb"));
  if (!FileIsValid(file.get())) return {0, false};
  LineReader reader;
  LineReaderInit(&reader, file.get());
  uint32_t lines = 0;
  while (LineReaderNext(&reader)) ++lines;
  return {static_cast<int32_t>(lines), !reader.failed};
}

LineCount CountLogLines() {
  FileStamp stamp = {};
  if (log_count.isKnown && ReadFileStamp(kLogFile, &stamp) && stamp.length == log_count.stamp.length &&
      stamp.writeTime == log_count.stamp.writeTime) {
    return {log_count.lines, true};
  }
  return CountLinesOf(kLogFile);
}

// `length` is what LOG must have for the count to be true of it.
void RememberLogCount(int32_t lines, uint32_t length) {
  log_count.lines = lines;
  log_count.isKnown = ReadFileStamp(kLogFile, &log_count.stamp) && log_count.stamp.length == length;
}

// The name of the copy that a file is trimmed from; free with MemFree.
char *OldName(const char *name) {
  const size_t length = std::strlen(name);
  if (length + std::strlen(kOldSuffix) > kLongestName) {
    // Note: the name is kept whole all the same, and the system refuses it.
    TraceWarning("too long name specified\n");
  }
  char *old_name = static_cast<char *>(MemMalloc(length + sizeof kOldSuffix, LUMO_HERE));
  std::strcpy(old_name, name);
  std::strcpy(old_name + length, kOldSuffix);
  return old_name;
}

// What follows the last line feed belongs to no record and is cut off; the record would join it. *out_length
// is the file's length then. False when the end of the file cannot be found.
bool CutTornTail(HANDLE file, uint32_t *out_length) {
  uint32_t length = 0;
  uint32_t torn = 0;
  if (!FileMoveToEnd(file, &length) || !FindTornTail(file, length, &torn)) return false;
  *out_length = length - torn;
  return torn == 0 || FileCut(file, *out_length);
}

// Appends the record and its line feed in one write. One that cannot be written whole is cut off again.
bool WriteRecord(HANDLE file, const char *record, uint32_t record_length, uint32_t *out_length) {
  uint32_t old_length = 0;
  bool moved = false;
  if (!CutTornTail(file, &old_length)) return false;
  FileSeek(file, 0, FILE_END, &moved);
  if (!moved) return false;
  const ScopedText line(static_cast<char *>(MemMalloc(static_cast<size_t>(record_length) + 1, LUMO_HERE)));
  std::memcpy(line.get(), record, record_length);
  line.get()[record_length] = '\n';
  if (!FileWriteAll(file, line.get(), record_length + 1)) {
    FileCut(file, old_length);
    return false;
  }
  *out_length = old_length + record_length + 1;
  return true;
}

uint32_t CountEntries(const RecordEntry *first) {
  uint32_t count = 0;
  for (const RecordEntry *entry = first; entry != nullptr; entry = entry->next) ++count;
  return count;
}

// A list from its end.
class Backwards {
 public:
  explicit Backwards(const RecordEntry *first)
      : count_(CountEntries(first)),
        entries_(static_cast<const RecordEntry **>(MemMalloc(count_ * sizeof(void *), LUMO_HERE))) {
    uint32_t i = count_;
    for (const RecordEntry *entry = first; entry != nullptr; entry = entry->next) entries_.get()[--i] = entry;
  }

  uint32_t count() const { return count_; }
  const RecordEntry *at(uint32_t i) const { return entries_.get()[i]; }

 private:
  const uint32_t count_;
  const Scoped<const RecordEntry *, MemFreeIfAny> entries_;
};

// How many records at the end of OFFLINE_TMP stand in OFFLINE too, in the same order. Several interrupted
// replays may have left theirs one behind the other. *failed is set when that cannot be told.
uint32_t CountSetAsideAgain(const Backwards &set_aside, const Backwards &records, bool *failed) {
  const ScopedFile tmp_file(FileOpen(kOfflineTmpFile, "rb"));
  const ScopedFile file(FileOpen(kOfflineFile, "rb"));
  uint32_t count = 0;
  *failed = !FileIsValid(tmp_file.get()) || !FileIsValid(file.get());
  if (*failed) return count;
  // Round and round, until one has been held against all of OFFLINE in vain.
  uint32_t in_vain = 0;
  for (uint32_t i = 0; in_vain < records.count() && count < set_aside.count(); ++i) {
    if (i == records.count()) i = 0;
    const RecordEntry *record = records.at(i);
    const RecordEntry *other = set_aside.at(count);
    ++in_vain;
    if (record->length == other->length &&
        HaveSameBytes(file.get(), record->offset, tmp_file.get(), other->offset, record->length, failed)) {
      ++count;
      in_vain = 0;
    }
  }
  return count;
}

bool CutOfflineTmp(uint32_t length) {
  const QuietTrace quiet;
  const ScopedFile file(FileOpen(kOfflineTmpFile, "r+"));
  return FileIsValid(file.get()) && FileCut(file.get(), length);
}

// What the journal holds is then on the disk and survives a power cut. A failure shows when somebody
// reads the file.
void FlushOfflineTmp() {
  const QuietTrace quiet;
  const ScopedFile file(FileOpen(kOfflineTmpFile, "r+"));
  if (FileIsValid(file.get())) FileFlush(file.get());
}

// Gives OFFLINE_TMP its name after a commit that could not. Comes before anything that uses or makes an
// OFFLINE, beside which those records would be overlooked.
void FinishCommit() {
  if (commit_is_unfinished && FileIsMissing(kOfflineFile)) RenameOfflineTmp();
}

struct Appended {
  int code;         // 0 or ERR_OFFLINE_SAVE
  uint32_t length;  // of the file, after a success
  bool held;        // another program kept the file from being opened
};

Appended AppendRecord(const char *file_name, const char *record, uint32_t length, Durable durable) {
  Appended appended = {ERR_OFFLINE_SAVE, 0, false};
  const ScopedFile file(FileOpenShared(file_name, &appended.held));
  if (!FileIsValid(file.get())) {
    TraceError("[%s] file is not opened\n", file_name);
    return appended;
  }
  if (!WriteRecord(file.get(), record, length, &appended.length)) return appended;
  appended.code = 0;
  if (durable == Durable::kYes) FileFlush(file.get());  // a disk that cannot has the record all the same
  return appended;
}

enum class Copied { kNotOpened, kNotWhole, kDone };

// Copies what lies behind the first `count` lines, and closes both files: only then can they be deleted.
Copied CopyNewest(const char *old_name, const char *new_name, int32_t count) {
  const ScopedFile old_file(FileOpen(old_name, "rb"));
  const ScopedFile new_file(FileOpen(new_name, "wb"));
  const bool has_old = FileIsValid(old_file.get());
  const bool has_new = FileIsValid(new_file.get());
  if (!has_old) TraceError("old file is NULL\n");
  if (!has_new) TraceError("new file is NULL\n");
  if (!has_old || !has_new) return Copied::kNotOpened;
  if (!CopyBehindLines(count, old_file.get(), new_file.get())) {
    FileCut(new_file.get(), 0);  // what was copied would stand in both, should the new file not go
    return Copied::kNotWhole;
  }
  FileFlush(new_file.get());  // before the old one goes: a power cut leaves one of them whole
  return Copied::kDone;
}

uint32_t TextLength(const char *text) {
  return static_cast<uint32_t>(std::strlen(text));
}

bool IsNullRecord(const char *record) {
  if (record != nullptr) return false;
  TraceError("Record string is null pointer\n");
  return true;
}

// The record's text; null when it could not be read whole. Free with MemFree.
char *ReadRecord(HANDLE file, const RecordEntry *entry) {
  bool moved = false;
  FileSeek(file, static_cast<int32_t>(entry->offset), FILE_BEGIN, &moved);
  char *text = static_cast<char *>(MemCalloc(1, static_cast<size_t>(entry->length) + 1, LUMO_HERE));
  uint32_t length = 0;
  if (moved && FileReadAll(file, text, entry->length, &length) && length == entry->length) return text;
  MemFree(text, LUMO_HERE);
  return nullptr;
}

void LoadRecord(RecordEntry *entry, const char *file_name) {
  if (entry->text == nullptr) {
    const ScopedFile file(FileOpen(file_name, "rb"));
    if (FileIsValid(file.get())) entry->text = ReadRecord(file.get(), entry);
  }
  if (entry->text != nullptr) {
    Trace("Record data: %s\n", entry->text);
  } else {
    // Also when the file was cut since it was listed: no report is short of a record without a word.
    TraceError("Can't open log file [%s]\n", file_name);
  }
}

RecordEntry *FirstRecord(const char *file_name, bool *out_whole) {
  RecordEntry *first = ListRecords(file_name, out_whole);
  if (first != nullptr) LoadRecord(first, file_name);
  return first;
}

RecordEntry *NextRecord(RecordEntry *entry, const char *file_name) {
  if (entry == nullptr) return nullptr;
  MemFreeText(&entry->text);
  if (entry->next != nullptr) LoadRecord(entry->next, file_name);
  return entry->next;
}

}  // namespace

int SetLogSize(int32_t lines) {
  log_size = lines;
  return 0;
}

int AppendLogRecord(const char *record) {
  if (IsNullRecord(record)) return ERR_OFFLINE_SAVE;
  LineCount count = CountLogLines();
  if (static_cast<int64_t>(count.lines) + 1 >= log_size) {
    TrimOldestLines(log_size / 3, kLogFile);
    count.isExact = false;
  }
  const Appended appended = AppendRecord(kLogFile, record, TextLength(record), Durable::kNo);
  log_count.isKnown = false;
  if (appended.code == 0 && count.isExact) RememberLogCount(count.lines + 1, appended.length);
  return appended.code;
}

int AppendOfflineRecord(const char *record) {
  if (IsNullRecord(record)) return ERR_OFFLINE_SAVE;
  FinishCommit();
  const Appended appended = AppendRecord(kOfflineFile, record, TextLength(record), Durable::kYes);
  if (appended.code == 0 || appended.held) return appended.code;
  // Once more: nobody else knows of a sale without the server, and a payment does not report its loss.
  const QuietTrace quiet;
  return AppendRecord(kOfflineFile, record, TextLength(record), Durable::kYes).code;
}

// Not on the disk one by one: CommitOfflineTmp sees to them all.
int AppendOfflineTmpRecord(const char *record) {
  return IsNullRecord(record) ? ERR_OFFLINE_SAVE
                              : AppendRecord(kOfflineTmpFile, record, TextLength(record), Durable::kNo).code;
}

int AppendOfflineTmpEntry(const RecordEntry *entry) {
  return IsNullRecord(entry->text)
             ? ERR_OFFLINE_SAVE
             : AppendRecord(kOfflineTmpFile, entry->text, entry->length, Durable::kNo).code;
}

int CommitOfflineTmp() {
  if (!FileExists(kOfflineTmpFile)) return 0;
  FlushOfflineTmp();
  const int code = FileDelete(kOfflineFile);
  return code == 0 ? RenameOfflineTmp() : code;
}

int RenameOfflineTmp() {
  const int code = FileMove(kOfflineTmpFile, kOfflineFile);
  commit_is_unfinished = code != 0 && code != ERROR_FILE_NOT_FOUND;
  return code;
}

void OthersTookPlaceOfOffline() {
  others_took_place = true;
}

bool DropInterruptedReplay(const RecordEntry *offline_records) {
  if (offline_records == nullptr || FileIsMissing(kOfflineTmpFile)) return true;
  const QuietTrace quiet;
  bool all_listed = false;
  const ScopedRecords first(ListRecords(kOfflineTmpFile, &all_listed));
  if (!all_listed) return false;
  const Backwards set_aside(first.get());
  const Backwards records(offline_records);
  bool failed = false;
  const uint32_t again = CountSetAsideAgain(set_aside, records, &failed);
  if (failed) return false;
  if (again == set_aside.count()) return FileDelete(kOfflineTmpFile) == 0;
  return again == 0 || CutOfflineTmp(set_aside.at(again - 1)->offset);
}

OfflineTmpMark MarkOfflineTmp() {
  FileStamp stamp = {};
  if (ReadFileStamp(kOfflineTmpFile, &stamp)) return {true, true, static_cast<uint32_t>(stamp.length)};
  return {!FileIsMissing(kOfflineTmpFile), false, 0};
}

void TakeBackOfflineTmp(OfflineTmpMark mark) {
  if (!mark.exists) {
    if (FileExists(kOfflineTmpFile)) FileDelete(kOfflineTmpFile);
    return;
  }
  if (mark.hasLength) CutOfflineTmp(mark.length);
}

int32_t CountOfflineRecords() {
  others_took_place = false;
  FinishCommit();
  if (FileIsMissing(kOfflineFile)) return 0;
  const LineCount count = CountLinesOf(kOfflineFile);
  return count.isExact ? count.lines : static_cast<int32_t>(ERR_JSON_FILE_OPEN);
}

int ClearOffline(int32_t expected) {
  // A count that failed is a negative number, and no expectation. As many other records are not those sent.
  if (expected < 0 || others_took_place || CountOfflineRecords() != expected) return ERR_LOG_DELETE;
  return FileIsMissing(kOfflineFile) || FileDelete(kOfflineFile) == 0 ? 0 : ERR_LOG_DELETE;
}

RecordEntry *GetLogRecords() {
  Trace("GetLogRecords()\n");
  bool whole = false;
  return FirstRecord(kLogFile, &whole);
}

RecordEntry *GetOfflineRecords(bool *out_whole) {
  Trace("GetOfflineRecords()\n");
  FinishCommit();
  return FirstRecord(kOfflineFile, out_whole);
}

RecordEntry *NextLogRecord(RecordEntry *entry) {
  return NextRecord(entry, kLogFile);
}

RecordEntry *NextOfflineRecord(RecordEntry *entry) {
  return NextRecord(entry, kOfflineFile);
}

RecordEntry *ListRecords(const char *file_name, bool *out_whole) {
  const ScopedFile file(FileOpen(file_name, "rb"));
  if (!FileIsValid(file.get())) {
    *out_whole = FileIsMissing(file_name);
    return nullptr;
  }
  RecordEntry *first = nullptr;
  RecordEntry **link = &first;
  LineReader reader;
  LineReaderInit(&reader, file.get());
  while (LineReaderNext(&reader)) {
    auto *entry = static_cast<RecordEntry *>(MemCalloc(1, sizeof(RecordEntry), LUMO_HERE));
    entry->offset = reader.lineOffset;
    entry->length = reader.lineLength;
    *link = entry;
    link = &entry->next;
  }
  *out_whole = !reader.failed;
  return first;
}

void FreeRecordList(RecordEntry *first) {
  while (first != nullptr) {
    RecordEntry *next = first->next;
    MemFreeText(&first->text);
    MemFree(first, LUMO_HERE);
    first = next;
  }
}

int32_t CountLines(const char *file_name) {
  return CountLinesOf(file_name).lines;
}

int TrimOldestLines(int32_t count, const char *file_name) {
  const char *name = TextOrEmpty(file_name);
  const ScopedText scoped_name(OldName(name));
  const char *old_name = scoped_name.get();
  const int move_code = FileMove(name, old_name);
  if (move_code != 0) {
    TraceError("rename function failed with code %d \"%s\" => \"%s\"\n", move_code, name, old_name);
    return ERR_LOG_DELETE;
  }
  const Copied copied = CopyNewest(old_name, name, count);
  if (copied == Copied::kNotWhole) {
    // Better a log that is too long than one that lost its end.
    FileDelete(name);
    FileMove(old_name, name);
  }
  if (copied != Copied::kDone) return ERR_LOG_DELETE;
  if (FileDelete(old_name) != 0) TraceError("file [%s] is not removed!\n", old_name);
  return 0;
}

}  // namespace lumo
