// wince/ws2.cpp: stands in for Windows CE's socket library, as coredll.cpp does for the core library.
#include <winsock2.h>

extern "C" {

int ce_WSAStartup(WORD version, WSADATA *data) {
  return WSAStartup(version, data);
}

int ce_WSACleanup() {
  return WSACleanup();
}

int ce_WSAGetLastError() {
  return WSAGetLastError();
}

unsigned long ce_inet_addr(const char *text) {
  return inet_addr(text);
}

unsigned short ce_htons(unsigned short value) {
  return htons(value);
}

SOCKET ce_socket(int family, int type, int protocol) {
  return socket(family, type, protocol);
}

int ce_setsockopt(SOCKET socket, int level, int option, const char *value, int length) {
  return setsockopt(socket, level, option, value, length);
}

int ce_connect(SOCKET socket, const sockaddr *address, int length) {
  return connect(socket, address, length);
}

int ce_send(SOCKET socket, const char *data, int length, int flags) {
  return send(socket, data, length, flags);
}

int ce_recv(SOCKET socket, char *buffer, int capacity, int flags) {
  return recv(socket, buffer, capacity, flags);
}

int ce_shutdown(SOCKET socket, int how) {
  return shutdown(socket, how);
}

int ce_closesocket(SOCKET socket) {
  return closesocket(socket);
}

}  // extern "C"
