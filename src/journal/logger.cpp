#include "journal/logger.h"

#include <cstdlib>
#include <cstring>

#include "foundation/files.h"
#include "foundation/format.h"
#include "foundation/memory.h"
#include "foundation/trace.h"
#include "lumo.h"

namespace lumo {
namespace {

constexpr char kLog[] = "LOG";
constexpr char kOffline[] = "OFFLINE";
constexpr char kOfflineTmp[] = "OFFLINE_TMP";

constexpr uint32_t kChunkBytes = 2048;
constexpr size_t kNameBytes = 260;
constexpr int kNameWidth = 256;

int32_t log_size = 0;

// The first line feed in the bytes from `from` to `end`, or null.
const char *FindLineFeed(const char *from, const char *end) {
  return static_cast<const char *>(std::memchr(from, '\n', static_cast<size_t>(end - from)));
}

// Copies what lies behind the first `count` line feeds. A count of 0 or less copies all. False when not all
// of it could be written.
bool CopyBehindLines(int32_t count, HANDLE from, HANDLE to) {
  char chunk[kChunkBytes];
  uint32_t bytes = kChunkBytes;
  while (bytes == kChunkBytes) {
    bytes = FileRead(chunk, 1, kChunkBytes, from);
    const char *rest = chunk;
    const char *end = chunk + bytes;
    for (; count > 0 && rest != end; --count) {
      const char *line_feed = FindLineFeed(rest, end);
      if (line_feed == nullptr) {
        rest = end;
        break;
      }
      rest = line_feed + 1;
    }
    const uint32_t length = static_cast<uint32_t>(end - rest);
    if (length != 0 && FileWrite(rest, 1, length, to) != length) {
      return false;
    }
  }
  return true;
}

void CloseOrTrace(HANDLE file, const char *message) {
  if (FileIsValid(file)) {
    FileClose(file);
  } else {
    TraceError("%s", message);
  }
}

// The name of the copy that a file is trimmed from, from the runtime's malloc.
char *OldName(const char *name) {
  if (std::strlen(name) + std::strlen(".old") <= kNameBytes) {
    return FormatAlloc("%s.old", name);
  }
  TraceWarning("too long name specified\n");
  // Deliberate: a width, not a limit. The name is kept whole, and the system refuses it.
  return FormatAlloc("%*s.old", kNameWidth, name);
}

int TrimThroughOldFile(int32_t count, const char *name, const char *old_name) {
  const int move_code = FileMove(name, old_name);
  if (move_code != 0) {
    TraceError("rename function failed with code %d \"%s\" => \"%s\"\n", move_code, name, old_name);
    return ERR_LOG_DELETE;
  }
  HANDLE old_file = FileOpen(old_name, "rb");
  HANDLE new_file = FileOpen(name, "wb");
  const bool both_open = FileIsValid(old_file) && FileIsValid(new_file);
  const bool copied = both_open && CopyBehindLines(count, old_file, new_file);
  CloseOrTrace(old_file, "old file is NULL\n");
  CloseOrTrace(new_file, "new file is NULL\n");
  if (!both_open) {
    return ERR_LOG_DELETE;
  }
  if (!copied) {
    // The disk is full: better a log that is too long than one that lost its end.
    FileDelete(name);
    FileMove(old_name, name);
    return ERR_LOG_DELETE;
  }
  if (FileDelete(old_name) != 0) {
    TraceError("file [%s] is not removed!\n", old_name);
  }
  return 0;
}

enum class Trim { kNo, kYes };

int AppendRecord(const char *file_name, const char *record, Trim trim) {
  if (record == nullptr) {
    TraceError("Record string is null pointer\n");
    return ERR_OFFLINE_SAVE;
  }
  if (trim == Trim::kYes && static_cast<int64_t>(CountLines(file_name)) + 1 >= log_size) {
    TrimOldestLines(log_size / 3, file_name);
  }
  HANDLE file = FileOpen(file_name, "ab");
  if (!FileIsValid(file)) {
    TraceError("[%s] file is not opened\n", file_name);
    return ERR_OFFLINE_SAVE;
  }
  FileSeek(file, 0, FILE_END);
  const uint32_t length = static_cast<uint32_t>(std::strlen(record));
  const bool whole = FileWrite(record, 1, length, file) == length;
  // Also behind a record that came short, so that the next one begins a line of its own.
  const bool ended = FileWrite("\n", 1, 1, file) == 1;
  FileClose(file);
  return whole && ended ? 0 : ERR_OFFLINE_SAVE;
}

RecordEntry *ListRecords(const char *file_name) {
  HANDLE file = FileOpen(file_name, "rb");
  if (!FileIsValid(file)) {
    return nullptr;
  }
  RecordEntry *first = nullptr;
  RecordEntry **link = &first;
  char chunk[kChunkBytes];
  uint32_t chunk_offset = 0;
  uint32_t record_offset = 0;
  uint32_t bytes = kChunkBytes;
  // A file position is a signed 32-bit number: what lies behind its range could not be loaded.
  while (bytes == kChunkBytes && chunk_offset <= INT32_MAX - kChunkBytes) {
    bytes = FileRead(chunk, 1, kChunkBytes, file);
    const char *end = chunk + bytes;
    for (const char *rest = chunk; rest != end;) {
      const char *line_feed = FindLineFeed(rest, end);
      if (line_feed == nullptr) {
        break;
      }
      rest = line_feed + 1;
      RecordEntry *entry = static_cast<RecordEntry *>(MemCalloc(1, sizeof(RecordEntry), LUMO_HERE));
      const uint32_t next_offset = chunk_offset + static_cast<uint32_t>(rest - chunk);
      entry->offset = record_offset;
      entry->length = next_offset - 1 - record_offset;
      record_offset = next_offset;
      *link = entry;
      link = &entry->next;
    }
    chunk_offset += bytes;
  }
  FileClose(file);
  return first;
}

void LoadRecord(RecordEntry *entry, const char *file_name) {
  if (entry->text == nullptr) {
    HANDLE file = FileOpen(file_name, "rb");
    if (!FileIsValid(file)) {
      TraceError("Can't open log file [%s]\n", file_name);
      return;
    }
    entry->text = static_cast<char *>(MemCalloc(1, static_cast<size_t>(entry->length) + 1, LUMO_HERE));
    FileSeek(file, static_cast<int32_t>(entry->offset), FILE_BEGIN);
    // The file may have been cut since it was listed: the text ends where the file does.
    entry->text[FileRead(entry->text, 1, entry->length, file)] = 0;
    FileClose(file);
  }
  Trace("Record data: %s\n", entry->text);
}

RecordEntry *FirstRecord(const char *file_name) {
  RecordEntry *first = ListRecords(file_name);
  if (first != nullptr) {
    LoadRecord(first, file_name);
  }
  return first;
}

RecordEntry *NextRecord(RecordEntry *entry, const char *file_name) {
  if (entry == nullptr) {
    return nullptr;
  }
  MemFreeText(&entry->text);
  if (entry->next != nullptr) {
    LoadRecord(entry->next, file_name);
  }
  return entry->next;
}

}  // namespace

int SetLogSize(int32_t lines) {
  log_size = lines;
  return 0;
}

int AppendLogRecord(const char *record) {
  return AppendRecord(kLog, record, Trim::kYes);
}

int AppendOfflineRecord(const char *record) {
  return AppendRecord(kOffline, record, Trim::kNo);
}

int AppendOfflineTmpRecord(const char *record) {
  return AppendRecord(kOfflineTmp, record, Trim::kNo);
}

int CommitOfflineTmp() {
  if (!OfflineTmpExists()) {
    return 0;
  }
  const int code = FileDelete(kOffline);
  return code != 0 ? code : FileMove(kOfflineTmp, kOffline);
}

bool OfflineTmpExists() {
  return FileExists(kOfflineTmp) != 0;
}

void DropOfflineTmp() {
  FileDelete(kOfflineTmp);
}

int32_t CountOfflineRecords() {
  return FileExists(kOffline) != 0 ? CountLines(kOffline) : 0;
}

int ClearOffline(int32_t expected) {
  if (CountOfflineRecords() != expected) {
    return ERR_LOG_DELETE;
  }
  return FileExists(kOffline) == 0 || FileDelete(kOffline) == 0 ? 0 : ERR_LOG_DELETE;
}

RecordEntry *GetLogRecords() {
  Trace("GetLogRecords()\n");
  return FirstRecord(kLog);
}

RecordEntry *GetOfflineRecords() {
  Trace("GetOfflineRecords()\n");
  return FirstRecord(kOffline);
}

RecordEntry *NextLogRecord(RecordEntry *entry) {
  return NextRecord(entry, kLog);
}

RecordEntry *NextOfflineRecord(RecordEntry *entry) {
  return NextRecord(entry, kOffline);
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
  HANDLE file = FileOpen(file_name, "rb");
  if (!FileIsValid(file)) {
    return 0;
  }
  uint32_t lines = 0;
  char chunk[kChunkBytes];
  uint32_t bytes = kChunkBytes;
  while (bytes == kChunkBytes) {
    bytes = FileRead(chunk, 1, kChunkBytes, file);
    const char *end = chunk + bytes;
    for (const char *rest = FindLineFeed(chunk, end); rest != nullptr; rest = FindLineFeed(rest + 1, end)) {
      ++lines;
    }
  }
  FileClose(file);
  return static_cast<int32_t>(lines);
}

int TrimOldestLines(int32_t count, const char *file_name) {
  const char *name = TextOrEmpty(file_name);
  char *old_name = OldName(name);
  const int result = TrimThroughOldFile(count, name, old_name);
  std::free(old_name);
  return result;
}

}  // namespace lumo
