#include <CLI/CLI.hpp>
#include <iostream>
#include <limits>
#include <map>
#include <memory>
#include <optional>

#include "commands.h"
#include "progress.h"
#include "records.h"
#include "safe_file.h"
#include "shop_files.h"
#include "trace_file.h"
#include "trace_reader.h"
#include "trace_view.h"
#include "utf8.h"

namespace reg {
namespace {

// How the last attempt to send each number ended, as the trace tells it.
std::map<std::string, std::string> ReadAttempts(const std::filesystem::path &trace) {
  std::map<std::string, std::string> ends;
  TraceReader reader([&ends](const Exchange &exchange) {
    if (!exchange.replayed) return;
    std::string end;
    if (exchange.code == ERR_SERVER_ERROR) {
      end = exchange.stateCode.empty() ? "refused" : exchange.stateCode;
    } else if (exchange.code == 0) {
      end = "taken by the server";
    } else if (exchange.Reached() == nullptr) {
      end = "no server reached";
    } else {
      end = exchange.code ? CodeInWords(*exchange.code) : "the trace ends before the answer";
    }
    ends[exchange.rrn] = end;
  });
  TraceFile file(trace);
  std::string bytes;
  for (auto news = file.Read(bytes); news == TraceFile::News::kMore || news == TraceFile::News::kAnew;
       news = file.Read(bytes)) {
    reader.Feed(bytes);
  }
  reader.Finish();
  return ends;
}

std::string WhyItWaits(const Record &record, const std::map<std::string, std::string> &ends) {
  if (!record.readable) return "no record: it can never be sent";
  const auto end = ends.find(record.rrn);
  if (end != ends.end()) return end->second;
  return record.rrn.empty() ? "has no number: the server will refuse it" : "not sent yet";
}

// What waits, each with its reason; the register's status is 1 when something does.
void ShowQueue(Till &till, Facts facts, const std::string &first_line) {
  const auto ends = ReadAttempts(till.TraceFile());
  std::vector<Facts> list;
  std::string lines;
  Sums sums;
  size_t number = 0;
  for (const Record &record : ReadJournal(QueueFile(till.Folder()))) {
    const std::string why = WhyItWaits(record, ends);
    sums.Add(record);
    list.push_back(FactsOf(++number, record).Add("why", why));
    lines += LineOf(number, record) + "\n     " + why + "\n";
  }
  facts.Add("waiting", uint64_t{number}).Add("records", list).Add("sums", sums.AsFacts());
  till.Show(facts, [&] {
    std::cout << first_line << lines;
    if (number == 0) {
      std::cout << "  nothing waits\n";
    } else {
      std::cout << "  " << number << (number == 1 ? " record waits\n" : " records wait\n");
      sums.Print();
    }
  });
  if (number != 0) till.status = kRefused;
}

void Replay(Till &till) {
  Library &library = till.Started();
  const int waiting = library.lumoOfflineCount();
  till.Check(waiting);
  int sent = 0;
  {
    const Progress progress(till.TraceFile(), static_cast<size_t>(waiting), till.showsProgress);
    sent = library.SendOfflinePayments();
  }
  // Without this the library would offer them again and again.
  if (sent == waiting) till.Check(library.lumoClearOffline(waiting));
  ShowQueue(till, std::move(Facts().Add("sent", sent).Add("of", waiting)),
            "  " + std::to_string(sent) + " of " + std::to_string(waiting) + " records sent\n");
}

struct DropOptions {
  size_t number = 0;
  std::optional<std::string> rrn;
  bool isSure = false;
};

std::string Base64(const std::string &bytes) {
  constexpr char kDigits[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  std::string text;
  for (size_t at = 0; at < bytes.size(); at += 3) {
    uint32_t three = 0;
    for (size_t i = at; i < at + 3; ++i) {
      three = three << 8 | (i < bytes.size() ? static_cast<unsigned char>(bytes[i]) : 0U);
    }
    for (const unsigned shift : {18U, 12U, 6U, 0U}) text += kDigits[three >> shift & 0x3FU];
  }
  if (bytes.size() % 3 != 0) text.replace(text.size() - (3 - bytes.size() % 3), 3, 3 - bytes.size() % 3, '=');
  return text;
}

// The file without this line; every other byte stays. *out_line is what was taken out.
std::string WithoutLine(const std::string &bytes, size_t number, std::string *out_line) {
  size_t begin = 0;
  for (size_t left = number;; --left) {
    const size_t end = bytes.find('\n', begin);
    if (left == 0 || end == std::string::npos) {
      throw Failure(kBadWords, "there is no record number " + std::to_string(number));
    }
    if (left == 1) {
      *out_line = bytes.substr(begin, end - begin);
      return bytes.substr(0, begin) + bytes.substr(end + 1);
    }
    begin = end + 1;
  }
}

void Drop(Till &till, const DropOptions &options) {
  if (!till.busy) till.busy = std::make_unique<Busy>();
  // It would put the record back.
  if (std::filesystem::exists(ReplayFile(till.Folder()))) {
    throw Failure(kBadWords, "a replay runs or was interrupted: run register queue replay first");
  }
  const std::filesystem::path file = QueueFile(till.Folder());
  if (CountRecords(file) == 0) throw Failure(kBadWords, "nothing waits");
  Record record;
  const auto edit = [&](const std::string &bytes) {
    std::string line;
    std::string rest = WithoutLine(bytes, options.number, &line);
    record = ReadRecord(line);
    const bool is_named = options.rrn && record.readable && !record.rrn.empty() && record.rrn == *options.rrn;
    if (options.rrn && !is_named) {
      throw Failure(kBadWords,
                    "record " + std::to_string(options.number) + " has another RRN: " + OrDash(record.rrn));
    }
    if (!is_named && !options.isSure) {
      throw Failure(kBadWords, "this would lose\n" + LineOf(options.number, record) + "\nSay --rrn " +
                                   (record.rrn.empty() ? "RRN" : record.rrn) + ", or --yes");
    }
    return rest;
  };
  // It is nowhere else afterwards, so nothing is taken out before somebody has it.
  const auto hand_out = [&] {
    Facts facts;
    facts.Add("dropped", uint64_t{options.number}).AddJson("record", record.line);
    // Byte for byte.
    const bool is_text = Mended(record.line) == record.line;
    facts.Add(is_text ? "line" : "lineBase64", is_text ? record.line : Base64(record.line));
    till.Show(facts, [&] {
      std::cout << LineOf(options.number, record) << "\n  dropped; it was\n" << record.line << '\n';
    });
    if (!std::cout.flush()) {
      throw Failure(kNoFile, "the record cannot be handed out, so it stays in the queue");
    }
  };
  EditFile(file, edit, hand_out);
}

void Clear(Till &till, int expected) {
  till.Check(till.Started().lumoClearOffline(expected));
  till.Show(Facts().Add("cleared", expected), [&] { std::cout << "  " << expected << " records cleared\n"; });
}

}  // namespace

void AddQueueCommand(CLI::App &app, Till &till) {
  CLI::App *queue =
      app.add_subcommand("queue", "What was sold without the server; exit status 1 when something waits");
  queue->require_subcommand(0, 1);
  queue->add_subcommand("list",
                        "What waits, why, and the sums; writes nothing (as does the bare word queue)");
  queue->add_subcommand("replay", "Send what waits, and clear it when the server took all of it")
      ->callback([&till] { Replay(till); });

  CLI::App *drop =
      queue->add_subcommand("drop", "Take one record out for good; no register may run meanwhile");
  auto options = std::make_shared<DropOptions>();
  drop->add_option("number", options->number, "Its number in the list")
      ->required()
      ->check(CLI::Range(1, std::numeric_limits<int>::max()));
  drop->add_option("--rrn", options->rrn, "Its RRN, to be sure that it is the one");
  drop->add_flag("--yes", options->isSure, "Whatever it is: for a record without an RRN");
  drop->callback([options, &till] { Drop(till, *options); });

  CLI::App *clear = queue->add_subcommand("clear", "Clear the queue after a replay by another program");
  auto expected = std::make_shared<int>(0);
  clear
      ->add_option("count", *expected,
                   "What that replay returned; nothing is cleared when another number waits")
      ->required()
      ->check(CLI::Range(0, std::numeric_limits<int>::max()));
  clear->callback([expected, &till] { Clear(till, *expected); });

  queue->callback([queue, &till] {
    const auto chosen = queue->get_subcommands();
    if (chosen.empty() || chosen[0]->get_name() == "list") ShowQueue(till, Facts(), "");
  });
}

}  // namespace reg
