#include "faults/calls.h"

#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstdlib>

#include "platform/platform.h"

namespace faults {
namespace {

enum class Mode { kOff, kCount, kFail, kEnd, kLoseTrace };

// Which ways a call knows, beside kError.
enum Kind { kPlain, kNamed, kReading, kWriting, kMemory };

Mode mode = Mode::kOff;
int calls;
int faulty_call;
Way way;
bool for_ever;
End end;
bool met;
const char *faulty_name = "";
unsigned char *abilities;
int most_abilities;

bool KindCanFail(Kind kind, Way each) {
  switch (each) {
    case Way::kError:
      return true;
    case Way::kHeld:
      return kind == kNamed;
    case Way::kFull:
      return kind == kWriting;
    case Way::kHalf:
    case Way::kOneByte:
      return kind == kReading || kind == kWriting;
  }
  return false;
}

void NoteAbilities(Kind kind) {
  if (calls > most_abilities) return;
  unsigned char ways = 0;
  for (const Way each : kWays) {
    if (KindCanFail(kind, each)) ways |= static_cast<unsigned char>(1 << static_cast<int>(each));
  }
  abilities[calls - 1] = ways;
}

[[noreturn]] void EndProcess() {
  raise(SIGKILL);
  _exit(1);
}

// Counts a call. True when it is to fail.
bool Fails(const char *name, Kind kind) {
  if (mode == Mode::kOff || mode == Mode::kLoseTrace) return false;
  ++calls;
  if (mode == Mode::kCount) NoteAbilities(kind);
  if (calls == faulty_call) faulty_name = name;
  if (mode != Mode::kFail || !KindCanFail(kind, way)) return false;
  const bool fails = calls == faulty_call || (for_ever && met && calls > faulty_call);
  met = met || fails;
  return fails;
}

bool IsEnd(End wanted) {
  return mode == Mode::kEnd && calls == faulty_call && end == wanted;
}

// The process ends in front of the call.
void Enter() {
  if (IsEnd(End::kBefore)) EndProcess();
}

template <typename Result>
Result Leave(Result result) {
  if (IsEnd(End::kAfter)) EndProcess();
  return result;
}

lumo::DWORD FileError() {
  switch (way) {
    case Way::kHeld:
      return lumo::ERROR_SHARING_VIOLATION;
    case Way::kFull:
      return lumo::ERROR_DISK_FULL;
    default:
      return lumo::ERROR_GEN_FAILURE;
  }
}

template <typename Result>
Result Refuse(Result result, lumo::DWORD error) {
  lumo::lumo_SetLastError(error);
  return result;
}

// How many of the bytes a short transfer takes.
lumo::DWORD Short(lumo::DWORD count) {
  return way == Way::kOneByte ? std::min<lumo::DWORD>(count, 1) : (count + 1) / 2;
}

bool IsShort() {
  return way == Way::kHalf || way == Way::kOneByte;
}

}  // namespace

const char *NameOf(Way each) {
  constexpr const char *kNames[] = {"error", "held", "full", "half", "one byte"};
  return kNames[static_cast<int>(each)];
}

const char *NameOf(End each) {
  constexpr const char *kNames[] = {"before", "halfway", "after"};
  return kNames[static_cast<int>(each)];
}

namespace {

void Start(Mode new_mode, int n) {
  mode = new_mode;
  calls = 0;
  faulty_call = n;
  met = false;
  faulty_name = "";
}

}  // namespace

void StartCounting(unsigned char *new_abilities, int most) {
  abilities = new_abilities;
  most_abilities = most;
  Start(Mode::kCount, 0);
}

bool CanFail(unsigned char abilities_of_call, Way each) {
  return (abilities_of_call >> static_cast<int>(each) & 1) != 0;
}

void FailCall(int n, Way new_way, bool new_for_ever) {
  way = new_way;
  for_ever = new_for_ever;
  Start(Mode::kFail, n);
}

void EndAtCall(int n, End new_end) {
  end = new_end;
  Start(Mode::kEnd, n);
}

void LoseTrace() {
  Start(Mode::kLoseTrace, 0);
}

void StopCounting() {
  mode = Mode::kOff;
}

bool FaultIsForEver() {
  return mode == Mode::kFail && for_ever;
}

int CallsCounted() {
  return calls;
}

bool FaultWasMet() {
  return met;
}

std::string FaultyCall() {
  return faulty_name;
}

}  // namespace faults

using namespace lumo;  // the calls' own types
using faults::Enter;
using faults::Fails;
using faults::Leave;
using faults::Refuse;

