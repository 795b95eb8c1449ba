// register/commands.h: what the register can do, as command-line words. The same words work one at a time
// from a shell and one after another in the interactive mode. Each group of commands has a file of its own.
#pragma once

#include <functional>

#include "till.h"

namespace CLI {  // NOLINT(readability-identifier-naming): its own name
class App;
}

namespace reg {

void AddConfigureCommand(CLI::App &app, Till &till);
void AddStatusCommand(CLI::App &app, Till &till);
void AddDoctorCommand(CLI::App &app, Till &till);
void AddShiftCommands(CLI::App &app, Till &till);  // and the flag of the state
void AddCardCommands(CLI::App &app, Till &till);
void AddPaymentCommands(CLI::App &app, Till &till);
void AddQueueCommand(CLI::App &app, Till &till);
void AddJournalCommand(CLI::App &app, Till &till);
void AddReportCommand(CLI::App &app, Till &till);
void AddTraceCommand(CLI::App &app, Till &till);
void AddMessageCommand(CLI::App &app, Till &till);

// All of these.
void AddCommands(CLI::App &app, Till &till);

// What only the command line of the program has.
void AddGeneralOptions(CLI::App &app, Till &till);
void AddCompletionCommand(CLI::App &app, Till &till);
void AddInteractiveCommand(CLI::App &app, Till &till);

// Runs `parse`, which hands words to `app`. What went wrong is on standard error afterwards. Returns
// the command's status.
int Parse(CLI::App &app, Till &till, const std::function<void()> &parse);

}  // namespace reg
