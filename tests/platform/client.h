// platform/client.h: a socket made with the calls under test.
#pragma once

#include <gtest/gtest.h>

#include <string>

#include "platform/platform.h"

namespace test {

class Client {
 public:
  Client() {
    using namespace lumo;
    WSADATA data;
    EXPECT_EQ(WSAStartup(MAKEWORD(2, 2), &data), 0);
    handle = socket(AF_INET, SOCK_STREAM, 0);
    EXPECT_NE(handle, INVALID_SOCKET);
  }
  ~Client() {
    using namespace lumo;
    closesocket(handle);
    WSACleanup();
  }
  Client(const Client &) = delete;
  Client &operator=(const Client &) = delete;

  int Connect(uint16_t port) const {
    using namespace lumo;
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    address.sin_addr.s_addr = inet_addr("127.0.0.1");
    return connect(handle, reinterpret_cast<const sockaddr *>(&address), sizeof address);
  }
  int SetTimeout(int option, int milliseconds) const {
    using namespace lumo;
    return setsockopt(handle, SOL_SOCKET, option, reinterpret_cast<const char *>(&milliseconds),
                      sizeof milliseconds);
  }
  int Send(const std::string &bytes) const {
    using namespace lumo;
    return send(handle, bytes.data(), static_cast<int>(bytes.size()), 0);
  }
  int Receive(std::string *bytes, int capacity) const {
    using namespace lumo;
    bytes->assign(static_cast<size_t>(capacity), '?');
    const int result = recv(handle, bytes->data(), capacity, 0);
    bytes->resize(result > 0 ? static_cast<size_t>(result) : 0);
    return result;
  }

  lumo::SOCKET handle;
};

}  // namespace test
