#include "protocol/http_transport.h"

#include <cstdint>
#include <cstring>

#include "config/server_address.h"
#include "foundation/format.h"
#include "foundation/lumostring.h"
#include "foundation/result_codes.h"
#include "foundation/trace.h"
#include "protocol/answer.h"
#include "protocol/socket_layer.h"
#include "protocol/transaction_request_json.h"
#include "record/transaction.h"

namespace lumo {
namespace {

// An answer ends at the first piece shorter than this; the server announces no length.
constexpr int kPieceBytes = 500;

// More than this is no answer, whoever sends it.
constexpr int32_t kLargestAnswer = 4 * 1024 * 1024;

// What an ordinary request or answer takes, so that its text need not grow piece by piece.
constexpr uint32_t kMessageBytes = 4000;

// The head is not formatted in one piece: an address has no greatest length.
void AppendRequest(String *request, const ServerAddress &server, const char *web_method, const String *body) {
  StringAppend(request, "POST ");
  StringAppend(request, server.path.get());
  StringAppend(request, "/");
  StringAppend(request, web_method);
  StringAppend(request, "\nHost: ");
  StringAppend(request, server.host.get());
  StringAppend(request, ":");
  StringAppend(request, IntToText(server.port));
  StringAppend(request, "\nContent-Type: application/json-soap;charset=UTF-8\nContent-Length: ");
  StringAppend(request, IntToText(static_cast<int32_t>(StringGetLength(body))));
  StringAppend(request, "\n\n");
  StringAppendN(request, StringGetText(body), StringGetLength(body));
  StringAppend(request, "\n");
}

// 0, ERR_REQUEST_SEND or ERR_REQUEST_BUILD.
int SendRequest(const Transaction *transaction, const ServerAddress &server) {
  const ScopedString body(StringCreate());
  const ScopedString request(StringCreate());
  StringReserve(body.get(), kMessageBytes);
  if (CreateOperationRequest(transaction, body.get()) != 0) return ERR_REQUEST_BUILD;
  AppendRequest(request.get(), server, WebMethodName(transaction->request.type), body.get());
  const char *text = StringGetText(request.get());
  Trace("Sending buffer:\n%s\n", text);
  const int sent = SocketSend(text, static_cast<int>(StringGetLength(request.get())));
  if (sent < 0) {
    TraceError("LUMO_Send error: %d\n", sent);
    return ERR_REQUEST_SEND;
  }
  return 0;
}

// Appends the answer to `answer`. Returns the last call's result: less than a full piece, negative after an
// error that ended it.
int ReceiveAnswer(String *answer) {
  char piece[kPieceBytes + 1];
  int received = 0;
  int32_t total = 0;
  do {
    std::memset(piece, 0, sizeof piece);
    received = SocketReceive(piece, kPieceBytes);
    total += received > 0 ? received : 0;
    if (total > kLargestAnswer) return -1;
    if (received > 0) {
      Trace("%s\n", piece);
      // Note: appended as a text, so what follows a zero byte in a piece is lost.
      StringAppend(answer, piece);
    } else {
      TraceError("LUMO_Receive res %d\n", received);
    }
  } while (received == kPieceBytes);
  return received;
}

// 0, ERR_NO_RESPONSE, or the outcome of the answer.
int ReadAnswer(Transaction *transaction) {
  Trace("Receiving \n");
  const ScopedString answer(StringCreate());
  StringReserve(answer.get(), kMessageBytes);
  const int received = ReceiveAnswer(answer.get());
  if (received < 0) {
    TraceError("LUMO_Receive error: %d\n", received);
    return ERR_NO_RESPONSE;
  }
  if (StringGetLength(answer.get()) == 0) {
    TraceError("No data received\n");
    return ERR_NO_RESPONSE;
  }
  return ParseOperationResponse(transaction, StringGetText(answer.get()));
}

// Has the server at this address carry the operation out. False when it cannot be reached; nothing was sent.
bool AskServer(Transaction *transaction, const char *address, int *out_result) {
  const ServerAddress server(address);
  *out_result = server.result;
  if (*out_result != 0) {
    TraceError("ParseAddress res[%d]\n", *out_result);
    return false;
  }
  Trace("Connecting to %s:%d/%s...\n", server.host.get(), server.port, server.path.get());
  *out_result = SocketConnect(server.host.get(), server.port, transaction->timeout);
  if (*out_result != 0) return false;
  Trace("Connection established!\n");
  *out_result = SendRequest(transaction, server);
  if (*out_result == 0) *out_result = ReadAnswer(transaction);
  return true;
}

}  // namespace

int TransactionProcessJson(Transaction *transaction) {
  Trace("TransactionProcessJson\n");
  // An answer without a request id must not leave that of an earlier exchange behind.
  transaction->response.requestId = nullptr;
  int result = 0;
  const bool reached = AskServer(transaction, transaction->serverAddr, &result) ||
                       AskServer(transaction, transaction->serverAltAddr, &result);
  if (!reached && result == ERR_SERVER_ADDRESS) TraceError("Connection failed!\n");
  if (!reached && (result == ERR_SERVER_ADDRESS || result == ERR_CONNECT)) return ERR_CONNECT;
  // Note: also when Winsock did not start, where closing fails as well.
  if (SocketClose() < 0) TraceError("LUMO_Disconnect error: %d\n", result);
  return result;
}

}  // namespace lumo
