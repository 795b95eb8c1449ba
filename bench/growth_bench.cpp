// bench/growth_bench.cpp: that time and memory grow no faster than the work: long texts, large bills, long
// journals. Each row is one run in a folder of its own; the trace is written as in a shop.
#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

#include "engine/bill_files.h"
#include "engine/reports.h"
#include "foundation/lumostring.h"
#include "foundation/module_path.h"
#include "heap_calls.h"
#include "journal/logger.h"
#include "record/transaction.h"
#include "support/fresh_folder.h"
#include "workloads.h"

namespace {

namespace fs = std::filesystem;

class Folder {
 public:
  Folder() { lumo::SetModuleDirectory((fresh_.path() / "").string<lumo::WCHAR>().c_str()); }

  std::ofstream Create(const char *name) const {
    return std::ofstream(fresh_.path() / name, std::ios::binary);
  }
  void RemoveTrace() const { fs::remove(fresh_.path() / "TRACE.TXT"); }

 private:
  test::FreshFolder fresh_;
};

// The most heap that a run has used beyond what was there before.
class Peak {
 public:
  Peak() : before_(bench::HeapBytes()) { bench::ResetPeak(); }
  void Show(benchmark::State &state) const {
    state.counters["peak_KB"] = static_cast<double>(bench::HeapPeak() - before_) / 1000;
  }

 private:
  uint64_t before_;
};

// Time for each of the state.range(0) bytes, goods or records.
void ShowPerItem(benchmark::State &state) {
  state.counters["per_item"] =
      benchmark::Counter(static_cast<double>(state.range(0)),
                         benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}

void AppendToString(benchmark::State &state) {
  const auto bytes = static_cast<size_t>(state.range(0));
  Peak peak;
  for (auto _ : state) {
    lumo::String *text = lumo::StringCreate();
    for (size_t at = 0; at < bytes; at += 10) lumo::StringAppendN(text, "0123456789", 10);
    benchmark::DoNotOptimize(lumo::StringGetText(text));
    lumo::StringFree(text);
  }
  peak.Show(state);
  ShowPerItem(state);
}

void ReadAndWriteBill(benchmark::State &state) {
  Folder folder;
  folder.Create("BILL") << bench::MakeBill(static_cast<int>(state.range(0)));
  Peak peak;
  for (auto _ : state) {
    lumo::Transaction *transaction = lumo::TransactionCreate();
    if (lumo::BillParse(transaction, "BILL", lumo::GoodBonuses::kLoad) != 0 ||
        lumo::BillModify(transaction, "BILL") != 0) {
      std::abort();
    }
    lumo::TransactionFree(transaction);
    state.PauseTiming();
    folder.RemoveTrace();
    state.ResumeTiming();
  }
  peak.Show(state);
  ShowPerItem(state);
}

std::string RecordOf(const char *type, const std::string &rrn, const std::string &part) {
  return std::string(R"({"request":{"ver":"1.0","type":")") + type + R"(","requestId":")" + rrn +
         R"(","terminalId":"00417","requestDate":"2024-05-17T10:42:05Z","employeeId":"7",)"
         R"("cardNum":"9000000000000001","isOffline":false,"shiftId":"1"},)" +
         part + "}\n";
}

std::string Rrn(int number) {
  char text[17];
  std::snprintf(text, sizeof text, "%016d", number % 10000000);
  return text;
}

constexpr char kBillPart[] =
    R"("bill":{"totalSum":12345,"orderLen":1,"billNum":"1","billDate":"2024-05-17T10:42:05Z",)"
    R"("partnerFee":1000,"goodList":{"good":[{"title":"TOTAL_AMOUNT","productCode":"008",)"
    R"("positionCost":12345,"orderNum":1,"cnt":1,"bonus":[{"earned":617,"spend":0,"organizerFee":61,)"
    R"("accountType":"GLOBAL"}]}]}})";

// Payments and, in the same order, the confirmation of each.
void WriteLog(const Folder &folder, int records) {
  std::ofstream log = folder.Create("LOG");
  const int payments = records / 2;
  for (int i = 0; i < payments; ++i) log << RecordOf("PAYMENT", Rrn(i), kBillPart);
  for (int i = 0; i < payments; ++i) {
    log << RecordOf("PAYMENT_CONFIRM", Rrn(payments + i),
                    R"("paymentConfirm":{"requestId":")" + Rrn(i) + R"(","isConfirm":true})");
  }
}

void Report(benchmark::State &state, int (*generate)(const char *from, const char *to),
            const std::string &expected) {
  Folder folder;
  WriteLog(folder, static_cast<int>(state.range(0)));
  Peak peak;
  for (auto _ : state) {
    if (generate("2024-05-17T00:00:00Z", "2024-05-18T00:00:00Z") <= 0) std::abort();
  }
  peak.Show(state);
  ShowPerItem(state);
  if (std::string(lumo::GetReportPtr()).find(expected) == std::string::npos) std::abort();
}

void SummaryReport(benchmark::State &state) {
  // Every payment has found its confirmation.
  Report(state, lumo::GenerateSummaryReport,
         "ПОДТВЕРЖДЕННЫЕ ПЛАТЕЖИ:\nКол-во: " + std::to_string(state.range(0) / 2) + "\n");
}
void DetailedReport(benchmark::State &state) {
  Report(state, lumo::GenerateReport, "ПОДТВЕРЖДЕНИЕ ПЛАТЕЖА\n");
}

// LOG with so many records before it gets another.
void AppendToLog(benchmark::State &state) {
  Folder folder;
  WriteLog(folder, static_cast<int>(state.range(0)));
  const std::string record = RecordOf("PAYMENT", Rrn(0), kBillPart);
  const std::string line = record.substr(0, record.size() - 1);
  lumo::SetLogSize(1000000);
  lumo::AppendLogRecord(line.c_str());
  Peak peak;
  for (auto _ : state) {
    if (lumo::AppendLogRecord(line.c_str()) != 0) std::abort();
  }
  peak.Show(state);
  state.counters["per_item"] =
      benchmark::Counter(1, benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}

BENCHMARK(AppendToLog)->Arg(0)->Arg(100)->Arg(1000)->Arg(3000)->Arg(10000)->Iterations(200);
BENCHMARK(AppendToString)->Arg(10000)->Arg(100000)->Arg(1000000)->Arg(10000000);
BENCHMARK(ReadAndWriteBill)->Arg(100)->Arg(1000)->Arg(10000)->Iterations(1)->Unit(benchmark::kMillisecond);
BENCHMARK(SummaryReport)->Arg(1000)->Arg(10000)->Arg(100000)->Iterations(1)->Unit(benchmark::kMillisecond);
BENCHMARK(DetailedReport)->Arg(1000)->Arg(10000)->Arg(100000)->Iterations(1)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
