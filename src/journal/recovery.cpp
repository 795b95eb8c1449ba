#include "journal/recovery.h"

#include "foundation/files.h"
#include "journal/line_file.h"
#include "journal/logger.h"

namespace lumo {
namespace {

constexpr char kLog[] = "LOG";
constexpr char kOldLog[] = "LOG.old";  // what a trim cuts
constexpr char kNewLog[] = "LOG.new";  // both, on the way to become LOG
constexpr char kOffline[] = "OFFLINE";
constexpr char kOfflineTmp[] = "OFFLINE_TMP";

bool Exists(const char *name) {
  return FileExists(name) != 0;
}

void CloseIfOpen(HANDLE file) {
  if (FileIsValid(file)) {
    FileClose(file);
  }
}

// A file of lines, listed and open.
struct Lines {
  HANDLE file;
  RecordEntry *first;
  uint32_t length;  // of the file
  bool whole;       // nothing is missing
};

Lines OpenLines(const char *name) {
  Lines lines = {};
  lines.first = ListRecords(name, &lines.whole);
  lines.file = FileOpen(name, "rb");
  lines.whole = lines.whole && FileIsValid(lines.file) && FileMoveToEnd(lines.file, &lines.length);
  return lines;
}

void CloseLines(Lines *lines) {
  FreeRecordList(lines->first);
  CloseIfOpen(lines->file);
}

const RecordEntry *LastLine(const Lines &lines) {
  const RecordEntry *last = lines.first;
  while (last != nullptr && last->next != nullptr) {
    last = last->next;
  }
  return last;
}

bool HoldsLine(const Lines &lines, const Lines &other, const RecordEntry *line) {
  for (const RecordEntry *entry = lines.first; entry != nullptr; entry = entry->next) {
    if (entry->length == line->length &&
        HaveSameBytes(lines.file, entry->offset, other.file, line->offset, line->length)) {
      return true;
    }
  }
  return false;
}

// Whether the lines from `start` on are as long as all of the piece's.
bool HaveSameLengths(const RecordEntry *start, const RecordEntry *piece) {
  for (; piece != nullptr; start = start->next, piece = piece->next) {
    if (start == nullptr || start->length != piece->length) {
      return false;
    }
  }
  return true;
}

// Whether the piece's bytes stand in the whole, from the start of a line on: a copy that was not finished.
bool IsPieceOf(const Lines &piece, const Lines &whole) {
  if (piece.length == 0) {
    return true;
  }
  for (const RecordEntry *start = whole.first; start != nullptr; start = start->next) {
    if (HaveSameLengths(start, piece.first) && whole.length - start->offset >= piece.length &&
        HaveSameBytes(piece.file, 0, whole.file, start->offset, piece.length)) {
      return true;
    }
  }
  return false;
}

enum class Step { kKeepLog, kPutOldBack, kJoin, kWait };

// What becomes of LOG.old beside LOG.
Step JudgeOldLog() {
  Lines old_log = OpenLines(kOldLog);
  Lines log = OpenLines(kLog);
  const RecordEntry *last = LastLine(old_log);
  Step step = Step::kJoin;
  if (!old_log.whole || !log.whole) {
    step = Step::kWait;
  } else if (last == nullptr || HoldsLine(log, old_log, last)) {
    step = Step::kKeepLog;
  } else if (IsPieceOf(log, old_log)) {
    step = Step::kPutOldBack;
  }
  CloseLines(&log);
  CloseLines(&old_log);
  return step;
}

// The lines of LOG.old and behind them all of LOG, on the disk. False when that cannot be.
bool CopyBoth(HANDLE old_file, HANDLE file, HANDLE new_file) {
  uint32_t length = 0;
  uint32_t torn = 0;
  return CopyBehindLines(0, old_file, new_file) && FileMoveToEnd(old_file, &length) &&
         FindTornTail(old_file, length, &torn) && (torn == 0 || FileCut(new_file, length - torn)) &&
         CopyBehindLines(0, file, new_file) && FileFlush(new_file);
}

bool WriteNewLog() {
  HANDLE old_file = FileOpen(kOldLog, "rb");
  HANDLE file = FileOpen(kLog, "rb");
  HANDLE new_file = FileOpen(kNewLog, "wb");
  const bool written = FileIsValid(old_file) && FileIsValid(file) && FileIsValid(new_file) &&
                       CopyBoth(old_file, file, new_file);
  CloseIfOpen(old_file);
  CloseIfOpen(file);
  CloseIfOpen(new_file);
  return written;
}

// LOG.old's records come before LOG's. LOG.old stays until all is under LOG's name: interrupted anywhere, the
// next start finds each record in one of the files.
void JoinLogs() {
  if (!WriteNewLog() || FileDelete(kLog) != 0) {
    FileDelete(kNewLog);
    return;
  }
  if (FileMove(kNewLog, kLog) == 0) {
    FileDelete(kOldLog);
  }
}

void RecoverLog() {
  if (Exists(kNewLog)) {
    if (FileIsMissing(kLog)) {
      FileMove(kNewLog, kLog);
    } else if (Exists(kLog)) {
      FileDelete(kNewLog);  // not finished; all it holds is in the other two
    }
  }
  if (!Exists(kOldLog)) {
    return;
  }
  if (FileIsMissing(kLog)) {
    FileMove(kOldLog, kLog);
    return;
  }
  switch (JudgeOldLog()) {
    case Step::kKeepLog:
      FileDelete(kOldLog);
      break;
    case Step::kPutOldBack:
      if (FileDelete(kLog) == 0) {
        FileMove(kOldLog, kLog);
      }
      break;
    case Step::kJoin:
      JoinLogs();
      break;
    case Step::kWait:
      break;
  }
}

}  // namespace

void RecoverJournals() {
  RecoverLog();
  // Beside an OFFLINE it is an interrupted replay's: what it holds is in OFFLINE too.
  if (Exists(kOfflineTmp) && FileIsMissing(kOffline)) {
    FileMove(kOfflineTmp, kOffline);
  }
}

}  // namespace lumo
