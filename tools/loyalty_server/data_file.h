// loyalty_server/data_file.h: cards, payments and request ids in an SQLite file.
#pragma once

#include <memory>
#include <string>

#include "loyalty_server/state.h"

namespace loyalty {

// Makes the file when there is none. Only one program at a time may hold it. Throws std::runtime_error that
// names the file when it cannot be used, and so do the store's calls.
std::unique_ptr<Store> OpenDataFile(const std::string &path);

}  // namespace loyalty
