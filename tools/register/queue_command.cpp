#include <CLI/CLI.hpp>
#include <iostream>

#include "commands.h"
#include "progress.h"
#include "shop_files.h"

namespace reg {

void AddQueueCommand(CLI::App &app, Till &till) {
  app.add_subcommand("replay", "Send the offline queue to the server")->callback([&till] {
    Library &library = till.Started();
    const size_t waiting = CountRecords(library.folder() / "OFFLINE");
    int sent = 0;
    {
      const Progress progress(till.TraceFile(), waiting);
      sent = library.SendOfflinePayments();
    }
    till.Check(sent);
    std::cout << "  " << sent << " of " << waiting << " records sent\n";
  });
}

}  // namespace reg
