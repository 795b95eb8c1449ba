#include "api/context.h"
#include "config/lumostate.h"
#include "lumo.h"

int OpenShift(const char *shift_id) {
  return lumo::OpenShift(shift_id);
}

int CloseShift(void) {
  return lumo::CloseShift(lumo::current_transaction != nullptr);
}

int LoadState(void) {
  return lumo::LoadState();
}

int InitState(void) {
  return lumo::InitState();
}

int getOfflineState(void) {
  return lumo::GetOfflineState();
}

int setOfflineState(int offline) {
  return lumo::SetOfflineState(offline);
}

int getNeedUpdate(void) {
  return lumo::GetNeedUpdate();
}

int setNeedUpdate(int need_update) {
  return lumo::SetNeedUpdate(need_update);
}
