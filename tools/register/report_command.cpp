#include <CLI/CLI.hpp>
#include <iostream>
#include <memory>

#include "commands.h"
#include "slip.h"

namespace reg {

void AddReportCommand(CLI::App &app, Till &till) {
  CLI::App *report = app.add_subcommand("report", "Print a report of the shift");
  auto kind = std::make_shared<std::string>("summary");
  report->add_option("kind", *kind, "summary or detailed")
      ->check(CLI::IsMember({"summary", "detailed"}))
      ->capture_default_str();
  auto from = std::make_shared<std::string>("0000-00-00T00:00:00Z");
  auto to = std::make_shared<std::string>("9999-99-99T99:99:99Z");
  report->add_option("--from", *from, "After this UTC time, as 2012-12-05T10:00:00Z");
  report->add_option("--to", *to, "Before this UTC time");
  report->callback([=, &till] {
    Library &library = till.Started();
    const int length = *kind == "summary" ? library.GenerateSummaryReport(from->c_str(), to->c_str())
                                          : library.GenerateReport(from->c_str(), to->c_str());
    till.Check(length);
    if (length == 0) {
      std::cout << "  nothing to report\n";
    } else {
      DrawSlip(std::cout, library.GetReportPtr());
    }
  });
}

}  // namespace reg
