// bench/json_once.cpp: one task once, for callgrind to count its instructions. Prints the bytes it worked on.
//   json_once WORKLOAD TASK LIBRARY
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
  if (argc != 4) return 2;
  bench::Input input;
  input.text = bench::FindWorkload(argv[1]).text;
  input.events = bench::ReadEvents(input.text);
  for (const bench::NamedTask &named : bench::kTasks) {
    for (const bench::Contestant *contestant : bench::kContestants) {
      if (named.name != std::string(argv[2]) || contestant->library != std::string(argv[3])) continue;
      const bench::Task task = contestant->*named.task;
      const uint64_t first = task(input);  // binds what is bound at the first call
      if (Measured(task, input) != first) return 1;
      std::printf("%zu\n", input.text.size());
      return 0;
    }
  }
  return 2;
}
