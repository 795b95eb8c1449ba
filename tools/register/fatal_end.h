// register/fatal_end.h: the end of the process inside a call of the library is told: which call, how the
// trace ends, what to do.
#pragma once

#include <filesystem>

namespace reg {

// Tells of a fatal end from now on, with the last line of this trace. Of a library file that cannot even be
// loaded a program is told too.
void WatchForFatalEnds(const std::filesystem::path &trace_file, bool as_json);

}  // namespace reg
