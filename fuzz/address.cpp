// fuzz/address.cpp: any text as a server's address.
#include <cstring>
#include <vector>

#include "config/server_address.h"
#include "target.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  const std::string address = std::string(reinterpret_cast<const char *>(data), size).c_str();
  std::vector<char> host(address.size() + 1, '?'), path(address.size() + 1, '?');
  int32_t port = -1;
  const int code = lumo::ParseAddress(address.c_str(), host.data(), &port, path.data());
  fuzz::Promise(code == 0 || code == -504, "a result of an address");
  if (code != 0) {
    fuzz::Promise(host[0] == 0 && path[0] == 0 && port == 0, "nothing of an address that is none");
    return 0;
  }
  const std::string found_path = path.data();
  fuzz::Promise(address.rfind("http://" + std::string(host.data()) + ":", 0) == 0,
                "the host where it stands");
  fuzz::Promise(std::strchr(host.data(), ':') == nullptr, "a host that ends at its colon");
  fuzz::Promise(!found_path.empty() && found_path[0] == '/', "a path that begins with its slash");
  fuzz::Promise(address.find(found_path) != std::string::npos, "the path where it stands");
  return 0;
}
