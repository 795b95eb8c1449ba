#include <CLI/CLI.hpp>
#include <chrono>
#include <deque>
#include <iostream>
#include <limits>
#include <memory>
#include <thread>

#include "commands.h"
#include "trace_file.h"
#include "trace_view.h"

namespace reg {
namespace {

struct TraceOptions {
  std::string file;
  uint64_t exchange = 0;  // 0: all
  size_t last = 0;        // 0: all
  bool follows = false;
  bool showsCards = false;
};

// "TRACE_2.TXT is here too: --tag 2"
std::string OtherTraces(const std::filesystem::path &folder) {
  std::string text;
  std::error_code error;
  for (const auto &entry : std::filesystem::directory_iterator(folder, error)) {
    const std::string name = entry.path().filename().u8string();
    constexpr std::string_view kStart = "TRACE_", kEnd = ".TXT";
    if (name.size() <= kStart.size() + kEnd.size() || name.compare(0, kStart.size(), kStart) != 0 ||
        name.compare(name.size() - kEnd.size(), kEnd.size(), kEnd) != 0) {
      continue;
    }
    text += text.empty() ? "; there is --tag " : ", --tag ";
    text += name.substr(kStart.size(), name.size() - kStart.size() - kEnd.size());
  }
  return text;
}

// Prints what it is given, or at first only holds the last of it.
class TracePrinter {
 public:
  explicit TracePrinter(size_t last) : last_(last) {}
  void Print(const std::string &text) {
    if (last_ == 0) {
      std::cout << text;
      return;
    }
    held_.push_back(text);
    if (held_.size() > last_) held_.pop_front();
  }
  void Release() {
    for (const std::string &text : held_) std::cout << text;
    held_.clear();
    last_ = 0;
    std::cout << std::flush;
  }

 private:
  size_t last_;
  std::deque<std::string> held_;
};

void ShowTrace(const Till &till, const TraceOptions &options) {
  const std::filesystem::path path =
      options.file.empty() ? till.TraceFile() : std::filesystem::u8path(options.file);
  CardMask mask(options.showsCards);
  TracePrinter printer(options.last);
  uint64_t count = 0;
  bool found = false;
  TraceReader reader([&](const Exchange &exchange) {
    count = exchange.number;
    if (options.exchange != 0 && exchange.number != options.exchange) {
      mask.Learn(exchange.cards, {exchange.request, exchange.answer});
      return;
    }
    found = true;
    const bool whole = options.exchange != 0;
    printer.Print(till.asJson ? TraceFacts(exchange, mask, whole).Text() + "\n"
                  : whole     ? TraceInFull(exchange, mask)
                              : TraceLine(exchange, mask));
  });

  TraceFile file(path);
  std::string bytes;
  TraceFile::News news = file.Read(bytes);
  if (std::filesystem::is_directory(path)) throw Failure(kNoFile, path.u8string() + " is a folder");
  if (news == TraceFile::News::kMissing && !options.follows) {
    throw Failure(kNoFile, "there is no " + path.u8string() + ", or it cannot be read" +
                               OtherTraces(path.parent_path()));
  }
  if (!till.asJson && options.exchange == 0) std::cout << TraceHeading();
  for (bool was_missing = false;; news = file.Read(bytes)) {
    if (news == TraceFile::News::kAnew && !std::exchange(was_missing, false)) {
      std::cerr << "register: a new trace\n";
    }
    if (news == TraceFile::News::kAnew) reader.Restart();
    reader.Feed(bytes);
    if (options.exchange != 0 && found) return;
    if (news == TraceFile::News::kMore || news == TraceFile::News::kAnew) continue;
    if (!options.follows) break;
    if (news == TraceFile::News::kMissing && !std::exchange(was_missing, true)) {
      std::cerr << "register: there is no trace; waiting\n";
    }
    reader.Settle();
    printer.Release();
    if (!std::cout) return;  // whoever read it has left
    std::this_thread::sleep_for(std::chrono::milliseconds(200));
  }
  reader.Finish();
  printer.Release();
  if (options.exchange != 0 && !found) {
    throw Failure(kRefused, "the trace has " + std::to_string(count) + " exchanges");
  }
}

}  // namespace

void AddTraceCommand(CLI::App &app, Till &till) {
  CLI::App *trace = app.add_subcommand(
      "trace", "What was said to the server: an exchange a line, or one of them in full. Writes nothing");
  auto options = std::make_shared<TraceOptions>();
  trace->add_option("file", options->file, "Another file than TRACE.TXT or TRACE_<tag>.TXT of the terminal");
  CLI::Option *one = trace->add_option("-e,--exchange", options->exchange, "Show this one in full")
                         ->check(CLI::Range(int64_t{1}, std::numeric_limits<int64_t>::max()))
                         ->type_name("NUMBER");
  CLI::Option *last = trace->add_option("-n,--last", options->last, "Only the last of them")
                          ->check(CLI::Range(int64_t{1}, std::numeric_limits<int64_t>::max()))
                          ->type_name("COUNT");
  CLI::Option *follow =
      trace->add_flag("-f,--follow", options->follows, "Go on as the trace grows, until interrupted");
  trace->add_flag("--show-cards", options->showsCards, "Do not hide the numbers of cards");
  one->excludes(last)->excludes(follow);
  trace->callback([options, &till] { ShowTrace(till, *options); });
}

}  // namespace reg
