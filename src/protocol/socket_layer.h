// protocol/socket_layer.h: the one connection of the process.
#pragma once

#include <cstdint>

namespace lumo {

// 0, ERR_CONNECT, or -1 when the system's sockets do not start.
int SocketConnect(const char *host, int32_t port, int32_t timeout_seconds);
int SocketSend(const char *data, int length);   // bytes sent or -1; one call, no retry
int SocketReceive(char *buffer, int capacity);  // bytes, 0 when the peer closed, negative on error
int SocketDisconnect();                         // the result of the shutdown
int SocketClose();                              // the same, after closing

}  // namespace lumo
