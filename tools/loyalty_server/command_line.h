// loyalty_server/command_line.h: what is typed: the program's options, and commands while the server runs.
#pragma once

#include <optional>
#include <string>

#include "loyalty_server/fault_plan.h"
#include "loyalty_server/server.h"
#include "loyalty_server/shop.h"

namespace loyalty {

// How the program ends.
enum ExitStatus {
  kEnded = 0,        // by quit or an interrupt
  kFailed = 1,       // something else
  kBadOptions = 2,   // an option, or a file that one names, cannot be used
  kBadAddress = 3,   // an address cannot be listened on
  kBadDataFile = 4,  // the file of --data cannot be used
};

struct Settings {
  Shop shop;
  ServerOptions server;
  FaultPlan faults;
  std::string dataFile;              // empty: all stays in memory
  std::optional<uint16_t> pagePort;  // nothing: no page
  std::string pageAddress = "127.0.0.1";
  std::string logFile;  // empty: standard error
  bool isQuiet = false;
};

// Nothing when the program is to end with this status; what there is to say has been printed then.
std::optional<Settings> ReadCommandLine(int argc, const char *const *argv, int *out_status);

struct ConsoleReply {
  std::string text;  // lines, each with its end
  bool isQuit = false;
};

// Does one command. A wrong one changes nothing and is answered with what is wrong.
ConsoleReply RunCommand(Server *server, const std::string &line);

std::string ConsoleHelp();

}  // namespace loyalty
