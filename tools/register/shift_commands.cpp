#include <CLI/CLI.hpp>
#include <iostream>
#include <memory>
#include <optional>

#include "commands.h"
#include "options.h"
#include "shop_files.h"

namespace reg {
namespace {

// The library does not tell when it could not write the shift down.
void ShowShift(const Till &till, bool is_open) {
  const ShiftState state = ReadState(till.Folder() / "STATE");
  if ((state.shiftState != 0) != is_open) {
    throw Failure(kNoFile, std::string("STATE could not be written: the shift is not ") +
                               (is_open ? "open" : "closed"));
  }
  till.Show(Facts().Add("open", is_open).Add("id", state.shiftId), [&] {
    std::cout << "  shift " << (is_open ? "open" : "closed") << ", id " << OrDash(state.shiftId) << '\n';
  });
}

}  // namespace

void AddShiftCommands(CLI::App &app, Till &till) {
  CLI::App *shift = app.add_subcommand("shift", "Open or close the cashier's shift");
  shift->require_subcommand(1);
  auto id = std::make_shared<std::optional<std::string>>();
  CLI::App *open = shift->add_subcommand("open", "Open a shift");
  open->add_option("id", *id, "The shift's number; without one the library makes its own");
  open->callback([id, &till] {
    till.Check(till.Started().OpenShift(OrNull(*id)));
    ShowShift(till, true);
  });
  shift->add_subcommand("close", "Close the shift")->callback([&till] {
    till.Check(till.Started().CloseShift());
    ShowShift(till, false);
  });

  CLI::App *offline = app.add_subcommand("offline-state", "Show the offline flag, or set it to 0 or 1");
  auto value = std::make_shared<std::optional<int>>();
  offline->add_option("value", *value, "0 or 1")->check(CLI::Range(0, 1));
  offline->callback([value, &till] {
    Library &library = till.Started();
    if (*value) till.Check(library.setOfflineState(**value));
    const int state = library.getOfflineState();
    till.Show(Facts().Add("offline", state != 0), [&] { std::cout << "  offline state " << state << '\n'; });
  });
}

void AddMessageCommand(CLI::App &app, Till &till) {
  CLI::App *message = app.add_subcommand("message", "The cashier's text for a result code");
  auto code = std::make_shared<int>(0);
  message->add_option("code", *code, "Result code")->required();
  message->callback([code, &till] {
    const std::string text = till.Loaded().GetErrorMessage(*code);
    till.Show(Facts().Add("code", *code).Add("message", text), [&] { std::cout << "  " << text << '\n'; });
  });
}

}  // namespace reg
