// lumo_check: tries a terminal, and the library file on it, and writes what came into a report beside itself.
// It lies in the folder of lumo.dll and CONFIG.JSN, takes no words, and ends by itself: status 0 when all
// came as it should, 1 when something did not, 2 without a report. docs/platforms.md says what to send back.
//
// What might never end is tried last.
#include "lumo.h"
#include "lumo_calls.h"
#include "lumo_check/report.h"
#include "lumo_check/system.h"
#include "lumo_imports.h"

#define LUMO_CHECK_TEXT_OF(number) #number
#define LUMO_CHECK_TEXT(number) LUMO_CHECK_TEXT_OF(number)

namespace lumo {
namespace check {
namespace {

constexpr char kVersion[] = LUMO_CHECK_TEXT(LUMO_VERSION_MAJOR) "." LUMO_CHECK_TEXT(
    LUMO_VERSION_MINOR) "." LUMO_CHECK_TEXT(LUMO_VERSION_PATCH);

// What is tried of the system's own, beside what the program starts with.
#define LUMO_CHECK_CORE_CALLS(CALL) \
  CALL(DeleteFileW)                 \
  CALL(FlushFileBuffers)            \
  CALL(GetFileAttributesExW)        \
  CALL(GetFileAttributesW)          \
  CALL(MoveFileW)                   \
  CALL(MultiByteToWideChar)         \
  CALL(ReadFile)                    \
  CALL(SetEndOfFile)                \
  CALL(Sleep)
#define LUMO_CHECK_SOCKET_CALLS(CALL) \
  CALL(WSACleanup)                    \
  CALL(WSAGetLastError)               \
  CALL(WSAStartup)                    \
  CALL(closesocket)                   \
  CALL(connect)                       \
  CALL(htons)                         \
  CALL(inet_addr)                     \
  CALL(recv)                          \
  CALL(setsockopt)                    \
  CALL(socket)

#define LUMO_CHECK_DECLARE(name) decltype(&lumo::name) name;
struct CoreCalls {
  LUMO_CHECK_CORE_CALLS(LUMO_CHECK_DECLARE)
};
struct SocketCalls {
  LUMO_CHECK_SOCKET_CALLS(LUMO_CHECK_DECLARE)
};
#undef LUMO_CHECK_DECLARE
struct TextCalls {
  FILE *(*_wfopen)(const WCHAR *name, const WCHAR *mode);
  size_t (*fwrite)(const void *bytes, size_t size, size_t count, FILE *file);
  int (*fclose)(FILE *file);
  int (*sscanf)(const char *text, const char *format, ...);
};
struct LibraryCalls {
#define LUMO_CHECK_DECLARE(name) decltype(&::name) name;
  LUMO_CALLS(LUMO_CHECK_DECLARE)
#undef LUMO_CHECK_DECLARE
};

struct Import {
  const WCHAR *library;
  const char *name;
};
constexpr Import kImports[] = {
#define LUMO_CHECK_IMPORT(library, name) {LUMO_WIDE(library), name},
    LUMO_IMPORTS(LUMO_CHECK_IMPORT)
#undef LUMO_CHECK_IMPORT
};

bool IsSame(const char *one, const char *other) {
  while (*one != 0 && *one == *other) ++one, ++other;
  return *one == *other;
}

// The folder's files. The path is that of this program up to its name.
struct Path {
  WCHAR units[260];
};
Path folder;
DWORD folder_size = 0;

bool FindFolder() {
  const DWORD length = GetModuleFileNameW(nullptr, folder.units, 260);
  for (folder_size = length < 260 ? length : 0; folder_size > 0 && folder.units[folder_size - 1] != L'\\';) {
    --folder_size;
  }
  folder.units[folder_size] = 0;
  return folder_size != 0;
}

Path InFolder(const WCHAR *name) {
  Path path = folder;
  DWORD at = folder_size;
  while (*name != 0 && at + 1 < 260) path.units[at++] = *name++;
  path.units[at] = 0;
  return path;
}

class Check {
 public:
  // True when there is a report.
  bool Begin();
  void TrySystem();
  void TryTexts();
  void TryFiles();
  void TrySockets();
  void TryLibrary();
  void TrySettings();
  void TryServer();
  void TrySales();
  void TrySilence();
  // The program's status.
  int Finish();

