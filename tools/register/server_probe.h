// register/server_probe.h: a request of its own to a server: that for the terminal's last number, which
// changes nothing there and needs neither card nor cashier.
#pragma once

#include <string>

#include "terminal_settings.h"

namespace reg {

struct ServerAnswer {
  int code = 0;         // as the library's calls would return it
  std::string problem;  // in words, when there is one
  std::string state;
  std::string stateCode;
  std::string message;
  std::string lastNumber;  // the highest that the server knows of this terminal
  std::string date;        // of the answer, by the server's clock
  int milliseconds = 0;
};

// `now` is the time of the request; `seconds` the wait for the connection and for each piece of the answer.
ServerAnswer AskServer(const ServerAddress &address, const TerminalSettings &settings, const std::string &now,
                       int seconds);

}  // namespace reg
