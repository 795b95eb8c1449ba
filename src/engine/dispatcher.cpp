#include "engine/dispatcher.h"

#include "config/lumoconfig.h"
#include "config/lumostate.h"
#include "foundation/result_codes.h"
#include "foundation/trace.h"
#include "protocol/http_transport.h"
#include "record/enumerations.h"
#include "record/transaction.h"

namespace lumo {
namespace {

// Service requests do not tell whether the shop can sell.
bool IsServiceRequest(RequestType type) {
  return type == REQUEST_LAST_RRN || type == REQUEST_AD;
}

// Each look at the persistent state reads its file, so nobody looks unless the result may change the state.
void SwitchOfflineState(int result) {
  if (result == ERR_CONNECT && GetOfflineState() == 0) {
    SetOfflineState(1);
  } else if (result == 0 && GetOfflineState() == 1) {
    SetOfflineState(0);
  }
}

}  // namespace

int TransactionProcess(Transaction *transaction) {
  if (transaction == nullptr) {
    TraceError("trans pointer is null\n");
    return ERR_NO_TRANSACTION;
  }
  const RequestType type = transaction->request.type;
  Trace("TransactionProcess [%s]\n", RequestTypeToString(type));
  const int result = TransactionProcessJson(transaction);
  if (!IsServiceRequest(type) && Settings().offlineMode == 1) SwitchOfflineState(result);
  if (result == 0 || result == ERR_SERVER_ERROR) {
    SetRequestId(transaction->response.requestId);
    SetNeedUpdate(transaction->response.isNeedUpdate ? 1 : 0);
  }
  return result;
}

}  // namespace lumo
