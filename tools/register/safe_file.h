// safe_file.h: a file of the terminal written anew, so that a power cut leaves the old one or the new one.
#pragma once

#include <filesystem>
#include <string>

namespace reg {

// Writes `name`.new and puts it in the file's place. Throws Failure, and the file is as it was.
void ReplaceFile(const std::filesystem::path &file, const std::string &bytes);

}  // namespace reg
