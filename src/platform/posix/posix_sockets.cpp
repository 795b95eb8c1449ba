#include <arpa/inet.h>
#include <errno.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <time.h>
#include <unistd.h>

#include <cstring>

#include "platform/posix/posix_internal.h"

namespace lumo {
namespace {

// How many WSAStartup calls have had no WSACleanup yet. No call works without one.
int startups;

int Fail(int error) {
  lumo_SetLastError(static_cast<DWORD>(error));
  return SOCKET_ERROR;
}

bool IsStarted() {
  if (startups > 0) return true;
  Fail(WSANOTINITIALISED);
  return false;
}

int DescriptorOf(SOCKET socket) {
  return socket <= INT32_MAX ? static_cast<int>(socket) : -1;
}

int64_t Milliseconds() {
  timespec now = {};
  clock_gettime(CLOCK_MONOTONIC, &now);
  return static_cast<int64_t>(now.tv_sec) * 1000 + now.tv_nsec / 1000000;
}

// When a call that began at `begin` has waited long enough; -1 means never.
int64_t Deadline(int descriptor, int option, int64_t begin) {
  timeval time = {};
  socklen_t length = sizeof time;
  if (getsockopt(descriptor, SOL_SOCKET, option, &time, &length) != 0) return -1;
  const int64_t wait = static_cast<int64_t>(time.tv_sec) * 1000 + time.tv_usec / 1000;
  return wait == 0 ? -1 : begin + wait;
}

// Waits for the socket, whatever signals come in between, until a call that began at `begin` has used
// up the option's time. The option is asked for here alone, since most calls need not wait. Returns 0
// or an errno value.
int WaitFor(int descriptor, short events, int option, int64_t begin) {
  const int64_t deadline = Deadline(descriptor, option, begin);
  for (;;) {
    const int64_t rest = deadline < 0 ? -1 : deadline - Milliseconds();
    if (deadline >= 0 && rest <= 0) return ETIMEDOUT;
    pollfd entry = {descriptor, events, 0};
    const int ready = poll(&entry, 1, static_cast<int>(rest));  // a time limit is 32 bits of milliseconds
    if (ready > 0) return 0;
    if (ready < 0 && errno != EINTR) return errno;
  }
}

}  // namespace

int SocketErrorOf(int error) {
  switch (error) {
    case EINTR:
      return WSAEINTR;
    case EBADF:
    case ENOTSOCK:
      return WSAENOTSOCK;
    case EACCES:
    case EPERM:
      return WSAEACCES;
    case EFAULT:
      return WSAEFAULT;
    case EMFILE:
    case ENFILE:
      return WSAEMFILE;
    case EPROTONOSUPPORT:
      return WSAEPROTONOSUPPORT;
    case EAFNOSUPPORT:
      return WSAEAFNOSUPPORT;
    case EADDRINUSE:
      return WSAEADDRINUSE;
    case EADDRNOTAVAIL:
      return WSAEADDRNOTAVAIL;
    case ENETDOWN:
      return WSAENETDOWN;
    case ENETUNREACH:
      return WSAENETUNREACH;
    case ENETRESET:
      return WSAENETRESET;
    case ECONNABORTED:
      return WSAECONNABORTED;
    case ECONNRESET:
      return WSAECONNRESET;
    case ENOBUFS:
    case ENOMEM:
      return WSAENOBUFS;
    case EISCONN:
      return WSAEISCONN;
    case ENOTCONN:
      return WSAENOTCONN;
    case EPIPE:
    case ESHUTDOWN:
      return WSAESHUTDOWN;
    case EINPROGRESS:  // a connect whose time is up
    case EAGAIN:
    case ETIMEDOUT:
      return WSAETIMEDOUT;
    case ECONNREFUSED:
      return WSAECONNREFUSED;
    case EHOSTDOWN:
    case EHOSTUNREACH:
      return WSAEHOSTUNREACH;
    default:
      return WSAEINVAL;
  }
}

int lumo_WSAStartup(WORD version, WSADATA *data) {
  if (data != nullptr) *data = {version, MAKEWORD(2, 2)};
  ++startups;
  return 0;
}

int lumo_WSACleanup() {
  if (!IsStarted()) return SOCKET_ERROR;
  --startups;
  return 0;
}

int lumo_WSAGetLastError() {
  return static_cast<int>(lumo_GetLastError());
}

uint32_t lumo_inet_addr(const char *text) {
  return text == nullptr ? WIN_INADDR_NONE : inet_addr(text);
}

uint16_t lumo_htons(uint16_t value) {
  return htons(value);
}

SOCKET lumo_socket(int family, int type, int protocol) {
  if (!IsStarted()) return INVALID_SOCKET;
  if (family != WIN_AF_INET || type != WIN_SOCK_STREAM) {
    Fail(family != WIN_AF_INET ? WSAEAFNOSUPPORT : WSAEPROTONOSUPPORT);
    return INVALID_SOCKET;
  }
  const int descriptor = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, protocol);
  if (descriptor >= 0) return static_cast<SOCKET>(descriptor);
  Fail(SocketErrorOf(errno));
  return INVALID_SOCKET;
}

