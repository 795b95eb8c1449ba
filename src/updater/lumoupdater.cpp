#include "updater/lumoupdater.h"

#include "foundation/trace.h"

namespace lumo {
namespace {

constexpr int kUpdateFailed = -1;  // updating is not part of this version

}  // namespace

int RunUpdater(const char *package) {
  Trace("RunUpdater(\"%s\")", package);
  return kUpdateFailed;
}

int CommitUpdates() {
  Trace("CommitUpdates()");
  return kUpdateFailed;
}

}  // namespace lumo