 private:
  HMODULE Load(const WCHAR *path, const WCHAR *shown);
  // Whether the call is there; a step that failed when it is not.
  bool Has(const void *call, const char *name);
  bool HasCoreCalls();
  bool WriteBill(int goods);
  void Sell(int goods, bool is_printed);
  void SaySlip();
  void SendWaiting();
  HANDLE Open(const WCHAR *name, DWORD creation) {
    const Path path = InFolder(name);
    return CreateFileW(path.units, GENERIC_READ | GENERIC_WRITE, 0, nullptr, creation, FILE_ATTRIBUTE_NORMAL,
                       nullptr);
  }
  // A connection, or the error's number.
  bool Connect(const char *address, int port, SOCKET *out_socket, int *out_error);

  template <typename... Parts>
  void Result(int code, const Parts &...parts) {
    if (code == 0) {
      report_.Step(true, parts..., ": 0");
    } else {
      report_.Step(false, parts..., ": ", code, " ", lumo_.GetErrorMessage(code));
    }
  }

  Report report_;
  HMODULE core_library_ = nullptr, socket_library_ = nullptr, text_library_ = nullptr;
  CoreCalls core_ = {};
  SocketCalls sockets_ = {};
  TextCalls text_ = {};
  LibraryCalls lumo_ = {};
  bool has_core_ = false, has_sockets_ = false, has_library_ = false, has_settings_ = false,
       has_server_ = false;
};

bool Check::Begin() {
  if (!FindFolder() || !report_.Open(InFolder(L"lumo_check.txt").units)) return false;
  report_.Say("lumo_check ", kVersion, " ", LUMO_CHECK_FLAVOUR);
  Text time;
  PutTime(&time);
  report_.Say(time.bytes(), ", ", static_cast<unsigned long>(GetTickCount()), " ms after the system's start");
  OSVERSIONINFOW version = {};
  version.dwOSVersionInfoSize = sizeof version;
  if (GetVersionExW(&version)) {
    report_.Say("system ", static_cast<unsigned long>(version.dwMajorVersion), ".",
                static_cast<unsigned long>(version.dwMinorVersion), ", build ",
                static_cast<unsigned long>(version.dwBuildNumber & 0xFFFF), ", platform ",
                static_cast<unsigned long>(version.dwPlatformId), " ", version.szCSDVersion);
  } else {
    report_.Step(false, "GetVersionExW: error ", static_cast<unsigned long>(GetLastError()));
  }
  report_.Say("folder ", folder.units);
  return true;
}

HMODULE Check::Load(const WCHAR *path, const WCHAR *shown) {
  const HMODULE module = LoadLibraryW(path);
  const DWORD error = GetLastError();
  if (module == nullptr) {
    report_.Step(false, shown, ": not loaded, error ", static_cast<unsigned long>(error));
  }
  return module;
}

bool Check::Has(const void *call, const char *name) {
  if (call == nullptr) report_.Step(false, name, " is missing");
  return call != nullptr;
}

// Each system library, and what the library file takes from it.
void Check::TrySystem() {
  core_library_ = Load(kCoreLibrary, kCoreLibrary);
  text_library_ = Load(kTextLibrary, kTextLibrary);
  socket_library_ = Load(kSocketLibrary, kSocketLibrary);
  int missing = 0, count = 0;
  for (const Import &import : kImports) {
    ++count;
    if (Find(LoadLibraryW(import.library), import.name) != nullptr) continue;
    ++missing;
    report_.Step(false, import.library, " has no ", import.name);
  }
  report_.Step(missing == 0, "lumo.dll takes ", count, " functions from the system, of which ", missing,
               " are missing");

  has_core_ = true;
#define LUMO_CHECK_FIND(name)                                                      \
  core_.name = reinterpret_cast<decltype(core_.name)>(Find(core_library_, #name)); \
  has_core_ = has_core_ && core_.name != nullptr;
  LUMO_CHECK_CORE_CALLS(LUMO_CHECK_FIND)
#undef LUMO_CHECK_FIND
  has_sockets_ = true;
#define LUMO_CHECK_FIND(name)                                                              \
  sockets_.name = reinterpret_cast<decltype(sockets_.name)>(Find(socket_library_, #name)); \
  has_sockets_ = has_sockets_ && sockets_.name != nullptr;
  LUMO_CHECK_SOCKET_CALLS(LUMO_CHECK_FIND)
#undef LUMO_CHECK_FIND
  text_._wfopen = reinterpret_cast<decltype(text_._wfopen)>(Find(text_library_, "_wfopen"));
  text_.fwrite = reinterpret_cast<decltype(text_.fwrite)>(Find(text_library_, "fwrite"));
  text_.fclose = reinterpret_cast<decltype(text_.fclose)>(Find(text_library_, "fclose"));
  text_.sscanf = reinterpret_cast<decltype(text_.sscanf)>(Find(text_library_, "sscanf"));

  if (core_.Sleep == nullptr) return;
  // The ticks may be 16 ms apart.
  const DWORD before = GetTickCount();
  core_.Sleep(200);
  const DWORD slept = GetTickCount() - before;
  report_.Step(slept >= 150, "Sleep(200) takes ", static_cast<unsigned long>(slept), " ms");
}

// What the C library and the code pages make of texts.
void Check::TryTexts() {
  if (core_.MultiByteToWideChar != nullptr) {
    constexpr UINT kUtf8 = 65001;
    WCHAR wide[8] = {};
    const int units = core_.MultiByteToWideChar(kUtf8, 0, "\xD0\x96\xD0\xB0", -1, wide, 8);
    report_.Step(units == 3 && wide[0] == 0x416 && wide[1] == 0x430, "UTF-8 as a code page: ", units,
                 " units");
  }
  if (text_.sscanf != nullptr) {
    int year = 0, month = 0, day = 0, number = 0;
    char date[7] = "";
    int items = text_.sscanf("2012-12-05T10:00:00Z", "%*2s%2d-%2d-%2dT%*s", &year, &month, &day);
    report_.Step(items == 3 && year == 12 && month == 12 && day == 5, "sscanf of a date: ", items, " items, ",
                 year, " ", month, " ", day);
    items = text_.sscanf("1234512120500007", "%*5s%6s%5d", date, &number);
    report_.Step(items == 2 && IsSame(date, "121205") && number == 7, "sscanf of an RRN: ", items, " items, ",
                 date, " ", number);
  }
  if (!has_core_ || text_._wfopen == nullptr || text_.fwrite == nullptr || text_.fclose == nullptr) return;
  const Path path = InFolder(L"lumo_check.tmp");
  core_.DeleteFileW(path.units);
  for (int i = 0; i < 20; ++i) {
    FILE *const file = text_._wfopen(path.units, L"a");
    if (file == nullptr) return report_.Step(false, "_wfopen opens no file to append to");
    text_.fwrite("a line\n", 1, 7, file);
    text_.fclose(file);
  }
  WIN32_FILE_ATTRIBUTE_DATA data = {};
  core_.GetFileAttributesExW(path.units, GetFileExInfoStandard, &data);
  const DWORD size = data.nFileSizeLow;
  report_.Step(size == 140 || size == 160, "20 lines appended one by one: ", static_cast<unsigned long>(size),
               " bytes");
  report_.Note("lines of text files end with ", size == 160 ? "CR LF" : "LF");
  core_.DeleteFileW(path.units);
}

bool Check::HasCoreCalls() {
  if (!has_core_) report_.Step(false, "files cannot be tried without all their functions");
  return has_core_;
}

// The answers that the library counts on, and how long writing takes.
void Check::TryFiles() {
  if (!HasCoreCalls()) return;
  const Path path = InFolder(L"lumo_check.tmp"), other = InFolder(L"lumo_check.tm2");
  core_.DeleteFileW(path.units);
  core_.DeleteFileW(other.units);
  const auto error = [] { return static_cast<unsigned long>(GetLastError()); };

  char bytes[1000];
  for (int i = 0; i < 1000; ++i) bytes[i] = static_cast<char>(i);
  HANDLE file = Open(L"lumo_check.tmp", CREATE_ALWAYS);
  if (file == INVALID_HANDLE_VALUE) return report_.Step(false, "a file cannot be made: error ", error());
  DWORD count = 0;
  const BOOL is_written = WriteFile(file, bytes, 1000, &count, nullptr);
  report_.Step(is_written && count == 1000, "written: ", static_cast<unsigned long>(count), " of 1000 bytes");

  const HANDLE second = Open(L"lumo_check.tmp", OPEN_EXISTING);
  unsigned long code = error();
  report_.Step(second == INVALID_HANDLE_VALUE && code == 32, "a file that is open is opened again: error ",
               code);

  SetFilePointer(file, 0, nullptr, FILE_BEGIN);
  char read[1000] = {};
  core_.ReadFile(file, read, 1000, &count, nullptr);
  int wrong = 0;
  for (int i = 0; i < 1000; ++i) wrong += read[i] != bytes[i];
  report_.Step(count == 1000 && wrong == 0, "read back: ", static_cast<unsigned long>(count), " bytes, ",
               wrong, " of them wrong");
  const BOOL is_read = core_.ReadFile(file, read, 1000, &count, nullptr);
  report_.Step(is_read && count == 0, "read at the end: ", is_read, ", ", static_cast<unsigned long>(count),
               " bytes");
  const DWORD place = SetFilePointer(file, -1, nullptr, FILE_BEGIN);
  code = error();
  report_.Step(place == INVALID_SET_FILE_POINTER && code == 131, "a place before the beginning: error ",
               code);
  SetFilePointer(file, 100, nullptr, FILE_BEGIN);
  core_.SetEndOfFile(file);
  CloseHandle(file);
  WIN32_FILE_ATTRIBUTE_DATA data = {};
  core_.GetFileAttributesExW(path.units, GetFileExInfoStandard, &data);
  report_.Step(data.nFileSizeLow == 100,
               "cut off at 100 bytes: ", static_cast<unsigned long>(data.nFileSizeLow));

  const DWORD attributes = core_.GetFileAttributesW(other.units);
  code = error();
  report_.Step(attributes == INVALID_FILE_ATTRIBUTES && code == 2, "attributes of a missing file: error ",
               code);
  const BOOL is_moved = core_.MoveFileW(path.units, other.units);
  file = Open(L"lumo_check.tmp", CREATE_ALWAYS);
  CloseHandle(file);
  report_.Step(is_moved, "moved: ", is_moved);
  const BOOL is_replaced = core_.MoveFileW(path.units, other.units);
  code = error();
  report_.Step(!is_replaced && code == 183, "moved onto another file: error ", code);
  const BOOL is_deleted = core_.DeleteFileW(other.units);
  report_.Step(is_deleted && core_.GetFileAttributesW(other.units) == INVALID_FILE_ATTRIBUTES,
               "deleted: ", is_deleted);

  for (int i = 0; i < 20; ++i) {
    file = Open(L"lumo_check.tmp", OPEN_ALWAYS);
    SetFilePointer(file, 0, nullptr, FILE_END);
    WriteFile(file, bytes, 1000, &count, nullptr);
    core_.FlushFileBuffers(file);
    CloseHandle(file);
  }
  report_.Note("20 times 1000 bytes, each written through to the disk");
  core_.DeleteFileW(path.units);
}

bool Check::Connect(const char *address, int port, SOCKET *out_socket, int *out_error) {
  *out_socket = sockets_.socket(AF_INET, SOCK_STREAM, 0);
  *out_error = sockets_.WSAGetLastError();
  if (*out_socket == INVALID_SOCKET) return false;
  sockaddr_in name = {};
  name.sin_family = AF_INET;
  name.sin_port = sockets_.htons(static_cast<unsigned short>(port));
  name.sin_addr.s_addr = sockets_.inet_addr(address);
  if (sockets_.connect(*out_socket, reinterpret_cast<const sockaddr *>(&name), sizeof name) == 0) return true;
  *out_error = sockets_.WSAGetLastError();
  sockets_.closesocket(*out_socket);
  return false;
}

void Check::TrySockets() {
  if (!has_sockets_) return report_.Step(false, "sockets cannot be tried without all their functions");
  WSADATA data = {};
  const int code = sockets_.WSAStartup(0x0202, &data);
  report_.Step(code == 0, "WSAStartup: ", code, ", version ", data.wVersion & 0xFF, ".", data.wVersion >> 8);
  has_sockets_ = code == 0;
  if (!has_sockets_) return;
  SOCKET socket;
  int error = 0;
  const bool is_open = Connect("127.0.0.1", 1, &socket, &error);
  report_.Step(!is_open && error == 10061, "connected to where nobody is: ", is_open ? "done" : "error ",
               error);
}

void Check::TryLibrary() {
  const HMODULE library = Load(InFolder(L"lumo.dll").units, L"lumo.dll");
  if (library == nullptr) return;
  report_.Step(true, "lumo.dll is loaded");
  has_library_ = true;
#define LUMO_CHECK_FIND(name)                                                \
  lumo_.name = reinterpret_cast<decltype(lumo_.name)>(Find(library, #name)); \
  has_library_ = Has(reinterpret_cast<const void *>(lumo_.name), #name) && has_library_;
  LUMO_CALLS(LUMO_CHECK_FIND)
#undef LUMO_CHECK_FIND
  if (!has_library_) return;
  report_.Step(IsSame(lumo_.lumoVersion(), kVersion), "lumo.dll is version ", lumo_.lumoVersion());
}

void Check::TrySettings() {
  if (!has_library_) return;
  const int code = lumo_.LUMOInit();
  Result(code, "LUMOInit");
  has_settings_ = code == 0;
  if (!has_settings_) return;
  report_.Note("terminal ", lumo_.getTerminalId(), ", servers ", lumo_.getPingAddress(), ":",
               lumo_.getPingPort(), " and ", lumo_.getPingAltAddress(), ":", lumo_.getPingAltPort());
}

void Check::TryServer() {
  if (!has_settings_ || !has_sockets_) return;
  SOCKET socket;
  int error = 0;
  has_server_ = Connect(lumo_.getPingAddress(), lumo_.getPingPort(), &socket, &error);
  if (!has_server_) return report_.Step(false, "connected to the server: error ", error);
  report_.Step(true, "connected to the server");
  sockets_.closesocket(socket);
}

bool Check::WriteBill(int goods) {
  const HANDLE file = Open(L"BILL.JSN", CREATE_ALWAYS);
  if (file == INVALID_HANDLE_VALUE) return false;
  bool is_right = true;
  Text text;
  const auto write = [&] {
    DWORD count = 0;
    is_right =
        WriteFile(file, text.bytes(), text.size(), &count, nullptr) && count == text.size() && is_right;
    text.Clear();
  };
  text.Put("{\"totalSum\":")
      .Put(1000 * goods)
      .Put(",\"orderLen\":")
      .Put(goods)
      .Put(",\"billNum\":\"1\",\"billDate\":\"");
  PutTime(&text);
  text.Put("\",\"partnerFee\":0,\"goodList\":{\"good\":[");
  for (int i = 1; i <= goods; ++i) {
    text.Put(i == 1 ? "" : ",").Put("{\"title\":\"Хлеб\",\"productCode\":\"").Put(i);
    text.Put("\",\"positionCost\":1000,\"orderNum\":").Put(i).Put(",\"cnt\":1}");
    write();
  }
  text.Put("]}}");
  write();
  return CloseHandle(file) && is_right;
}

void Check::SaySlip() {
  report_.Say("----");
  report_.Say(lumo_.getReceiptHeaderPtr());
  report_.Say(lumo_.getReceiptBodyPtr());
  report_.Say(lumo_.getReceiptFooterPtr());
  report_.Say("----");
}

// A payment of so many goods, and its confirmation.
void Check::Sell(int goods, bool is_printed) {
  if (!WriteBill(goods)) return report_.Step(false, "a bill cannot be written");
  int code = lumo_.CreateTransaction("1000000001", "7");
  if (code != 0) return Result(code, "CreateTransaction");
  report_.Note("a bill of ", goods, " goods, and a transaction");
  code = lumo_.PaymentProc(0, "BILL.JSN");
  if (code != 0) {
    Result(code, "PaymentProc");
    if (code == ERR_SERVER_ERROR) report_.Note("the server says ", lumo_.getResponseStateCode());
  } else {
    char rrn[17] = "";
    const char *const given = lumo_.getRRN();
    for (int i = 0; given != nullptr && given[i] != 0 && i < 16; ++i) rrn[i] = given[i];
    report_.Step(true, "PaymentProc: 0, ", lumo_.lumoIsOffline() ? "without the server" : "at the server",
                 ", RRN ", rrn, ", earned ", lumo_.GetEarnBonusAmount(), ", spent ",
                 lumo_.GetSpendBonusAmount());
    if (is_printed) SaySlip();
    Result(lumo_.PaymentConfirmProc(rrn), "PaymentConfirmProc");
  }
  Result(lumo_.CloseTransaction(), "CloseTransaction");
}

void Check::SendWaiting() {
  const int waiting = lumo_.lumoOfflineCount();
  if (waiting == 0) return;
  const int sent = lumo_.SendOfflinePayments();
  report_.Step(sent == waiting, "sent what waited: ", sent, " of ", waiting);
  if (sent == waiting) Result(lumo_.lumoClearOffline(sent), "lumoClearOffline");
}

void Check::TrySales() {
  if (!has_settings_) return;
  const int code = lumo_.OpenShift("1");
  if (code != ERR_SHIFT_ALREADY_OPEN) Result(code, "OpenShift");
  SendWaiting();
  if (const int created = lumo_.CreateTransaction("1000000001", "7"); created != 0) {
    return Result(created, "CreateTransaction");
  }
  const int balance = lumo_.BalanceProc();
  Result(balance, "BalanceProc");
  if (balance == 0) report_.Note("on the card: ", lumo_.GetBalance());
  Result(lumo_.CloseTransaction(), "CloseTransaction");
  Sell(1, true);
  Sell(10, false);
  Sell(100, false);
  const int length = lumo_.GenerateSummaryReport(nullptr, "9");
  report_.Step(length >= 0, "a report of ", length, " bytes");
}

// An answer that never comes. Where time-outs are not known this waits for the server to end the connection.
void Check::TrySilence() {
  if (!has_server_) return;
  SOCKET socket;
  int error = 0;
  if (!Connect(lumo_.getPingAddress(), lumo_.getPingPort(), &socket, &error)) {
    return report_.Step(false, "connected to the server: error ", error);
  }
  const int limit = 1000;
  const int refused =
      sockets_.setsockopt(socket, SOL_SOCKET, SO_RCVTIMEO, reinterpret_cast<const char *>(&limit), 4);
  error = refused == 0 ? 0 : sockets_.WSAGetLastError();
  report_.Step(refused == 0, "a time-out of 1000 ms is set: error ", error);
  if (refused == 0) {
    report_.Note("waiting for an answer that never comes");
    const DWORD before = GetTickCount();
    char byte;
    const int count = sockets_.recv(socket, &byte, 1, 0);
    error = count < 0 ? sockets_.WSAGetLastError() : 0;
    const DWORD waited = GetTickCount() - before;
    report_.Step(count < 0 && error == 10060 && waited >= 900, "given up: error ", error);
  }
  sockets_.closesocket(socket);
}

int Check::Finish() {
  const int failed = report_.failed(), all = report_.right() + failed;
  if (failed == 0) {
    report_.Say("All ", all, " steps came as they should.");
  } else {
    report_.Say("FAILED: ", failed, " of ", all, " steps.");
  }
  report_.Say("");
  report_.Close();
  Tell(core_library_, failed == 0 ? "All came as it should. Send the folder back."
                                  : "Something did not come as it should. Send the folder back.");
  return failed == 0 ? 0 : 1;
}

// Not on the stack, where a terminal has little room.
Check the_check;

int Run() {
  if (!the_check.Begin()) return 2;
  the_check.TrySystem();
  the_check.TryTexts();
  the_check.TryFiles();
  the_check.TrySockets();
  the_check.TryLibrary();
  the_check.TrySettings();
  the_check.TryServer();
  the_check.TrySales();
  the_check.TrySilence();
  return the_check.Finish();
}

}  // namespace
}  // namespace check
}  // namespace lumo

// The file's entry point: nothing has been started before it.
extern "C" int LumoCheckEntry() {
  lumo::check::End(lumo::check::Run());
}
