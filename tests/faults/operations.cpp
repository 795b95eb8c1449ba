#include "faults/operations.h"

#include <algorithm>
#include <cstring>
#include <fstream>
#include <initializer_list>
#include <iterator>

#include "faults/calls.h"
#include "faults/server.h"
#include "lumo.h"

namespace faults {
namespace {

// A record of OFFLINE.
std::string WaitingPayment(const std::string &number) {
  return "{\"request\":{\"ver\":\"1.0\",\"type\":\"PAYMENT\",\"requestId\":\"123451212040000" + number +
         "\",\"requestDate\":\"2012-12-04T10:00:00Z\",\"isOffline\":true},\"bill\":" + Bill("W" + number) +
         "}\n";
}

bool IsOneOf(int code, std::initializer_list<int> codes) {
  return std::find(codes.begin(), codes.end(), code) != codes.end();
}

// The codes of lumo.h's "Talking to the server".
bool IsOfAnExchange(int code) {
  return IsOneOf(code, {0, -501, -410, -401, -303, -402, -403, -404, -405, -406, -407, -411, -1});
}

// Looked for past the library, whose calls may fail.
bool OfflineHolds(const std::string &bill) {
  std::ifstream stream("OFFLINE", std::ios::binary);
  const std::string text{std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
  return text.find("\"billNum\":\"" + bill + "\"") != std::string::npos;
}

void Sell(Report *report, const char *bill, int code) {
  Report::Sale &sale = report->sales[report->saleCount++];
  std::strncpy(sale.bill, bill, sizeof sale.bill - 1);
  sale.code = code;
  sale.offline = lumoIsOffline() != 0;
  sale.unkept = FaultIsForEver() && !OfflineHolds(bill);
}

void Nothing() {}

void OpenCard() {
  CreateTransaction("9000000001", "7");
}

void OpenCardAndPay() {
  OpenCard();
  PaymentProc(0, "B1.JSN");
}

void ReadyToClose() {
  OpenShift("43");
}

int PayBill(Report *report, const char *number, const char *file) {
  const int code = PaymentProc(1, file);
  Sell(report, number, code);
  return code;
}

int SellTwice(Report *report) {
  int code = PayBill(report, "B1", "B1.JSN");
  CloseTransaction();
  OpenCard();
  if (code == 0) code = PayBill(report, "B2", "B2.JSN");
  return code;
}

bool IsOfAPayment(int code) {
  return IsOfAnExchange(code) || IsOneOf(code, {-104, -105, -106});
}
bool IsOfAPaymentAndConfirm(int code) {
  return IsOfAnExchange(code) || IsOneOf(code, {-104, -105, -307});
}
bool IsOfARecordedExchange(int code) {
  return IsOfAnExchange(code) || code == -201;
}
bool IsOfAnActivation(int code) {
  return IsOfARecordedExchange(code) || code == -106;
}
bool IsOfAReturn(int code) {
  return IsOfARecordedExchange(code) || code == -113;
}
bool IsOfAStart(int code) {
  return IsOneOf(code, {0, -108, -111});
}
bool IsOfASave(int code) {
  return IsOneOf(code, {0, -110});
}
bool IsOfALoad(int code) {
  return IsOneOf(code, {0, -108, -109});
}
bool IsZero(int code) {
  return code == 0;
}
bool IsACount(int code) {
  return code >= 0;
}
bool IsACountOrACode(int code) {
  return code >= 0 || code == -307;
}

Files Leftovers() {
  return {{"LOG.old",
           "{\"request\":{\"type\":\"BALANCE\",\"requestId\":\"old\"}}\n"
           "{\"request\":{\"type\":\"BALANCE\",\"requestId\":\"older\"}}\n"},
          {"STATE", "{\"reqId\":\"1234512120500007\",\"shiftId\":\"42\",\"shiftState\":1}"}};
}

// Balances under the numbers old1, old2 and so on.
std::string OldRecords(int first, int last) {
  std::string log;
  for (int i = first; i <= last; ++i) {
    log += "{\"request\":{\"type\":\"BALANCE\",\"requestId\":\"old" + std::to_string(i) + "\"}}\n";
  }
  return log;
}

// A trim that ended in the middle of its copy, or in front of the last step.
Files TrimUpTo(int last) {
  return {{"LOG.old", OldRecords(1, 6)}, {"LOG", OldRecords(4, last)}};
}

// A LOG that the next record fills: `logSize` is 9.
Files FullLog() {
  std::string log;
  for (int i = 1; i <= 8; ++i) {
    log += "{\"request\":{\"type\":\"BALANCE\",\"requestId\":\"log" + std::to_string(i) + "\"}}\n";
  }
  return {{"LOG", log}};
}

std::vector<Operation> MakeOperations() {
  return {
      {"LUMOInit", true, {}, Nothing, [](Report *) { return LUMOInit(); }, IsOfAStart, true},
      {"LUMOInit with leftovers", true, Leftovers(), Nothing, [](Report *) { return LUMOInit(); }, IsOfAStart,
       true},
      {"LUMOInit behind half a trim", true, TrimUpTo(5), Nothing, [](Report *) { return LUMOInit(); },
       IsOfAStart, true},
      {"LUMOInit behind a whole trim", true, TrimUpTo(6), Nothing, [](Report *) { return LUMOInit(); },
       IsOfAStart, true},
      {"LUMOInit between two steps of its own",
       true,
       {{"LOG.old", "{\"request\":{\"type\":\"BALANCE\",\"requestId\":\"old\"}}\n"}, {"LOG.new", "{\"req"}},
       Nothing,
       [](Report *) { return LUMOInit(); },
       IsOfAStart,
       true},
      {"LUMOInit, first of all",
       true,
       {{"STATE", ""}},
       Nothing,
       [](Report *) { return LUMOInit(); },
       IsOfAStart,
       true},
      {"LUMOInitExt", true, {}, Nothing, [](Report *) { return LUMOInitExt("K2"); }, IsOfAStart, true},
      {"OpenShift", true, {}, Nothing, [](Report *) { return OpenShift("43"); }, IsZero},
      {"CloseShift", true, {}, ReadyToClose, [](Report *) { return CloseShift(); }, IsZero},
      {"LoadState", true, {}, Nothing, [](Report *) { return LoadState(); }, IsOfALoad},
      {"getOfflineState", true, {}, Nothing, [](Report *) { return getOfflineState(); }, IsZero},
      {"setOfflineState", true, {}, Nothing, [](Report *) { return setOfflineState(1); }, IsOfASave},
      {"setNeedUpdate", true, {}, Nothing, [](Report *) { return setNeedUpdate(1); }, IsOfASave},
      {"CreateTransaction",
       true,
       {},
       Nothing,
       [](Report *) { return CreateTransaction("9000000001", "7"); },
       IsZero},
      {"CloseTransaction", true, {}, OpenCardAndPay, [](Report *) { return CloseTransaction(); }, IsZero},
      {"ActivationProc",
       true,
       {},
       OpenCard,
       [](Report *) { return ActivationProc("GIFT_CARD", "B1.JSN", 0, "LOCAL", nullptr); },
       IsOfAnActivation},
      {"BalanceProc", true, {}, OpenCard, [](Report *) { return BalanceProc(); }, IsOfARecordedExchange},
      {"PaymentProc",
       true,
       {},
       OpenCard,
       [](Report *report) { return PayBill(report, "B1", "B1.JSN"); },
       IsOfAPayment},
      {"PaymentProc without an earlier RRN",
       true,
       {{"STATE", "{}"}},
       OpenCard,
       [](Report *report) { return PayBill(report, "B1", "B1.JSN"); },
       IsOfAPayment},
      {"PaymentProc that fills LOG", true, FullLog(), OpenCard,
       [](Report *report) { return PayBill(report, "B1", "B1.JSN"); }, IsOfAPayment},
      {"PaymentProc without the server", false, {}, OpenCard, SellTwice, IsOfAPayment},
      {"PaymentProc without the server and behind torn tails",
       false,
       {{"LOG", "{\"request\":{\"type\":\"BALANCE\",\"requestId\":\"log1\"}}\n{\"req"},
        {"OFFLINE", "{\"request"}},
       OpenCard,
       SellTwice,
       IsOfAPayment},
      {"PaymentAndConfirmProc",
       true,
       {},
       OpenCard,
       [](Report *report) {
         const int code = PaymentAndConfirmProc(1, "B1.JSN");
         Sell(report, "B1", code);
         return code;
       },
       IsOfAPaymentAndConfirm},
      {"PaymentConfirmProc",
       true,
       {},
       OpenCardAndPay,
       [](Report *) { return PaymentConfirmProc(getRRN()); },
       IsOfARecordedExchange},
      {"PaymentCancelProc without the server",
       false,
       {},
       OpenCardAndPay,
       [](Report *) { return PaymentCancelProc(getRRN()); },
       IsOfARecordedExchange},
      {"CashBackProc",
       true,
       {},
       OpenCardAndPay,
       [](Report *) { return CashBackProc(getRRN(), "R1.JSN"); },
       IsOfAReturn},
      {"DepositProc", true, {}, OpenCard, [](Report *) { return DepositProc(100); }, IsOfARecordedExchange},
      {"ExchangeProc", true, {}, OpenCard, [](Report *) { return ExchangeProc("t"); }, IsOfARecordedExchange},
      {"LinkCardProc",
       true,
       {},
       OpenCard,
       [](Report *) { return LinkCardProc("9000000002"); },
       IsOfARecordedExchange},
      {"CreateAmountBill",
       true,
       {},
       Nothing,
       [](Report *) { return CreateAmountBill(100, "NEW.JSN"); },
       [](int code) {
         return IsOneOf(code, {0, -105});
       }},
      {"SendOfflinePayments", true, {}, Nothing, [](Report *) { return SendOfflinePayments(); }, IsACount},
      {"SendOfflinePayments beside an interrupted one",
       true,
       {{"OFFLINE_TMP",
         "{\"request\":{\"type\":\"PAYMENT\",\"requestId\":\"1234512120400003\"},"
         "\"bill\":{\"billNum\":\"W3\"}}\n"}},
       Nothing,
       [](Report *) { return SendOfflinePayments(); },
       IsACount},
      {"SendOfflinePayments behind half a replay",
       true,
       {{"OFFLINE_TMP", WaitingPayment("2")}},
       Nothing,
       [](Report *) { return SendOfflinePayments(); },
       IsACount},
      {"SendOfflinePayments behind half a replay, without the server",
       false,
       {{"OFFLINE_TMP", WaitingPayment("2")}},
       Nothing,
       [](Report *) { return SendOfflinePayments(); },
       IsACount},
      {"SendOfflinePayments without the server",
       false,
       {},
       Nothing,
       [](Report *) { return SendOfflinePayments(); },
       IsACount},
      {"lumoOfflineCount", true, {}, Nothing, [](Report *) { return lumoOfflineCount(); }, IsACountOrACode},
      {"lumoClearOffline with another number",
       true,
       {},
       Nothing,
       [](Report *) { return lumoClearOffline(1); },
       [](int code) { return code == -202; }},
      {"GenerateSummaryReport",
       true,
       {},
       Nothing,
       [](Report *) { return GenerateSummaryReport("1", "3"); },
       IsACount},
      {"GenerateReport", true, {}, Nothing, [](Report *) { return GenerateReport("1", "3"); }, IsACount},
  };
}

}  // namespace

const std::vector<Operation> &Operations() {
  static const std::vector<Operation> operations = MakeOperations();
  return operations;
}

std::string Bill(const std::string &number) {
  return "{\"totalSum\":300,\"orderLen\":2,\"billNum\":\"" + number +
         "\",\"billDate\":\"d\",\"partnerFee\":0,\"goodList\":{\"good\":[{\"title\":\"t\",\"productCode\":"
         "\"1\","
         "\"positionCost\":100,\"orderNum\":1,\"cnt\":1},{\"title\":\"u\",\"productCode\":\"2\","
         "\"positionCost\":200,\"orderNum\":2,\"cnt\":1}]}}";
}

Files TerminalFiles(const std::string &server_address) {
  return {
      {"CONFIG", "{\"terminalId\":\"12345\",\"protocolVersion\":\"1.0\",\"serverAddr\":\"" + server_address +
                     "\",\"timeout\":5,\"offlineMode\":1,\"localBonusOffline\":3,\"globalBonusOffline\":2,"
                     "\"orgFeeOffline\":1,\"logSize\":9}"},
      {"STATE",
       "{\"reqId\":\"1234512120500007\",\"shiftId\":\"42\",\"offline\":0,\"shiftState\":0,\"update\":0}"},
      {"LOG",
       "{\"request\":{\"type\":\"BALANCE\",\"requestId\":\"log1\",\"requestDate\":\"2\"}}\n"
       "{\"request\":{\"type\":\"DEPOSIT\",\"requestId\":\"log2\",\"requestDate\":\"2\"},\"deposit\":{"
       "\"amount\":1}}\n"},
      {"OFFLINE", WaitingPayment("1") + WaitingPayment("2")},
      {"B1.JSN", Bill("B1")},
      {"B2.JSN", Bill("B2")},
      {"N1.JSN", Bill("N1")},
      {"R1.JSN", "{\"cashBackGood\":[{\"pos\":1,\"sum\":100,\"cnt\":1}]}"},
  };
}

int CarryOn() {
  if (LUMOInit() != 0) return 1;
  if (CreateTransaction("9000000001", "7") != 0) return 2;
  // A number that could not be kept in STATE is used again, and the server refuses it once.
  if (PaymentProc(0, "N1.JSN") != 0 && PaymentProc(0, "N1.JSN") != 0) return 3;
  if (CloseTransaction() != 0) return 4;
  if (SendOfflinePayments() < 0) return 5;
  return GenerateSummaryReport("1", "3") < 0 ? 6 : 0;
}

}  // namespace faults
