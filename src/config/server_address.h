// config/server_address.h: "http://host:port/path" taken apart.
#pragma once

#include <cstdint>

#include "foundation/memory.h"

namespace lumo {

// Host and path have room for the address's length + 1 bytes each. Returns 0, or ERR_SERVER_ADDRESS with both
// empty and the port 0: the address is null, does not begin with "http://", has no ":" after the host, or
// has no "/" after the port.
int ParseAddress(const char *address, char *out_host, int32_t *out_port, char *out_path);

// The same with texts of its own, which live as long as it does.
struct ServerAddress {
  explicit ServerAddress(const char *address);

  const ScopedText host;
  const ScopedText path;
  int32_t port;
  const int result;  // of ParseAddress
};

}  // namespace lumo
