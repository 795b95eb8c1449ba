#include "config/lumoconfig.h"
#include "config/server_address.h"
#include "foundation/memory.h"
#include "foundation/trace.h"
#include "lumo.h"

const char *getTerminalId(void) {
  return lumo::Settings().terminalId;
}

char *getPingAddress(void) {
  const char *address = lumo::Settings().serverAddr;
  const lumo::ServerAddress parts(address);
  lumo::Trace("getPingAddress: %s -> [ip: \"%s\"] port: %d webServ: \"%s\"\n", address, parts.host.get(),
              parts.port, parts.path.get());
  return lumo::MemCopyText(parts.host.get(), LUMO_HERE);
}

int getPingPort(void) {
  const char *address = lumo::Settings().serverAddr;
  const lumo::ServerAddress parts(address);
  lumo::Trace("getPingPort: %s -> ip: \"%s\" [port: %d] webServ: \"%s\"\n", address, parts.host.get(),
              parts.port, parts.path.get());
  return parts.port;
}

char *getPingAltAddress(void) {
  const char *address = lumo::Settings().serverAltAddr;
  const lumo::ServerAddress parts(address);
  lumo::Trace("getPingAltAddress: %s -> [ip: \"%s\"] port: %d webServ: \"%s\"\n", address, parts.host.get(),
              parts.port, parts.path.get());
  return lumo::MemCopyText(parts.host.get(), LUMO_HERE);
}

int getPingAltPort(void) {
  const char *address = lumo::Settings().serverAltAddr;
  const lumo::ServerAddress parts(address);
  lumo::Trace("getPingAltPort: %s -> ip: \"%s\" [port: %d] webServ: \"%s\"\n", address, parts.host.get(),
              parts.port, parts.path.get());
  return parts.port;
}
