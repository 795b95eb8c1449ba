// updater/lumoupdater.h: the update calls.
#pragma once

namespace lumo {

int RunUpdater(const char *package);  // -1: updating is not part of this version
int CommitUpdates();                  // -1

}  // namespace lumo