// The linker turns the library's calls into these, and __real_ names back into the platform's own.
extern "C" {

#define FAULTS_CALL(result, name, parameters) \
  result __real_##name parameters;            \
  result __wrap_##name parameters

FAULTS_CALL(void *, malloc, (size_t size)) {
  if (Fails("malloc", faults::kMemory)) return nullptr;
  Enter();
  return Leave(__real_malloc(size));
}

FAULTS_CALL(void *, calloc, (size_t count, size_t size)) {
  if (Fails("calloc", faults::kMemory)) return nullptr;
  Enter();
  return Leave(__real_calloc(count, size));
}

FAULTS_CALL(void *, realloc, (void *pointer, size_t size)) {
  if (Fails("realloc", faults::kMemory)) return nullptr;
  Enter();
  return Leave(__real_realloc(pointer, size));
}

FAULTS_CALL(HANDLE, lumo_CreateFileW,
            (const WCHAR *name, DWORD access, DWORD share_mode, void *security, DWORD creation,
             DWORD attributes, HANDLE model)) {
  if (Fails("CreateFileW", faults::kNamed)) return Refuse(INVALID_HANDLE_VALUE, faults::FileError());
  Enter();
  return Leave(__real_lumo_CreateFileW(name, access, share_mode, security, creation, attributes, model));
}

FAULTS_CALL(BOOL, lumo_ReadFile,
            (HANDLE file, void *buffer, DWORD count, DWORD *out_read, void *overlapped)) {
  if (Fails("ReadFile", faults::kReading)) {
    if (!faults::IsShort()) {
      *out_read = 0;
      return Refuse(0, faults::FileError());
    }
    count = faults::Short(count);
  }
  Enter();
  return Leave(__real_lumo_ReadFile(file, buffer, count, out_read, overlapped));
}

FAULTS_CALL(BOOL, lumo_WriteFile,
            (HANDLE file, const void *buffer, DWORD count, DWORD *out_written, void *overlapped)) {
  if (Fails("WriteFile", faults::kWriting)) {
    if (!faults::IsShort()) {
      *out_written = 0;
      return Refuse(0, faults::FileError());
    }
    count = faults::Short(count);
  }
  Enter();
  // STATE, less than a sector and written in one call, reaches the disk whole or not at all. A record, which
  // ends with its line feed, may be of any length and is cut in the middle.
  const bool is_record = count != 0 && static_cast<const char *>(buffer)[count - 1] == '\n';
  if (faults::IsEnd(faults::End::kHalfway) && (is_record || count > 512)) {
    __real_lumo_WriteFile(file, buffer, count / 2, out_written, overlapped);
    faults::EndProcess();
  }
  return Leave(__real_lumo_WriteFile(file, buffer, count, out_written, overlapped));
}

FAULTS_CALL(DWORD, lumo_SetFilePointer, (HANDLE file, LONG offset, LONG *offset_high, DWORD origin)) {
  if (Fails("SetFilePointer", faults::kPlain)) return Refuse(INVALID_SET_FILE_POINTER, faults::FileError());
  Enter();
  return Leave(__real_lumo_SetFilePointer(file, offset, offset_high, origin));
}

FAULTS_CALL(BOOL, lumo_SetEndOfFile, (HANDLE file)) {
  if (Fails("SetEndOfFile", faults::kPlain)) return Refuse(0, faults::FileError());
  Enter();
  return Leave(__real_lumo_SetEndOfFile(file));
}

FAULTS_CALL(BOOL, lumo_FlushFileBuffers, (HANDLE file)) {
  if (Fails("FlushFileBuffers", faults::kPlain)) return Refuse(0, faults::FileError());
  Enter();
  return Leave(__real_lumo_FlushFileBuffers(file));
}

// A close that fails has closed.
FAULTS_CALL(BOOL, lumo_CloseHandle, (HANDLE handle)) {
  const bool fails = Fails("CloseHandle", faults::kPlain);
  Enter();
  const BOOL result = Leave(__real_lumo_CloseHandle(handle));
  return fails ? Refuse(0, faults::FileError()) : result;
}

FAULTS_CALL(BOOL, lumo_DeleteFileW, (const WCHAR *name)) {
  if (Fails("DeleteFileW", faults::kNamed)) return Refuse(0, faults::FileError());
  Enter();
  return Leave(__real_lumo_DeleteFileW(name));
}

FAULTS_CALL(BOOL, lumo_MoveFileW, (const WCHAR *from, const WCHAR *to)) {
  if (Fails("MoveFileW", faults::kNamed)) return Refuse(0, faults::FileError());
  Enter();
  return Leave(__real_lumo_MoveFileW(from, to));
}

FAULTS_CALL(DWORD, lumo_GetFileAttributesW, (const WCHAR *name)) {
  if (Fails("GetFileAttributesW", faults::kPlain)) {
    return Refuse(INVALID_FILE_ATTRIBUTES, faults::FileError());
  }
  Enter();
  return Leave(__real_lumo_GetFileAttributesW(name));
}

FAULTS_CALL(BOOL, lumo_GetFileAttributesExW,
            (const WCHAR *name, GET_FILEEX_INFO_LEVELS level, void *out_data)) {
  if (Fails("GetFileAttributesExW", faults::kPlain)) return Refuse(0, faults::FileError());
  Enter();
  return Leave(__real_lumo_GetFileAttributesExW(name, level, out_data));
}

FAULTS_CALL(BOOL, lumo_AppendToFile, (const FileName *name, const char *text, size_t length)) {
  if (faults::mode == faults::Mode::kLoseTrace) return Refuse(0, faults::FileError());
  return __real_lumo_AppendToFile(name, text, length);
}

// Nobody waits here.
void __wrap_lumo_Sleep(DWORD milliseconds);
void __wrap_lumo_Sleep(DWORD) {}

FAULTS_CALL(int, lumo_WSAStartup, (WORD version, WSADATA *data)) {
  if (Fails("WSAStartup", faults::kPlain)) return 10091;
  Enter();
  return Leave(__real_lumo_WSAStartup(version, data));
}

FAULTS_CALL(SOCKET, lumo_socket, (int family, int type, int protocol)) {
  if (Fails("socket", faults::kPlain)) return Refuse(INVALID_SOCKET, WSAENOBUFS);
  Enter();
  return Leave(__real_lumo_socket(family, type, protocol));
}

FAULTS_CALL(int, lumo_setsockopt, (SOCKET socket, int level, int option, const char *value, int length)) {
  if (Fails("setsockopt", faults::kPlain)) return Refuse(SOCKET_ERROR, WSAENOBUFS);
  Enter();
  return Leave(__real_lumo_setsockopt(socket, level, option, value, length));
}

FAULTS_CALL(int, lumo_connect, (SOCKET socket, const sockaddr *address, int length)) {
  if (Fails("connect", faults::kPlain)) return Refuse(SOCKET_ERROR, WSAETIMEDOUT);
  Enter();
  return Leave(__real_lumo_connect(socket, address, length));
}

int __real_lumo_shutdown(SOCKET socket, int how);

FAULTS_CALL(int, lumo_send, (SOCKET socket, const char *data, int length, int flags)) {
  if (Fails("send", faults::kWriting)) {
    if (!faults::IsShort()) return Refuse(SOCKET_ERROR, WSAECONNRESET);
    length = static_cast<int>(faults::Short(static_cast<DWORD>(length)));
    const int sent = __real_lumo_send(socket, data, length, flags);
    // The server need not wait for the rest until its patience, and then the library's, is at an end.
    constexpr int kSending = 1;
    __real_lumo_shutdown(socket, kSending);
    return sent;
  }
  Enter();
  if (faults::IsEnd(faults::End::kHalfway)) {
    __real_lumo_send(socket, data, length / 2, flags);
    faults::EndProcess();
  }
  return Leave(__real_lumo_send(socket, data, length, flags));
}

FAULTS_CALL(int, lumo_recv, (SOCKET socket, char *buffer, int capacity, int flags)) {
  if (Fails("recv", faults::kReading)) {
    if (!faults::IsShort()) return Refuse(SOCKET_ERROR, WSAETIMEDOUT);
    capacity = static_cast<int>(faults::Short(static_cast<DWORD>(capacity)));
  }
  Enter();
  return Leave(__real_lumo_recv(socket, buffer, capacity, flags));
}

FAULTS_CALL(int, lumo_shutdown, (SOCKET socket, int how)) {
  if (Fails("shutdown", faults::kPlain)) return Refuse(SOCKET_ERROR, WSAENOTCONN);
  Enter();
  return Leave(__real_lumo_shutdown(socket, how));
}

FAULTS_CALL(int, lumo_closesocket, (SOCKET socket)) {
  const bool fails = Fails("closesocket", faults::kPlain);
  Enter();
  const int result = Leave(__real_lumo_closesocket(socket));
  return fails ? Refuse(SOCKET_ERROR, WSAENETDOWN) : result;
}

}  // extern "C"
