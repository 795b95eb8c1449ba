// config/server_address.h: "http://host:port/path" taken apart.
#pragma once

#include <cstdint>

namespace lumo {

// `host` and `path` have room for the address's length + 1 bytes each. Returns 0, or ERR_SERVER_ADDRESS with
// both empty and the port 0: no "http://" at the start, no ":" after the host, no "/" after the port, or a
// null address.
int ParseAddress(const char *address, char *host, int32_t *port, char *path);

}  // namespace lumo
