#include <CLI/CLI.hpp>
#include <asio.hpp>
#include <iostream>

#include "commands.h"
#include "shop_files.h"

namespace reg {
namespace {

bool Answers(const std::string &host, int port) {
  asio::io_context context;
  asio::ip::tcp::socket socket(context);
  asio::error_code error;
  const auto address = asio::ip::make_address(host, error);
  if (error || port <= 0 || port > 65535) return false;
  bool connected = false;
  socket.async_connect({address, static_cast<uint16_t>(port)},
                       [&](const asio::error_code &result) { connected = !result; });
  context.run_for(std::chrono::seconds(3));
  return connected;
}

void ShowServer(const char *label, const char *host, int port) {
  std::cout << label;
  if (host == nullptr || *host == '\0') {
    std::cout << "no usable address\n";
    return;
  }
  std::cout << host << ':' << port << (Answers(host, port) ? "  answers" : "  DOES NOT ANSWER") << '\n';
}

void ShowStatus(Till &till) {
  Library &library = till.Started();
  const std::filesystem::path folder = library.folder();
  const ShiftState state = ReadState(folder / "STATE");
  std::cout << "  library     " << library.file().string() << '\n'
            << "  terminal    " << OrDash(library.getTerminalId()) << '\n';
  ShowServer("  server      ", library.getPingAddress(), library.getPingPort());
  ShowServer("  alternate   ", library.getPingAltAddress(), library.getPingAltPort());
  std::cout << "  shift       ";
  if (state.shiftState != 0) {
    std::cout << "open since " << OrDash(state.openDate) << ", id " << OrDash(state.shiftId) << '\n';
  } else if (!state.closeDate.empty()) {
    std::cout << "closed at " << state.closeDate << '\n';
  } else {
    std::cout << "closed\n";
  }
  std::cout << "  last RRN    " << OrDash(state.requestId) << '\n'
            << "  mode        " << (library.getOfflineState() != 0 ? "OFFLINE" : "online") << '\n'
            << "  log         " << CountRecords(folder / "LOG") << " records\n"
            << "  waiting     " << CountRecords(folder / "OFFLINE") << " offline records\n"
            << "  update      "
            << (library.getNeedUpdate() != 0 ? "announced by the server" : "none announced") << '\n';
}

}  // namespace

void AddStatusCommand(CLI::App &app, Till &till) {
  app.add_subcommand("status", "Settings, connection, shift, journals: is this terminal fit to sell?")
      ->callback([&till] { ShowStatus(till); });
}

}  // namespace reg
