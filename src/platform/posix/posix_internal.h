// platform/posix/posix_internal.h: what the files of this platform share.
#pragma once

#include "platform/posix/posix_calls.h"
#include "platform/posix/posix_numbers.h"

namespace lumo {

// The file that holds the library's own code, as an absolute UTF-8 path; an empty text when it cannot be
// told.
const char *LibraryFile();

// errno as a socket error.
int SocketErrorOf(int error);

}  // namespace lumo
