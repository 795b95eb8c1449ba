// loyalty_server/api.h: the running server as JSON, for the page and for test scripts. Knows no HTTP: takes a
// method, a path and a body, gives a status and a body.
#pragma once

#include <functional>
#include <map>
#include <string>

#include "loyalty_server/server.h"

namespace loyalty {

struct ApiCall {
  std::string method;                        // "GET" or "PUT"
  std::string path;                          // behind "/api/": "cards/1000000001"
  std::map<std::string, std::string> query;  // "after" and so on
  std::string body;
};

struct ApiAnswer {
  int status = 200;
  std::string body;  // JSON
};

// `is_ending` tells a call that waits for something to happen that it shall not.
ApiAnswer CallApi(Server *server, const ApiCall &call, const std::function<bool()> &is_ending);

}  // namespace loyalty
