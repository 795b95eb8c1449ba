// bench/json_once.cpp: one task once.
//   json_once WORKLOAD TASK LIBRARY          for callgrind to count its instructions; prints the bytes it
//   worked on json_once WORKLOAD TASK LIBRARY first    prints the microseconds that it takes in a process
//   that has not done it before
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "tasks.h"
#include "workloads.h"

// callgrind collects inside this function alone.
extern "C" __attribute__((noinline)) uint64_t Measured(bench::Task task, const bench::Input &input) {
  return task(input);
}

int main(int argc, char **argv) {
  const bool first_time = argc == 5 && argv[4] == std::string("first");
  if (argc != 4 && !first_time) return 2;
  bench::Input input;
  input.text = bench::FindWorkload(argv[1]).text;
  input.events = bench::ReadEvents(input.text);
  for (const bench::NamedTask &named : bench::kTasks) {
    for (const bench::Contestant *contestant : bench::kContestants) {
      if (named.name != std::string(argv[2]) || contestant->library != std::string(argv[3])) continue;
      const bench::Task task = contestant->*named.task;
      if (task == nullptr) return 2;
      if (first_time) {
        const auto begin = std::chrono::steady_clock::now();
        task(input);
        const std::chrono::duration<double, std::micro> time = std::chrono::steady_clock::now() - begin;
        std::printf("%.1f\n", time.count());
        return 0;
      }
      const uint64_t first = task(input);  // binds what is bound at the first call
      if (Measured(task, input) != first) return 1;
      std::printf("%zu\n", input.text.size());
      return 0;
    }
  }
  return 2;
}
