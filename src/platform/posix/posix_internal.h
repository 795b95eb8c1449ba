// platform/posix/posix_internal.h: what the files of this platform share.
#pragma once

#include "platform/posix/posix_calls.h"

namespace lumo {

// The absolute path, UTF-8, of the file that holds the library's own code; the empty text when nobody
// can tell it.
const char *LibraryFile();

// errno as a socket error.
int SocketErrorOf(int error);

// In units, terminator excluded.
int WideLength(const WCHAR *wide);

}  // namespace lumo
