// journal/logger.h: LOG, OFFLINE and OFFLINE_TMP, one record a line. No file stays open between calls, and of
// a list no more than one record's text is in memory. Bytes after the last line feed belong to no record.
#pragma once

#include <cstdint>

namespace lumo {

struct RecordEntry {
  char *text;         // zero-terminated; null until loaded; owned by the list
  uint32_t offset;    // of the first byte in the file
  uint32_t length;    // in bytes, line feed excluded
  RecordEntry *next;  // in file order; null at the end
};

int SetLogSize(int32_t lines);  // the bound of LOG; returns 0

// Append one record: 0, or -201 when the record is null, the file cannot be opened or not all of it could be
// written. Only LOG is trimmed: when the record would be the logSize-th line or a later one, the oldest
// logSize / 3 lines go first.
int AppendLogRecord(const char *record);
int AppendOfflineRecord(const char *record);
int AppendOfflineTmpRecord(const char *record);

// Replaces OFFLINE by OFFLINE_TMP, when there is one. 0 or the system's error number.
int CommitOfflineTmp();
bool OfflineTmpExists();
void DropOfflineTmp();

// How many records OFFLINE holds; 0 when there is none, -307 when it cannot be opened or read.
int32_t CountOfflineRecords();
// Deletes OFFLINE when it holds exactly so many records; -202 otherwise.
int ClearOffline(int32_t expected);

// The records of a journal with the first text loaded; null when it cannot be opened or holds none. Walk with
// Next..., free the first entry with FreeRecordList. A trim makes the offsets stale.
RecordEntry *GetLogRecords();
RecordEntry *GetOfflineRecords();
RecordEntry *NextLogRecord(RecordEntry *entry);
RecordEntry *NextOfflineRecord(RecordEntry *entry);
void FreeRecordList(RecordEntry *first);

int32_t CountLines(const char *file_name);
int TrimOldestLines(int32_t count, const char *file_name);  // 0 or -202

}  // namespace lumo
