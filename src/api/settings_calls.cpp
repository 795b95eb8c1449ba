#include "config/lumoconfig.h"
#include "config/server_address.h"
#include "foundation/memory.h"
#include "foundation/trace.h"
#include "lumo.h"

namespace lumo {
namespace {

// The host of an address, in a text that is the register's for good.
char *PingHost(const char *call, const char *address) {
  const ServerAddress parts(address);
  Trace("%s: %s -> [ip: \"%s\"] port: %d webServ: \"%s\"\n", call, address, parts.host.get(), parts.port,
        parts.path.get());
  return MemCopyText(parts.host.get(), LUMO_HERE);
}

int PingPort(const char *call, const char *address) {
  const ServerAddress parts(address);
  Trace("%s: %s -> ip: \"%s\" [port: %d] webServ: \"%s\"\n", call, address, parts.host.get(), parts.port,
        parts.path.get());
  return parts.port;
}

}  // namespace
}  // namespace lumo

const char *getTerminalId(void) {
  return lumo::Settings().terminalId;
}

char *getPingAddress(void) {
  return lumo::PingHost("getPingAddress", lumo::Settings().serverAddr);
}

int getPingPort(void) {
  return lumo::PingPort("getPingPort", lumo::Settings().serverAddr);
}

char *getPingAltAddress(void) {
  return lumo::PingHost("getPingAltAddress", lumo::Settings().serverAltAddr);
}

int getPingAltPort(void) {
  return lumo::PingPort("getPingAltPort", lumo::Settings().serverAltAddr);
}
