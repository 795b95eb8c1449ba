// journal/logger.h: LOG, OFFLINE and OFFLINE_TMP, one record a line. No file stays open between calls, and of
// a list no more than one record's text is in memory. Bytes after the last line feed belong to no record.
#pragma once

#include <cstdint>

#include "foundation/scoped.h"

namespace lumo {

struct RecordEntry {
  char *text;         // zero-terminated; null until loaded; owned by the list
  uint32_t offset;    // of the first byte in the file
  uint32_t length;    // in bytes, line feed excluded
  RecordEntry *next;  // in file order; null at the end
};

int SetLogSize(int32_t lines);  // the bound of LOG; returns 0

// Append one record, behind the last line feed: what follows that belongs to no record and is cut off. 0, or
// ERR_OFFLINE_SAVE when the record is null or could not be added whole; the file then holds the records it
// held. Only LOG is trimmed: when the record would be the logSize-th line or a later one, the oldest
// logSize / 3 lines go first. A record of OFFLINE is on the disk when the call returns.
int AppendLogRecord(const char *record);
int AppendOfflineRecord(const char *record);
int AppendOfflineTmpRecord(const char *record);
// The same with every byte of a loaded record of OFFLINE, zero bytes too.
int AppendOfflineTmpEntry(const RecordEntry *entry);

// Replaces OFFLINE by OFFLINE_TMP, when there is one. 0 or the system's error number.
int CommitOfflineTmp();
// Its second half. When it fails it is done again before OFFLINE is used.
int RenameOfflineTmp();
// Tells that a commit put other records in the place of a whole OFFLINE that was sent.
void OthersTookPlaceOfOffline();

// Takes off the end of OFFLINE_TMP what OFFLINE holds still, in the same order: a replay that was interrupted
// left it, and the next one would keep it twice. Given the whole list of OFFLINE. False when that fails.
bool DropInterruptedReplay(const RecordEntry *offline_records);

// What OFFLINE_TMP was before a replay, and the way back to it. One whose length cannot be told is not gone
// back to: it may hold records of its own.
struct OfflineTmpMark {
  bool exists;
  bool hasLength;
  uint32_t length;
};
OfflineTmpMark MarkOfflineTmp();
void TakeBackOfflineTmp(OfflineTmpMark mark);

// How many records OFFLINE holds; 0 when there is none, ERR_JSON_FILE_OPEN when it cannot be opened or read.
int32_t CountOfflineRecords();
// Deletes OFFLINE when it holds exactly so many records; ERR_LOG_DELETE otherwise, and until the next count
// when others took the place of those that were counted.
int ClearOffline(int32_t expected);

// The records of a journal with the first text loaded; null when it cannot be opened or holds none. Walk with
// Next..., free the first entry with FreeRecordList. A text that could not be read whole is null. A trim
// makes the offsets stale. *out_whole: nothing of the journal is missing from the list.
RecordEntry *GetLogRecords();
RecordEntry *GetOfflineRecords(bool *out_whole);
RecordEntry *NextLogRecord(RecordEntry *entry);
RecordEntry *NextOfflineRecord(RecordEntry *entry);
void FreeRecordList(RecordEntry *first);
using ScopedRecords = Scoped<RecordEntry, FreeRecordList>;

// The lines of any file, in silence unless it cannot be opened or read. Free with FreeRecordList.
RecordEntry *ListRecords(const char *file_name, bool *out_whole);

int32_t CountLines(const char *file_name);
int TrimOldestLines(int32_t count, const char *file_name);  // 0 or ERR_LOG_DELETE

}  // namespace lumo
