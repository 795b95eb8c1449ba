#include "config/server_address.h"

#include <cstring>

#include "foundation/arithmetic.h"
#include "foundation/format.h"
#include "foundation/result_codes.h"

namespace lumo {
namespace {

constexpr char kScheme[] = "http://";
constexpr size_t kSchemeLength = sizeof kScheme - 1;
constexpr size_t kPortBytes = 20;  // terminator included; a longer port text is cut

void CopyRange(char *target, const char *begin, const char *end) {
  const auto length = static_cast<size_t>(end - begin);
  std::memcpy(target, begin, length);
  target[length] = 0;
}

int32_t PortBetween(const char *begin, const char *end) {
  char text[kPortBytes];
  if (static_cast<size_t>(end - begin) >= kPortBytes) end = begin + kPortBytes - 1;
  CopyRange(text, begin, end);
  return ParseInt32(text);
}

// Room for a piece of the address.
char *AllocatePiece(const char *address) {
  return static_cast<char *>(MemMalloc(std::strlen(TextOrEmpty(address)) + 1, LUMO_HERE));
}

}  // namespace

int ParseAddress(const char *address, char *out_host, int32_t *out_port, char *out_path) {
  out_host[0] = 0;
  out_path[0] = 0;
  *out_port = 0;
  if (address == nullptr || std::strncmp(address, kScheme, kSchemeLength) != 0) return ERR_SERVER_ADDRESS;
  const char *host_begin = address + kSchemeLength;
  const char *colon = std::strchr(host_begin, ':');
  if (colon == nullptr) return ERR_SERVER_ADDRESS;
  const char *slash = std::strchr(colon + 1, '/');
  if (slash == nullptr) return ERR_SERVER_ADDRESS;
  const char *end = slash + std::strlen(slash);
  const bool ends_with_separator = end[-1] == '/' || end[-1] == '\\';
  if (end - slash > 1 && ends_with_separator) --end;

  CopyRange(out_host, host_begin, colon);
  *out_port = PortBetween(colon + 1, slash);
  CopyRange(out_path, slash, end);
  return 0;
}

ServerAddress::ServerAddress(const char *address)
    : host(AllocatePiece(address)),
      path(AllocatePiece(address)),
      port(0),
      result(ParseAddress(address, host.get(), &port, path.get())) {}

}  // namespace lumo
