#include "support/shop.h"

#include <filesystem>

#include "config/lumoconfig.h"
#include "config/lumostate.h"
#include "engine/request.h"
#include "journal/logger.h"
#include "record/receipt.h"
#include "record/transaction.h"
#include "support/test_clock.h"

namespace test {
namespace {

constexpr size_t kFullPiece = 500;

}  // namespace

const char kSuccess[] =
    R"({"ver":"1.0","requestId":"TERM012120500050","responseId":"5","responseDate":"2012-12-05T10:00:01Z",)"
    R"("requestState":"SUCCESS","requestStateCode":"OK","message":"","isNeedUpdate":false})";
const char kRefusal[] =
    R"({"ver":"1.0","requestId":"TERM012120500050","responseId":"5","responseDate":"2012-12-05T10:00:01Z",)"
    R"("requestState":"ERROR","requestStateCode":"LOCKED_CARD","message":"","isNeedUpdate":false})";

const char kStateReload[] =
    "LoadState\n"
    "parseJsonFile [STATE]\n"
    "No BOM found 7B 22 72\n"
    "ERROR: SetFilePointer function failed with error 0\n";

std::string Reply(const std::string &name, const std::string &part, const std::string &response) {
  return "{\"" + name + "\":{\"response\":" + response + (part.empty() ? "" : "," + part) + "}}";
}

Shop::Shop() {
  SetClock(2012, 12, 5, 10, 0, 0);
  StopServer();
}

Shop::~Shop() {
  CloseCard();
}

void Shop::OpenShop(const std::string &members) {
  std::string config = R"({"terminalId":"TERM0001","protocolVersion":"1.0","timeout":30,"logSize":100,)"
                       R"("offlineMode":0,"retailNetworkName":"ЛАВКА","receiptHeader":"МАГАЗИН",)"
                       R"("receiptFooter":"СПАСИБО","serverAltAddr":"none","serverAddr":")";
  config += address_ + "\"";
  config += members.empty() ? "}" : "," + members + "}";
  folder.Write("CONFIG", config);
  ASSERT_EQ(lumo::LoadConfig(), 0);
  lumo::SetLogSize(100);
  SetState(R"({"reqId":"TERM012120500007","shiftId":"12","shiftState":1})");
}

void Shop::SetState(const std::string &text) {
  folder.Write("STATE", text);
  ASSERT_EQ(lumo::LoadState(), 0);
  folder.ClearTrace();
}

void Shop::StartServer(const std::vector<std::string> &answers) {
  std::vector<Answer> script;
  for (const std::string &answer : answers) {
    // The client takes an answer for complete at its first piece that is not full, so it must find full ones.
    Answer pieces;
    for (size_t at = 0; at < answer.size(); at += kFullPiece) {
      pieces.pieces.push_back(answer.substr(at, kFullPiece));
    }
    script.push_back(pieces);
  }
  server = std::make_unique<ScriptedServer>(script);
  address_ = server->address();
}

void Shop::StopServer() {
  server.reset();
  address_ = "http://127.0.0.1:" + std::to_string(UnusedPort()) + "/ws";
}

void Shop::OpenCard(const char *card_num, const char *employee_id) {
  CloseCard();
  card = lumo::TransactionCreate();
  ASSERT_EQ(lumo::FillTransactionHeader(card, card_num, employee_id), 0);
  folder.ClearTrace();
}

void Shop::CloseCard() {
  lumo::TransactionFree(card);
  card = nullptr;
}

std::string Shop::Body() const {
  return lumo::ReceiptGetText(card->body);
}

std::string Shop::RequestDocument(size_t index) const {
  const std::vector<std::string> requests = server->requests();
  if (index >= requests.size()) {
    ADD_FAILURE() << "the server saw " << requests.size() << " requests";
    return "";
  }
  const std::string &request = requests[index];
  const size_t head_end = request.find("\n\n");
  return head_end == std::string::npos ? "" : request.substr(head_end + 2, request.size() - head_end - 3);
}

size_t Shop::RequestCount() const {
  return server->requests().size();
}

void Shop::MakeLogUnwritable() const {
  std::filesystem::create_directory(std::filesystem::u8path(folder.path() + "LOG"));
}

std::string RequestPart(const std::string &type, const std::string &request_id) {
  return R"("request":{"ver":"1.0","type":")" + type + R"(","requestId":")" + request_id +
         R"(","terminalId":"TERM0001","requestDate":"2012-12-05T10:00:00Z","employeeId":"cashier7",)" +
         R"("cardNum":"9643001234567890","isOffline":false,"shiftId":"12"})";
}

size_t Count(const std::string &text, const std::string &part) {
  size_t count = 0;
  for (size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + part.size())) ++count;
  return count;
}

}  // namespace test
