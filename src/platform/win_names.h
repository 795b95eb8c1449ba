// platform/win_names.h: the names of the numbers that win_types.h has behind WIN_. No file that includes the
// headers of another system's sockets can include this one.
#pragma once

#include "platform/win_types.h"

namespace lumo {

constexpr int AF_INET = WIN_AF_INET;
constexpr int SOCK_STREAM = WIN_SOCK_STREAM;
constexpr int SOL_SOCKET = WIN_SOL_SOCKET;
constexpr int SO_SNDTIMEO = WIN_SO_SNDTIMEO;
constexpr int SO_RCVTIMEO = WIN_SO_RCVTIMEO;
constexpr uint32_t INADDR_NONE = WIN_INADDR_NONE;

}  // namespace lumo
