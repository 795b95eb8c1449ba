// register/connection.h: whether somebody listens at an address.
#pragma once

#include <string>

namespace reg {

// Waits three seconds at most.
bool Connects(const std::string &dotted_host, int port);

}  // namespace reg
