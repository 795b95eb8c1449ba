// loyalty_server/console.h: the commands an engineer types while the server runs.
#pragma once

#include <string>

#include "loyalty_server/server.h"

namespace loyalty {

struct ConsoleReply {
  std::string text;  // lines, each with its end
  bool isQuit = false;
};

// Does one command. A wrong one changes nothing and is answered with what is wrong.
ConsoleReply RunCommand(Server *server, const std::string &line);

std::string ConsoleHelp();

}  // namespace loyalty
