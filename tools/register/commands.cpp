#include "commands.h"

#include <CLI/CLI.hpp>
#include <iostream>

namespace reg {

void AddCommands(CLI::App &app, Till &till) {
  AddConfigureCommand(app, till);
  AddStatusCommand(app, till);
  AddDoctorCommand(app, till);
  AddShiftCommands(app, till);
  AddCardCommands(app, till);
  AddPaymentCommands(app, till);
  AddQueueCommand(app, till);
  AddJournalCommand(app, till);
  AddReportCommand(app, till);
  AddTraceCommand(app, till);
  AddMessageCommand(app, till);
  app.require_subcommand(1);
}

int Parse(CLI::App &app, Till &till, const std::function<void()> &parse) {
  const auto complain = [&till](Status status, const std::string &text) {
    std::cerr << "register: " << text << '\n';
    if (till.asJson) std::cout << Facts().Add("error", text).Text() << '\n';
    till.status = status;
  };
  try {
    till.status = kDone;
    parse();
  } catch (const Refused &refused) {
    std::cerr << "error " << refused.code << ": " << refused.message << '\n';
    if (till.asJson)
      std::cout << Facts().Add("error", refused.message).Add("code", refused.code).Text() << '\n';
    till.status = kRefused;
  } catch (const CLI::ParseError &error) {
    till.status = app.exit(error) == 0 ? kDone : kBadWords;
  } catch (const Failure &failure) {
    complain(failure.status, failure.what());
  } catch (const std::filesystem::filesystem_error &error) {
    complain(kNoFile, error.path1().u8string() + ": " + error.code().message());
  } catch (const std::bad_alloc &) {
    complain(kNoFile, "there is no memory left");
  }
  return till.status;
}

}  // namespace reg
