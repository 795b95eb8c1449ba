#include "api/context.h"
#include "foundation/trace.h"
#include "journal/logger.h"
#include "lumo.h"
#include "record/transaction.h"

#define LUMO_TEXT_OF(number) #number
#define LUMO_VERSION_TEXT(major, minor, patch) \
  LUMO_TEXT_OF(major) "." LUMO_TEXT_OF(minor) "." LUMO_TEXT_OF(patch)

const char *lumoVersion(void) {
  lumo::Trace("lumoVersion\n");
  return LUMO_VERSION_TEXT(LUMO_VERSION_MAJOR, LUMO_VERSION_MINOR, LUMO_VERSION_PATCH);
}

int lumoIsOffline(void) {
  lumo::Trace("lumoIsOffline\n");
  return lumo::current_transaction != nullptr && lumo::IsOffline(lumo::current_transaction) ? 1 : 0;
}

int lumoOfflineCount(void) {
  lumo::Trace("lumoOfflineCount\n");
  return lumo::CountOfflineRecords();
}

int lumoClearOffline(int expected) {
  lumo::Trace("lumoClearOffline\n");
  return lumo::ClearOffline(expected);
}
