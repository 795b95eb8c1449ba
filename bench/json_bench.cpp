// bench/json_bench.cpp: our JSON layer beside others. Each benchmark is named workload/task/library.
#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstdlib>
#include <map>
#include <string>

#include "heap_calls.h"
#include "tasks.h"
#include "workloads.h"

namespace {

const bench::Input &FindInput(const std::string &workload) {
  static std::map<std::string, bench::Input> inputs;
  bench::Input &input = inputs[workload];
  if (input.text.empty()) {
    input.text = bench::FindWorkload(workload).text;
    input.events = bench::ReadEvents(input.text);
  }
  return input;
}

void Run(benchmark::State &state, const char *workload, const bench::NamedTask &named,
         const bench::Contestant *contestant) {
  const bench::Input &input = FindInput(workload);
  const bench::Task task = contestant->*named.task;
  // All must have done the same work.
  if (contestant->numbers_as_text && task(input) != (bench::kLumo.*named.task)(input)) {
    std::fprintf(stderr, "%s: a different result from %s\n", named.name, contestant->library);
    std::exit(1);
  }
  const uint64_t before = bench::HeapCalls();
  benchmark::DoNotOptimize(task(input));
  const uint64_t heap_calls = bench::HeapCalls() - before;
  for (auto _ : state) benchmark::DoNotOptimize(task(input));
  const auto bytes = static_cast<double>(input.text.size());
  state.counters["MB_per_s"] =
      benchmark::Counter(bytes / 1e6 * static_cast<double>(state.iterations()), benchmark::Counter::kIsRate);
  state.counters["heap_calls"] = static_cast<double>(heap_calls);
}

}  // namespace

int main(int argc, char **argv) {
  for (const char *workload : bench::kWorkloads) {
    for (const bench::NamedTask &task : bench::kTasks) {
      for (const bench::Contestant *contestant : bench::kContestants) {
        if (contestant->*task.task == nullptr) continue;
        const std::string name = std::string(workload) + "/" + task.name + "/" + contestant->library;
        benchmark::RegisterBenchmark(name.c_str(), Run, workload, task, contestant);
      }
    }
  }
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  benchmark::RunSpecifiedBenchmarks();
  return 0;
}
