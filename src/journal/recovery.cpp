#include "journal/recovery.h"

#include "foundation/file_names.h"
#include "foundation/files.h"
#include "journal/line_file.h"
#include "journal/logger.h"

namespace lumo {
namespace {

// A file of lines, listed and open.
struct Lines {
  explicit Lines(const char *name) : first(ListRecords(name, &whole)), file(FileOpen(name, "rb")) {
    whole = whole && FileIsValid(file.get()) && FileMoveToEnd(file.get(), &length);
  }

  bool whole = false;  // nothing is missing
  const ScopedRecords first;
  const ScopedFile file;
  uint32_t length = 0;  // of the file
};

// Records that could not be compared may be the same: joined, they would count twice.
enum class Answer { kYes, kNo, kUnknown };

const RecordEntry *LastLine(const Lines &lines) {
  const RecordEntry *last = lines.first.get();
  while (last != nullptr && last->next != nullptr) last = last->next;
  return last;
}

Answer HoldsLine(const Lines &lines, const Lines &other, const RecordEntry *line) {
  bool failed = false;
  for (const RecordEntry *entry = lines.first.get(); entry != nullptr; entry = entry->next) {
    if (entry->length == line->length && HaveSameBytes(lines.file.get(), entry->offset, other.file.get(),
                                                       line->offset, line->length, &failed)) {
      return Answer::kYes;
    }
  }
  return failed ? Answer::kUnknown : Answer::kNo;
}

// Whether the last record of `other_name` stands in `name` too. Yes as well when there is none.
Answer HoldsLastLineOf(const char *name, const char *other_name) {
  const Lines lines(name);
  const Lines other(other_name);
  if (!lines.whole || !other.whole) return Answer::kUnknown;
  const RecordEntry *last = LastLine(other);
  return last == nullptr ? Answer::kYes : HoldsLine(lines, other, last);
}

// Whether the piece's bytes stand in the whole, from the start of a line on: a copy that was not finished.
// Records differ early: nearly every start is given up in its first chunk.
Answer IsPieceOf(const char *piece_name, const char *whole_name) {
  const Lines piece(piece_name);
  const Lines whole(whole_name);
  if (!piece.whole || !whole.whole) return Answer::kUnknown;
  if (piece.length == 0) return Answer::kYes;
  bool failed = false;
  for (const RecordEntry *start = whole.first.get(); start != nullptr; start = start->next) {
    if (whole.length - start->offset >= piece.length &&
        HaveSameBytes(piece.file.get(), 0, whole.file.get(), start->offset, piece.length, &failed)) {
      return Answer::kYes;
    }
  }
  return failed ? Answer::kUnknown : Answer::kNo;
}

// The lines of LOG.old and behind them all of LOG, on the disk. False when that cannot be, as with a file
// that is not open.
bool CopyBoth(HANDLE old_file, HANDLE file, HANDLE new_file) {
  uint32_t length = 0;
  uint32_t torn = 0;
  return CopyBehindLines(0, old_file, new_file) && FileMoveToEnd(old_file, &length) &&
         FindTornTail(old_file, length, &torn) && (torn == 0 || FileCut(new_file, length - torn)) &&
         CopyBehindLines(0, file, new_file) && FileFlush(new_file);
}

bool WriteNewLog() {
  const ScopedFile old_file(FileOpen(kOldLogFile, "rb"));
  const ScopedFile file(FileOpen(kLogFile, "rb"));
  const ScopedFile new_file(FileOpen(kNewLogFile, "wb"));
  return CopyBoth(old_file.get(), file.get(), new_file.get());
}

// LOG.old's records come before LOG's. LOG.old stays until all is under LOG's name: interrupted anywhere, the
// next start finds each record in one of the files.
void JoinLogs() {
  if (!WriteNewLog() || FileDelete(kLogFile) != 0) {
    FileDelete(kNewLogFile);
    return;
  }
  if (FileMove(kNewLogFile, kLogFile) == 0) FileDelete(kOldLogFile);
}

// LOG.new beside LOG means one of two things. It was not finished, and the other files hold all of it. Or it
// is whole, LOG was deleted for it, and a new LOG was begun before it had the name: then it is the older log.
void RecoverNewLog() {
  const bool has_old_log = FileExists(kOldLogFile);
  const Answer in_log = HoldsLastLineOf(kLogFile, kNewLogFile);
  const Answer in_old_log = has_old_log ? HoldsLastLineOf(kOldLogFile, kNewLogFile) : Answer::kNo;
  if (in_log == Answer::kYes || in_old_log == Answer::kYes) {
    FileDelete(kNewLogFile);
    return;
  }
  if (in_log == Answer::kUnknown || in_old_log == Answer::kUnknown) return;
  if (!has_old_log ||
      (HoldsLastLineOf(kNewLogFile, kOldLogFile) == Answer::kYes && FileDelete(kOldLogFile) == 0)) {
    FileMove(kNewLogFile, kOldLogFile);
  }
}

bool HoldsNoRecord(const char *name) {
  const Lines lines(name);
  return lines.whole && lines.first.get() == nullptr;
}

void RecoverOldLog() {
  if (HoldsNoRecord(kOldLogFile)) {
    FileDelete(kOldLogFile);
    return;
  }
  if (FileIsMissing(kLogFile)) {
    FileMove(kOldLogFile, kLogFile);
    return;
  }
  const Answer is_in_log = HoldsLastLineOf(kLogFile, kOldLogFile);
  const Answer is_copy = is_in_log == Answer::kNo ? IsPieceOf(kLogFile, kOldLogFile) : Answer::kUnknown;
  if (is_in_log == Answer::kYes) {
    FileDelete(kOldLogFile);
  } else if (is_copy == Answer::kYes) {
    if (FileDelete(kLogFile) == 0) FileMove(kOldLogFile, kLogFile);
  } else if (is_copy == Answer::kNo) {
    JoinLogs();
  }
}

// Note: a folder of such a name is left alone: moved, it would be in the way of the records to come.
void RecoverLog() {
  if (FileIsPlain(kNewLogFile)) {
    if (FileIsMissing(kLogFile)) {
      FileMove(kNewLogFile, kLogFile);
    } else {
      RecoverNewLog();
    }
  }
  if (FileIsPlain(kOldLogFile) && FileIsMissing(kNewLogFile)) RecoverOldLog();
}

}  // namespace

void RecoverJournals() {
  RecoverLog();
  // Beside an OFFLINE it is an interrupted replay's: what it holds is in OFFLINE too.
  if (FileIsPlain(kOfflineTmpFile) && FileIsMissing(kOfflineFile)) RenameOfflineTmp();
}

}  // namespace lumo
