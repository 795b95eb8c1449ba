#include "lumo.h"
#include "updater/lumoupdater.h"

int RunUpdater(const char *package) {
  return lumo::RunUpdater(package);
}

int CommitUpdates(void) {
  return lumo::CommitUpdates();
}
