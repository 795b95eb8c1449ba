#include "protocol/http_transport.h"

#include <cstdint>
#include <cstring>

#include "config/server_address.h"
#include "foundation/format.h"
#include "foundation/lumostring.h"
#include "foundation/memory.h"
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

// The server that was reached. Its texts are owned.
struct Server {
  char *host;
  char *path;
  int32_t port;
};

void FreeServer(Server *server) {
  if (server->host != nullptr) {
    MemFree(server->host, LUMO_HERE);
    MemFree(server->path, LUMO_HERE);
  }
  *server = Server{};
}

int ParseServer(const char *address, Server *server) {
  FreeServer(server);
  const size_t size = std::strlen(TextOrEmpty(address)) + 1;
  server->host = static_cast<char *>(MemCalloc(1, size, LUMO_HERE));
  server->path = static_cast<char *>(MemCalloc(1, size, LUMO_HERE));
  return ParseAddress(address, server->host, &server->port, server->path);
}

// Tries the server address, then the alternate one; `server` is the one of the last attempt.
int Connect(const Transaction *transaction, Server *server) {
  const char *const addresses[] = {transaction->serverAddr, transaction->serverAltAddr};
  constexpr int kAttempts = 2;
  int result = 0;
  for (int attempt = 0; attempt < kAttempts; ++attempt) {
    result = ParseServer(addresses[attempt], server);
    if (result != 0) {
      TraceError("ParseAddress res[%d]\n", result);
      if (attempt == kAttempts - 1) TraceError("Connection failed!\n");
      continue;
    }
    Trace("Connecting to %s:%d/%s...\n", server->host, server->port, server->path);
    result = SocketConnect(server->host, server->port, transaction->timeout);
    if (result == 0) {
      Trace("Connection established!\n");
      break;
    }
  }
  return result;
}

// The head is not formatted in one piece: an address has no greatest length.
void AppendRequest(String *request, const Server &server, const char *web_method, const String *body) {
  StringAppend(request, "POST ");
  StringAppend(request, server.path);
  StringAppend(request, "/");
  StringAppend(request, web_method);
  StringAppend(request, "\nHost: ");
  StringAppend(request, server.host);
  StringAppend(request, ":");
  StringAppend(request, IntToText(server.port));
  StringAppend(request, "\nContent-Type: application/json-soap;charset=UTF-8\nContent-Length: ");
  StringAppend(request, IntToText(static_cast<int32_t>(StringGetLength(body))));
  StringAppend(request, "\n\n");
  StringAppendN(request, StringGetText(body), StringGetLength(body));
  StringAppend(request, "\n");
}

// 0, ERR_REQUEST_SEND or ERR_REQUEST_BUILD.
int SendRequest(const Transaction *transaction, const Server &server) {
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
  const uint32_t length = StringGetLength(answer.get());
  if (length == 0) {
    TraceError("No data received\n");
    return ERR_NO_RESPONSE;
  }
  return ParseOperationResponse(transaction, StringGetText(answer.get()), length);
}

}  // namespace

int TransactionProcessJson(Transaction *transaction) {
  Trace("TransactionProcessJson\n");
  // An answer without a request id must not leave that of an earlier exchange behind.
  transaction->response.requestId = nullptr;
  Server server = {};
  int result = Connect(transaction, &server);
  if (result == 0) result = SendRequest(transaction, server);
  if (result == 0) result = ReadAnswer(transaction);
  FreeServer(&server);
  if (result == ERR_CONNECT || result == ERR_SERVER_ADDRESS) return ERR_CONNECT;
  // Note: also when Winsock did not start, where closing fails as well.
  if (SocketClose() < 0) TraceError("LUMO_Disconnect error: %d\n", result);
  return result;
}

}  // namespace lumo
