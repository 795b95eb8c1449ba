// register/doctor_system.h: what only the system can tell a doctor.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "doctor.h"

namespace reg {

// Other programs that have the library file or one of the terminal's files open, as far as this user may see.
std::vector<Holder> FindHolders(const std::filesystem::path &library_file,
                                const std::vector<std::string> &names);

// Loads the library file, finds its calls and lets it go. Empty, or why that cannot be. The version is asked
// of a copy elsewhere, since the call leaves a line in the trace beside the file. Empty without such a copy.
std::string TryLibrary(const std::filesystem::path &library_file, std::string *version);

}  // namespace reg
