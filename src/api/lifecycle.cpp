#include "api/context.h"
#include "config/lumoconfig.h"
#include "config/lumostate.h"
#include "foundation/module_path.h"
#include "foundation/result_codes.h"
#include "foundation/trace.h"
#include "journal/logger.h"
#include "journal/recovery.h"
#include "lumo.h"

int LUMOInit(void) {
  lumo::Trace("LUMOInit()\n");
  if (lumo::LoadNewConfig() != 0 && lumo::LoadConfig() != 0) return ERR_CONFIG_LOAD;
  lumo::RecoverJournals();
  if (lumo::LoadState() != 0) return ERR_STATE_LOAD;
  lumo::SetLogSize(lumo::Settings().logSize);
  // Note: a transaction still open is forgotten, not freed. The register may hold its texts.
  lumo::current_transaction = nullptr;
  return 0;
}

int LUMOInitExt(const char *name) {
  lumo::SetTraceTag(name);
  return LUMOInit();
}

int LUMOClean(void) {
  lumo::Trace("LUMOClean()\n");
  return 0;
}

const char *GetErrorMessage(int code) {
  return lumo::ErrorMessage(code);
}
