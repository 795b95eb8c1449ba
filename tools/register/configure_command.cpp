#include <CLI/CLI.hpp>
#include <algorithm>
#include <iostream>
#include <memory>
#include <optional>

#include "commands.h"
#include "config_edit.h"
#include "safe_file.h"
#include "shop_files.h"
#include "terminal_settings.h"

namespace reg {
namespace {

constexpr size_t kTerminalDigits = 5;  // of the terminal's id, in every RRN

struct ConfigureOptions {
  std::optional<std::string> server, alternate, terminal, protocol, network, header, footer;
  std::optional<int> timeout, offline, shiftMode, localBonus, globalBonus, fee, logSize;
};

// What is wrong with the address; nothing when the library can use it.
std::string ProblemOfAddress(const std::string &address) {
  if (address.compare(0, 8, "https://") == 0) {
    return "the library speaks no TLS; put a tunnel in front, and give the tunnel's http:// address here";
  }
  const std::optional<ServerAddress> parsed = ParseServerAddress(address);
  const size_t colon = address.find(':', 7);
  const size_t slash = address.find('/', 7);
  const bool is_number = colon < slash && slash != std::string::npos &&
                         address.find_first_not_of("0123456789", colon + 1) == slash;
  if (parsed && is_number) return address.size() < kSlipTextLimit ? "" : "longer than an address may be";
  return "not an address the library can use: " + address +
         "; it takes http://a.b.c.d:port/path with the address in digits and a port from 1 to 65535";
}

CLI::Validator Address(bool may_be_empty) {
  return {[may_be_empty](const std::string &text) {
            return text.empty() && may_be_empty ? "" : ProblemOfAddress(text);
          },
          "ADDRESS"};
}

bool HasControls(const std::string &text, bool takes_lines) {
  return std::any_of(text.begin(), text.end(), [takes_lines](char byte) {
    return (byte >= 0 && byte < ' ' && !(takes_lines && byte == '\n')) || byte == '\x7F';
  });
}

// One that the slip prints may have several lines.
CLI::Validator SlipText(bool takes_lines = false) {
  return {[takes_lines](const std::string &text) {
            if (text.size() >= kSlipTextLimit) return std::string("longer than the line of a slip may be");
            return std::string(HasControls(text, takes_lines) ? "it has control characters" : "");
          },
          "TEXT"};
}

CLI::Validator NotEmpty() {
  return {[](const std::string &text) {
            return std::string(text.empty() ? "the server refuses everything without it" : "");
          },
          "TEXT"};
}

CLI::Validator TerminalId() {
  return {
      [](const std::string &text) {
        const bool is_usable =
            text.size() >= kTerminalDigits && text.size() < kSlipTextLimit && !HasControls(text, false) &&
            text.find_first_not_of("0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz") >=
                kTerminalDigits;
        return std::string(
            is_usable ? "" : "its first five characters must be digits or Latin letters, and none a control");
      },
      "ID"};
}

void AddConfigureOptions(CLI::App *command, const std::shared_ptr<ConfigureOptions> &options) {
  command->add_option("--server", options->server, "Server address, http://a.b.c.d:port/path")
      ->check(Address(false));
  command->add_option("--alternate", options->alternate, "Alternate server address; \"\" for none")
      ->check(Address(true));
  command->add_option("--terminal", options->terminal, "Terminal id")->check(TerminalId());
  command->add_option("--protocol", options->protocol, "Protocol version")->check(SlipText() & NotEmpty());
  command->add_option("--network", options->network, "Name of the retail network")->check(SlipText());
  command->add_option("--header", options->header, "First line of each slip")->check(SlipText(true));
  command->add_option("--footer", options->footer, "Last line of each slip")->check(SlipText(true));
  command->add_option("--timeout", options->timeout, "Seconds that each send and receive may take")
      ->check(CLI::Range(1, 3600));
  command->add_option("--offline", options->offline, "1: sell without the server too")
      ->check(CLI::Range(0, 1));
  command->add_option("--shift-mode", options->shiftMode, "1: no operation without an open shift")
      ->check(CLI::Range(0, 1));
  command->add_option("--local-bonus", options->localBonus, "Percent of local bonus offline")
      ->check(CLI::Range(0, 100));
  command->add_option("--global-bonus", options->globalBonus, "Percent of global bonus offline")
      ->check(CLI::Range(0, 100));
  command->add_option("--fee", options->fee, "Percent of the organiser's fee offline")
      ->check(CLI::Range(0, 100));
  command->add_option("--log-size", options->logSize, "The log holds fewer records than this")
      ->check(CLI::Range(3, 1000000));
}

std::vector<Setting> Named(const ConfigureOptions &options) {
  std::vector<Setting> settings;
  const auto text = [&](const char *key, const std::optional<std::string> &value) {
    if (value) settings.push_back(TextSetting(key, *value));
  };
  const auto number = [&](const char *key, const std::optional<int> &value) {
    if (value) settings.push_back(NumberSetting(key, *value));
  };
  text("terminalId", options.terminal);
  text("protocolVersion", options.protocol);
  text("serverAddr", options.server);
  text("serverAltAddr", options.alternate);
  text("retailNetworkName", options.network);
  number("timeout", options.timeout);
  number("offlineMode", options.offline);
  number("shiftMode", options.shiftMode);
  number("localBonusOffline", options.localBonus);
  number("globalBonusOffline", options.globalBonus);
  number("orgFeeOffline", options.fee);
  number("logSize", options.logSize);
  text("receiptHeader", options.header);
  text("receiptFooter", options.footer);
  return settings;
}

void RefuseContradictingRates(const ConfigureOptions &options, const TerminalSettings &settings) {
  if (!options.localBonus && !options.globalBonus && !options.fee) return;
  const int local = options.localBonus.value_or(settings.Number("localBonusOffline"));
  const int global = options.globalBonus.value_or(settings.Number("globalBonusOffline"));
  const int fee = options.fee.value_or(settings.Number("orgFeeOffline"));
  if (fee <= local + global) return;
  throw Failure(kBadWords, "the fee of " + std::to_string(fee) + " % is more than both bonuses together (" +
                               std::to_string(local + global) + " %): offline sales would fail with -104");
}

void Configure(Till &till, const ConfigureOptions &options) {
  const std::vector<Setting> named = Named(options);
  if (named.empty()) throw Failure(kBadWords, "which setting? see register configure --help");
  const TerminalSettings old = ReadTerminalSettings(till.Folder());
  RefuseContradictingRates(options, old);
  const bool is_new = !old.isDelivered && !old.isKept;
  // The delivered file is read before the other one, at every start.
  const std::filesystem::path file = till.Folder() / (old.isDelivered || is_new ? "CONFIG.JSN" : "CONFIG");
  std::vector<Setting> settings = named;
  if (is_new) {
    if (!options.server || !options.terminal) {
      throw Failure(kBadWords, "a new terminal needs --server and --terminal");
    }
    // What a terminal must not be without.
    if (!options.protocol) settings.push_back(TextSetting("protocolVersion", "1.0"));
    if (!options.timeout) settings.push_back(NumberSetting("timeout", 10));
    if (!options.logSize) settings.push_back(NumberSetting("logSize", 3000));
  }
  const std::optional<std::string> text = SetMembers(is_new ? "{}" : ReadWhole(file), settings);
  if (!text) {
    throw Failure(kNoFile,
                  file.u8string() + " cannot be read and is left as it is: repair or remove it first");
  }
  ReplaceFile(file, is_new ? *text + "\n" : *text);
  till.started = false;  // the next operation reads it

  Facts values;
  for (const Setting &setting : settings) values.AddJson(setting.first.c_str(), setting.second);
  till.Show(Facts().Add("file", file.u8string()).Add("settings", values), [&] {
    for (const Setting &setting : settings) {
      std::cout << "  " << setting.first << " " << setting.second << '\n';
    }
    std::cout << "  written: " << file.u8string() << '\n';
  });
}

}  // namespace

void AddConfigureCommand(CLI::App &app, Till &till) {
  CLI::App *command =
      app.add_subcommand("configure", "Change the settings named, or make a CONFIG.JSN with them");
  auto options = std::make_shared<ConfigureOptions>();
  AddConfigureOptions(command, options);
  command->callback([options, &till] { Configure(till, *options); });
}

}  // namespace reg
