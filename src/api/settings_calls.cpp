#include <cstring>

#include "config/lumoconfig.h"
#include "config/server_address.h"
#include "foundation/format.h"
#include "foundation/memory.h"
#include "foundation/trace.h"
#include "lumo.h"

namespace {

struct PingAddress {
  char *host;  // owned
  char *path;  // owned
  int32_t port;
};

// An address that cannot be taken apart gives empty texts and the port 0.
PingAddress SplitAddress(const char *address) {
  const size_t size = std::strlen(lumo::TextOrEmpty(address)) + 1;
  PingAddress parts;
  parts.host = static_cast<char *>(lumo::MemMalloc(size, LUMO_HERE));
  parts.path = static_cast<char *>(lumo::MemMalloc(size, LUMO_HERE));
  lumo::ParseAddress(address, parts.host, &parts.port, parts.path);
  return parts;
}

// The host goes to the register for good.
char *TakeHost(const PingAddress &parts) {
  lumo::MemFree(parts.path, LUMO_HERE);
  return parts.host;
}

int TakePort(const PingAddress &parts) {
  lumo::MemFree(parts.host, LUMO_HERE);
  lumo::MemFree(parts.path, LUMO_HERE);
  return parts.port;
}

}  // namespace

const char *getTerminalId(void) {
  return lumo::Settings().terminalId;
}

char *getPingAddress(void) {
  const char *address = lumo::Settings().serverAddr;
  const PingAddress parts = SplitAddress(address);
  lumo::Trace("getPingAddress: %s -> [ip: \"%s\"] port: %d webServ: \"%s\"\n", address, parts.host,
              parts.port, parts.path);
  return TakeHost(parts);
}

int getPingPort(void) {
  const char *address = lumo::Settings().serverAddr;
  const PingAddress parts = SplitAddress(address);
  lumo::Trace("getPingPort: %s -> ip: \"%s\" [port: %d] webServ: \"%s\"\n", address, parts.host, parts.port,
              parts.path);
  return TakePort(parts);
}

char *getPingAltAddress(void) {
  const char *address = lumo::Settings().serverAltAddr;
  const PingAddress parts = SplitAddress(address);
  lumo::Trace("getPingAltAddress: %s -> [ip: \"%s\"] port: %d webServ: \"%s\"\n", address, parts.host,
              parts.port, parts.path);
  return TakeHost(parts);
}

int getPingAltPort(void) {
  const char *address = lumo::Settings().serverAltAddr;
  const PingAddress parts = SplitAddress(address);
  lumo::Trace("getPingAltPort: %s -> ip: \"%s\" [port: %d] webServ: \"%s\"\n", address, parts.host,
              parts.port, parts.path);
  return TakePort(parts);
}
