// foundation/debug_check.h: the answer to a programming error.
#pragma once

namespace lumo {

// Prints the check's line on the system's debug output and breaks into the debugger; without one
// the process ends.
void DebugCheckFailed(const char *file, int line);

}  // namespace lumo
