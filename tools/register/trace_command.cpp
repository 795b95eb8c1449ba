#include <CLI/CLI.hpp>
#include <iostream>
#include <memory>

#include "commands.h"
#include "shop_files.h"

namespace reg {

void AddTraceCommand(CLI::App &app, Till &till) {
  CLI::App *trace = app.add_subcommand("trace", "Show the last lines of the trace");
  auto lines = std::make_shared<size_t>(20);
  trace->add_option("-n,--lines", *lines, "How many")->capture_default_str();
  trace->callback([lines, &till] {
    const std::string text = ReadWhole(till.TraceFile());
    size_t at = text.size();
    for (size_t left = *lines + 1; left > 0 && at > 0 && at != std::string::npos; --left)
      at = text.rfind('\n', at - 1);
    std::cout << (at == std::string::npos || at == 0 ? text : text.substr(at + 1));
  });
}

}  // namespace reg
