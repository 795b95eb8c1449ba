#include <CLI/CLI.hpp>
#include <iostream>
#include <memory>
#include <optional>
#include <string_view>

#include "commands.h"
#include "progress.h"
#include "shop_files.h"
#include "slip.h"

namespace reg {
namespace {

// The beginning of "2012-12-05T10:00:00Z", as far as somebody cares: the library compares texts.
CLI::Validator Time() {
  return {[](const std::string &text) {
            constexpr std::string_view kForm = "dddd-dd-ddTdd:dd:ddZ";
            bool is_time = !text.empty() && text.size() <= kForm.size();
            for (size_t i = 0; i < text.size() && is_time; ++i) {
              is_time = kForm[i] == 'd' ? text[i] >= '0' && text[i] <= '9' : text[i] == kForm[i];
            }
            return std::string(is_time ? "" : "not a time as 2012-12-05T10:00:00Z: " + text);
          },
          "TIME"};
}

struct ReportOptions {
  std::string kind = "summary";
  std::optional<std::string> from, to;
  bool isAll = false;
};

// The library leaves both bounds out and compares texts. The opening's time without its "Z" comes before what
// was sold in that second and after the second before.
std::string BeforeOpening(const Till &till) {
  const ShiftState state = ReadState(till.Folder() / "STATE");
  if (state.present && !state.readable) throw Failure(kNoFile, "STATE cannot be read");
  if (state.shiftState == 0 || state.openDate.empty()) {
    throw Failure(kBadWords, "no shift is open: say --all, or --from and --to");
  }
  return state.openDate.substr(0, state.openDate.size() - 1);
}

void Report(Till &till, const ReportOptions &options) {
  const bool is_bounded = options.isAll || options.from || options.to;
  const std::string from = is_bounded ? options.from.value_or("0000-00-00T00:00:00Z") : BeforeOpening(till);
  const std::string to = options.to.value_or("9999-99-99T99:99:99Z");
  Library &library = till.Started();
  int length = 0;
  {
    const Progress progress(till.TraceFile(), CountRecords(till.Folder() / "LOG"), till.showsProgress);
    length = options.kind == "summary" ? library.GenerateSummaryReport(from.c_str(), to.c_str())
                                       : library.GenerateReport(from.c_str(), to.c_str());
  }
  till.Check(length);
  const char *const text = length == 0 ? nullptr : library.GetReportPtr();
  till.Show(Facts().Add("kind", options.kind).Add("from", from).Add("to", to).Add("report", text), [&] {
    if (text == nullptr) {
      std::cout << "  nothing to report\n";
    } else {
      DrawSlip(std::cout, text);
    }
  });
}

}  // namespace

void AddReportCommand(CLI::App &app, Till &till) {
  CLI::App *command = app.add_subcommand("report", "Print a report of the open shift");
  auto options = std::make_shared<ReportOptions>();
  command->add_option("kind", options->kind, "summary or detailed")
      ->check(CLI::IsMember({"summary", "detailed"}))
      ->capture_default_str();
  command->add_option("--from", options->from, "After this UTC time instead, as 2012-12-05T10:00:00Z")
      ->check(Time());
  command->add_option("--to", options->to, "Before this UTC time")->check(Time());
  command->add_flag("--all", options->isAll, "All that the log holds");
  command->callback([options, &till] { Report(till, *options); });
}

}  // namespace reg
