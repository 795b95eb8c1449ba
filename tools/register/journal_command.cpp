#include <CLI/CLI.hpp>
#include <iostream>
#include <memory>

#include "commands.h"
#include "shop_files.h"

namespace reg {

void AddJournalCommand(CLI::App &app, Till &till) {
  CLI::App *journal = app.add_subcommand("journal", "List the records of the log or of the offline queue");
  auto waiting = std::make_shared<bool>(false);
  journal->add_flag("--offline", *waiting, "The offline queue");
  journal->callback([waiting, &till] {
    size_t number = 0;
    for (const Record &record : ReadJournal(till.Folder() / (*waiting ? "OFFLINE" : "LOG"))) {
      std::cout << "  " << ++number << "  ";
      if (!record.readable) {
        std::cout << "UNREADABLE\n";
        continue;
      }
      std::cout << record.date << "  " << OrDash(record.rrn) << "  " << record.type << "  card "
                << OrDash(record.card) << (record.offline ? "  offline  " : "  ") << record.detail << '\n';
    }
    if (number == 0) std::cout << "  no records\n";
  });
}

}  // namespace reg
