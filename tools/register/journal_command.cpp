#include <CLI/CLI.hpp>
#include <iostream>
#include <memory>
#include <optional>

#include "commands.h"
#include "records.h"
#include "shop_files.h"

namespace reg {
namespace {

struct JournalOptions {
  bool isOffline = false;
  bool isSumOnly = false;
  std::optional<std::string> shift;
  std::optional<std::string> day;
};

bool IsInCalendar(int year, int month, int day) {
  if (month < 1 || month > 12 || day < 1) return false;
  if (month == 2) return day <= ((year % 4 == 0 && year % 100 != 0) || year % 400 == 0 ? 29 : 28);
  return day <= (month == 4 || month == 6 || month == 9 || month == 11 ? 30 : 31);
}

// YYYY-MM-DD.
CLI::Validator Day() {
  return {[](const std::string &text) {
            bool is_day = text.size() == 10;
            for (size_t i = 0; i < text.size() && is_day; ++i) {
              is_day = i == 4 || i == 7 ? text[i] == '-' : text[i] >= '0' && text[i] <= '9';
            }
            is_day = is_day && IsInCalendar(std::stoi(text.substr(0, 4)), std::stoi(text.substr(5, 2)),
                                            std::stoi(text.substr(8, 2)));
            return std::string(is_day ? "" : "not a day as 2012-12-05: " + text);
          },
          "DAY"};
}

void ShowJournal(Till &till, const JournalOptions &options) {
  const std::filesystem::path file = options.isOffline ? QueueFile(till.Folder()) : till.Folder() / "LOG";
  std::vector<Facts> list;
  std::string lines;
  Sums sums;
  size_t number = 0, shown = 0;
  for (const Record &record : ReadJournal(file)) {
    ++number;
    if (options.shift && (!record.readable || record.shift != *options.shift)) continue;
    if (options.day && (!record.readable || record.date.compare(0, 10, *options.day) != 0)) continue;
    ++shown;
    sums.Add(record);
    if (options.isSumOnly) continue;
    if (till.asJson) {
      list.push_back(FactsOf(number, record));
    } else {
      lines += LineOf(number, record) + "\n";
    }
  }
  Facts facts;
  facts.Add("file", file.u8string());
  if (!options.isSumOnly) facts.Add("records", list);
  facts.Add("sums", sums.AsFacts());
  till.Show(facts, [&] {
    std::cout << lines << "  " << shown << (shown == 1 ? " record\n" : " records\n");
    sums.Print();
  });
}

}  // namespace

void AddJournalCommand(CLI::App &app, Till &till) {
  CLI::App *command = app.add_subcommand("journal", "The records of the log and their sums; writes nothing");
  auto options = std::make_shared<JournalOptions>();
  command->add_flag("--offline", options->isOffline, "Those that wait to be sent instead");
  command->add_flag("--sum", options->isSumOnly, "The sums alone");
  command->add_option("--shift", options->shift, "Only those of the shift with this number");
  command->add_option("--day", options->day, "Only those of this day (UTC), as 2012-12-05")->check(Day());
  command->callback([options, &till] { ShowJournal(till, *options); });
}

}  // namespace reg
