#include "protocol/socket_layer.h"

#include "foundation/arithmetic.h"
#include "foundation/format.h"
#include "foundation/result_codes.h"
#include "foundation/trace.h"
#include "platform/platform.h"

namespace lumo {
namespace {

SOCKET connection_socket = INVALID_SOCKET;

// A failed connect lets go of its handle without closing it. The next connect gives it back to the system: a
// terminal that is offline for days must not run out of handles.
SOCKET abandoned_socket = INVALID_SOCKET;

void CloseAbandonedSocket() {
  if (abandoned_socket != INVALID_SOCKET) {
    closesocket(abandoned_socket);
    abandoned_socket = INVALID_SOCKET;
  }
}

void SetTimeout(int option, int32_t milliseconds) {
  setsockopt(connection_socket, SOL_SOCKET, option, reinterpret_cast<const char *>(&milliseconds),
             sizeof milliseconds);
}

}  // namespace

int SocketConnect(const char *host, int32_t port, int32_t timeout_seconds) {
  const int32_t milliseconds = WrapMultiply(timeout_seconds, 1000);
  WSADATA data;
  const int startup_error = WSAStartup(MAKEWORD(2, 2), &data);
  if (startup_error != 0) {
    TraceError("WSAStartup failed with error: %d\n", startup_error);
    return -1;
  }
  CloseAbandonedSocket();
  sockaddr_in address = {};
  address.sin_family = AF_INET;
  address.sin_port = htons(static_cast<uint16_t>(port));
  address.sin_addr.s_addr = inet_addr(TextOrEmpty(host));
  if (address.sin_addr.s_addr == INADDR_NONE) {
    TraceError("incorrect IP address\n");
    return ERR_CONNECT;
  }
  connection_socket = socket(AF_INET, SOCK_STREAM, 0);
  if (connection_socket == INVALID_SOCKET) {
    TraceError("socket failed with error: %d\n", WSAGetLastError());
    WSACleanup();
    return ERR_CONNECT;
  }
  SetTimeout(SO_RCVTIMEO, milliseconds);
  SetTimeout(SO_SNDTIMEO, milliseconds);
  if (connect(connection_socket, reinterpret_cast<const sockaddr *>(&address), sizeof address) ==
      SOCKET_ERROR) {
    TraceError("Connection Failed %d\n", WSAGetLastError());
    abandoned_socket = connection_socket;
    connection_socket = INVALID_SOCKET;
    return ERR_CONNECT;
  }
  if (connection_socket == INVALID_SOCKET) {  // GCOVR_EXCL_START: it was there before the connect
    TraceError("Unable to connect to server!\n");
    WSACleanup();
    return ERR_CONNECT;
  }  // GCOVR_EXCL_STOP
  return 0;
}

int SocketSend(const char *data, int length) {
  const int result = send(connection_socket, data, length, 0);
  if (result == SOCKET_ERROR) {
    TraceError("send failed with error: %d\n", WSAGetLastError());
    WSACleanup();
  }
  return result;
}

int SocketReceive(char *buffer, int capacity) {
  const int result = recv(connection_socket, buffer, capacity, 0);
  if (result == 0) {
    Trace("Connection closed\n");
  } else if (result < 0) {
    TraceError("recv failed with error: %d\n", WSAGetLastError());
  }
  return result;
}

int SocketDisconnect() {
  Trace("Disconnect\n");
  const int result = shutdown(connection_socket, SD_BOTH);
  if (result == SOCKET_ERROR) TraceError("shutdown failed with error: %d\n", WSAGetLastError());
  return result;
}

int SocketClose() {
  const int result = SocketDisconnect();
  closesocket(connection_socket);
  connection_socket = INVALID_SOCKET;  // its number may soon be another handle's
  WSACleanup();
  return result;
}

}  // namespace lumo
