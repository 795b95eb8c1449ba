#include "connection.h"

#include <asio.hpp>

namespace reg {

bool Connects(const std::string &dotted_host, int port) {
  asio::io_context context;
  asio::ip::tcp::socket socket(context);
  asio::error_code error;
  const auto address = asio::ip::make_address(dotted_host, error);
  if (error) return false;
  bool is_connected = false;
  socket.async_connect({address, static_cast<uint16_t>(port)},
                       [&](const asio::error_code &result) { is_connected = !result; });
  context.run_for(std::chrono::seconds(3));
  return is_connected;
}

}  // namespace reg
