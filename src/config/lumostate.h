// config/lumostate.h: STATE, the authority for shift, request counter and flags. Reads of shift, dates and
// the offline flag load the file again first; every change rewrites it at once.
#pragma once

#include <cstdint>

namespace lumo {

// A missing or damaged file is replaced by "{}". 0, ERR_STATE_LOAD or ERR_STATE_CREATE.
int LoadState();
int SaveState();  // 0 or ERR_STATE_OPEN
int InitState();
void ReleaseState();

// A null identifier is the time the previous shift was opened. 0 or ERR_SHIFT_ALREADY_OPEN.
int OpenShift(const char *shift_id);
int CloseShift(bool transaction_exists);  // 0 or ERR_SHIFT_TRANSACTION_OPEN

int GetShiftState();             // reloads
const char *GetShiftId();        // reloads; null when there is none; valid until the next load
const char *GetShiftOpenDate();  // reloads
const char *GetShiftCloseDate();
int SetShiftId(const char *shift_id);  // the setters store, save and return the save's result
int SetShiftState(int32_t value);
int SetShiftOpenDate(const char *date);
int SetShiftCloseDate(const char *date);

int GetOfflineState();  // reloads
int SetOfflineState(int32_t value);
int GetNeedUpdate();  // as held in memory
int SetNeedUpdate(int32_t value);

int SetRequestId(const char *request_id);  // null is ignored
const char *RequestId();                   // null when there is none; valid until the next load or change
const char *CopyRequestId();               // null when there is none; replaced by the next call

}  // namespace lumo
