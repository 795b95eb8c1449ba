// register/fatal_end.h: the end of the process inside a call of the library is told: which call, how the
// trace ends, what to do.
#pragma once

#include <filesystem>

namespace reg {

// From now on. The trace is this file.
void WatchForFatalEnds(const std::filesystem::path &trace_file);

}  // namespace reg
