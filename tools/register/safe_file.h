// register/safe_file.h: a file of the terminal written anew: a power cut leaves the old one or the new one.
#pragma once

#include <filesystem>
#include <functional>
#include <string>

namespace reg {

// Writes `name`.new and puts it in the file's place, with the owner and the rights of the old one; of a link,
// in the place of what it leads to. Throws Failure, and the file is as it was. `before_it` runs when all is
// ready and may still throw.
void ReplaceFile(const std::filesystem::path &file, const std::string &bytes,
                 const std::function<void()> &before_it = nullptr);

// Writes the file anew with what `edit` makes of its bytes, while no register that uses lumo can write it;
// one that is left empty is removed. Throws Failure, also when somebody holds the file, and it is as it was.
void EditFile(const std::filesystem::path &file, const std::function<std::string(const std::string &)> &edit,
              const std::function<void()> &before_it = nullptr);

}  // namespace reg
