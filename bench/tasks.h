// bench/tasks.h: the table of what is measured.
#pragma once

#include "contestants.h"

namespace bench {

struct NamedTask {
  const char *name;
  Task Contestant::*task;
};

constexpr NamedTask kTasks[] = {
    {"events", &Contestant::events},
    {"pieces", &Contestant::pieces},
    {"tree", &Contestant::tree},
    {"text", &Contestant::text},
};
constexpr const Contestant *kContestants[] = {
    &kLumo,          &kRapidJson,      &kRapidJsonInPlace,      &kRapidJsonNumbers,
    &kRapidJsonSse2, &kRapidJsonSse42, &kRapidJsonSse42InPlace, &kSimdjson,
    &kYajl,
};
constexpr const char *kWorkloads[] = {"answer", "bill", "bills"};

}  // namespace bench