int lumo_setsockopt(SOCKET socket, int level, int option, const char *value, int length) {
  if (!IsStarted()) return SOCKET_ERROR;
  int32_t milliseconds = 0;
  if (value == nullptr || length < static_cast<int>(sizeof milliseconds)) return Fail(WSAEFAULT);
  if (level != WIN_SOL_SOCKET || (option != WIN_SO_SNDTIMEO && option != WIN_SO_RCVTIMEO)) {
    return Fail(WSAENOPROTOOPT);
  }
  std::memcpy(&milliseconds, value, sizeof milliseconds);
  // On Windows a negative time-out is huge; here it counts as none, like 0.
  if (milliseconds < 0) milliseconds = 0;
  timeval time = {};
  time.tv_sec = milliseconds / 1000;
  time.tv_usec = milliseconds % 1000 * 1000;
  const int name = option == WIN_SO_SNDTIMEO ? SO_SNDTIMEO : SO_RCVTIMEO;
  const int result = setsockopt(DescriptorOf(socket), SOL_SOCKET, name, &time, sizeof time);
  return result == 0 ? 0 : Fail(SocketErrorOf(errno));
}

int lumo_connect(SOCKET socket, const lumo_sockaddr *address, int length) {
  if (!IsStarted()) return SOCKET_ERROR;
  lumo_sockaddr_in given = {};
  if (address == nullptr || length < static_cast<int>(sizeof given)) return Fail(WSAEFAULT);
  std::memcpy(&given, address, sizeof given);
  if (given.sin_family != WIN_AF_INET) return Fail(WSAEAFNOSUPPORT);
  sockaddr_in target = {};
  target.sin_family = AF_INET;
  target.sin_port = given.sin_port;
  target.sin_addr.s_addr = given.sin_addr.s_addr;
  const int descriptor = DescriptorOf(socket);
  const int64_t begin = Milliseconds();
  if (connect(descriptor, reinterpret_cast<sockaddr *>(&target), sizeof target) == 0) return 0;
  int error = errno;
  if (error == EINTR) {
    // The system goes on connecting; only the end of it can be waited for.
    error = WaitFor(descriptor, POLLOUT, SO_SNDTIMEO, begin);
    socklen_t size = sizeof error;
    if (error == 0 && getsockopt(descriptor, SOL_SOCKET, SO_ERROR, &error, &size) != 0) error = errno;
  }
  return error == 0 ? 0 : Fail(SocketErrorOf(error));
}

int lumo_send(SOCKET socket, const char *data, int length, int) {
  if (!IsStarted()) return SOCKET_ERROR;
  const int descriptor = DescriptorOf(socket);
  const int64_t begin = Milliseconds();
  int sent = 0;
  do {
    const ssize_t result =
        send(descriptor, data + sent, static_cast<size_t>(length - sent), MSG_NOSIGNAL | MSG_DONTWAIT);
    int error = result < 0 ? errno : 0;
    if (error == EAGAIN) error = WaitFor(descriptor, POLLOUT, SO_SNDTIMEO, begin);
    if (error != 0 && error != EINTR) return Fail(SocketErrorOf(error));
    if (result > 0) sent += static_cast<int>(result);
  } while (sent < length);
  return sent;
}

int lumo_recv(SOCKET socket, char *buffer, int capacity, int) {
  if (!IsStarted()) return SOCKET_ERROR;
  const int descriptor = DescriptorOf(socket);
  const int64_t begin = Milliseconds();
  // The first call waits by itself, as long as the socket's time limit says. What a signal has cut short is
  // waited for here.
  for (int flags = 0;; flags = MSG_DONTWAIT) {
    const ssize_t result = recv(descriptor, buffer, static_cast<size_t>(capacity), flags);
    if (result >= 0) return static_cast<int>(result);
    const bool cut_short = errno == EINTR || (errno == EAGAIN && flags != 0);
    const int error = cut_short ? WaitFor(descriptor, POLLIN, SO_RCVTIMEO, begin) : errno;
    if (error != 0) return Fail(SocketErrorOf(error));
  }
}

int lumo_shutdown(SOCKET socket, int how) {
  if (!IsStarted()) return SOCKET_ERROR;
  // Receiving, sending and both have the same numbers on Windows and here.
  return shutdown(DescriptorOf(socket), how) == 0 ? 0 : Fail(SocketErrorOf(errno));
}

int lumo_closesocket(SOCKET socket) {
  // On Windows the last WSACleanup has closed the sockets. Here it is done now, and the result is the same.
  const int result = close(DescriptorOf(socket));
  const int error = result == 0 || errno == EINTR ? 0 : errno;
  if (!IsStarted()) return SOCKET_ERROR;
  return error == 0 ? 0 : Fail(SocketErrorOf(error));
}

}  // namespace lumo
