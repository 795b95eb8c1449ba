#include <CLI/CLI.hpp>
#include <fstream>
#include <iostream>
#include <nlohmann/json.hpp>

#include "commands.h"

namespace reg {

void AddConfigureCommand(CLI::App &app, Till &till) {
  struct Options {
    std::string server, alternate, terminal = "00001", protocol = "1.0", network = "Сеть", header = "Магазин",
                                   footer = "Спасибо!";
    int timeout = 10, offline = 0, shift = 0, local = 0, global = 0, fee = 0, log_size = 3000;
  };
  auto options = std::make_shared<Options>();
  CLI::App *command = app.add_subcommand("configure", "Write a CONFIG.JSN beside the library file");
  command->add_option("--server", options->server, "Server address, http://a.b.c.d:port/path")->required();
  command->add_option("--alternate", options->alternate, "Alternate server address");
  command->add_option("--terminal", options->terminal, "Terminal id")->capture_default_str();
  command->add_option("--protocol", options->protocol, "Protocol version")->capture_default_str();
  command->add_option("--network", options->network, "Name of the retail network")->capture_default_str();
  command->add_option("--header", options->header, "First line of each slip")->capture_default_str();
  command->add_option("--footer", options->footer, "Last line of each slip")->capture_default_str();
  command->add_option("--timeout", options->timeout, "Seconds to wait for the server")->capture_default_str();
  command->add_option("--offline", options->offline, "1: sell without the server too")->capture_default_str();
  command->add_option("--shift-mode", options->shift, "1: no operation without an open shift")
      ->capture_default_str();
  command->add_option("--local-bonus", options->local, "Percent of local bonus offline")
      ->capture_default_str();
  command->add_option("--global-bonus", options->global, "Percent of global bonus offline")
      ->capture_default_str();
  command->add_option("--fee", options->fee, "Percent of the organiser's fee offline")->capture_default_str();
  command->add_option("--log-size", options->log_size, "Lines the log may hold")->capture_default_str();
  command->callback([options, &till] {
    nlohmann::ordered_json json = {{"terminalId", options->terminal},
                                   {"protocolVersion", options->protocol},
                                   {"serverAddr", options->server}};
    if (!options->alternate.empty()) json["serverAltAddr"] = options->alternate;
    json["retailNetworkName"] = options->network;
    json["timeout"] = options->timeout;
    json["offlineMode"] = options->offline;
    json["shiftMode"] = options->shift;
    json["localBonusOffline"] = options->local;
    json["globalBonusOffline"] = options->global;
    json["orgFeeOffline"] = options->fee;
    json["logSize"] = options->log_size;
    json["receiptHeader"] = options->header;
    json["receiptFooter"] = options->footer;
    // The library never replaces a CONFIG in force by a delivered one, so an engineer who configures anew
    // removes it.
    std::filesystem::remove(till.Folder() / "CONFIG");
    const std::filesystem::path file = till.Folder() / "CONFIG.JSN";
    std::ofstream stream(file, std::ios::binary);
    stream << json.dump(2) << '\n';
    if (!stream.flush()) throw CLI::RuntimeError("cannot write " + file.string(), 1);
    std::cout << "  written: " << file.string() << '\n';
    till.started = false;
  });
}

}  // namespace reg
