#include "safe_file.h"

#include <cerrno>
#include <cstdio>
#include <system_error>

#include "till.h"

#ifdef _WIN32
#include <io.h>
#else
#include <unistd.h>
#endif

namespace reg {
namespace {

#ifdef _WIN32
FILE *OpenNew(const std::filesystem::path &file) {
  return _wfopen(file.c_str(), L"wb");
}
bool Sync(FILE *stream) {
  return _commit(_fileno(stream)) == 0;
}
#else
FILE *OpenNew(const std::filesystem::path &file) {
  return std::fopen(file.c_str(), "wb");
}
bool Sync(FILE *stream) {
  return fsync(fileno(stream)) == 0;
}
#endif

[[noreturn]] void Complain(const std::filesystem::path &file, const std::error_code &error) {
  throw Failure(kNoFile, "cannot write " + file.u8string() + ": " + error.message());
}

}  // namespace

void ReplaceFile(const std::filesystem::path &file, const std::string &bytes) {
  std::filesystem::path fresh = file;
  fresh += ".new";
  FILE *stream = OpenNew(fresh);
  if (stream == nullptr) Complain(fresh, {errno, std::generic_category()});
  const bool is_written = std::fwrite(bytes.data(), 1, bytes.size(), stream) == bytes.size() &&
                          std::fflush(stream) == 0 && Sync(stream);
  std::error_code error(is_written ? 0 : errno, std::generic_category());
  if (std::fclose(stream) != 0 && !error) error.assign(errno, std::generic_category());
  if (!error) std::filesystem::rename(fresh, file, error);
  if (!error) return;
  std::error_code ignored;
  std::filesystem::remove(fresh, ignored);
  Complain(file, error);
}

}  // namespace reg
