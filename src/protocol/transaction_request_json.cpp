#include "protocol/transaction_request_json.h"

#include <cstddef>

#include "foundation/lumostring.h"
#include "foundation/trace.h"
#include "json/lumojson.h"
#include "lumo.h"
#include "record/enumerations.h"
#include "record/transaction.h"

namespace lumo {
namespace {

// A part as it stands in a document: its key and what writes its value.
struct PartWriter {
  const char *key;
  int (*write)(JsonPrinter *printer, const Transaction *transaction);
};

using Printer = JsonPrinter *;
using Record = const Transaction *;

constexpr PartWriter kActivation = {"activation", [](Printer printer, Record record) {
                                      return WriteActivationPart(printer, &record->activation);
                                    }};
constexpr PartWriter kActivationResult = {"activationResult", [](Printer printer, Record record) {
                                            return WriteActivationResultPart(printer,
                                                                             &record->activationResult);
                                          }};
constexpr PartWriter kBill = {
    "bill", [](Printer printer, Record record) { return WriteBillPart(printer, &record->bill); }};
constexpr PartWriter kPaymentConfirm = {"paymentConfirm", [](Printer printer, Record record) {
                                          return WritePaymentConfirmPart(printer, &record->paymentConfirm);
                                        }};
constexpr PartWriter kCashBack = {
    "cashBack", [](Printer printer, Record record) { return WriteCashBackPart(printer, &record->cashBack); }};
constexpr PartWriter kLinkedCard = {"linkedCard", [](Printer printer, Record record) {
                                      return WriteLinkedCardPart(printer, record->linkedCardNum);
                                    }};
constexpr PartWriter kCardExchange = {"cardExchange", [](Printer printer, Record record) {
                                        return WriteCardExchangePart(printer, record->exchangeToken);
                                      }};
constexpr PartWriter kDeposit = {"deposit", [](Printer printer, Record record) {
                                   return WriteDepositPart(printer, record->depositAmount);
                                 }};

// What an operation looks like in documents, by its RequestType.
struct OperationForm {
  const char *requestName;
  const char *webMethod;
  const PartWriter *requestPart;     // after "request"; null for none
  const PartWriter *recordParts[2];  // after "request" in the journal record
};

// Deliberate: of a return, a link and an exchange the journal keeps the request part alone.
constexpr OperationForm kOperations[] = {
    {"cardActivationRequest", "activate", &kActivation, {&kActivation, &kActivationResult}},
    {"putPaymentRequest", "payment", &kBill, {&kBill, nullptr}},
    {"putPaymentAndConfirmRequest", "paymentAndConfirm", &kBill, {&kBill, nullptr}},
    {"putPaymentConfirmRequest", "confirm", &kPaymentConfirm, {&kPaymentConfirm, nullptr}},
    {"getBalanceRequest", "balance", nullptr, {nullptr, nullptr}},
    {"putCashBackRequest", "cashBack", &kCashBack, {nullptr, nullptr}},
    {"linkedCardRequest", "linkCard", &kLinkedCard, {nullptr, nullptr}},
    {"cardExchangeRequest", "cardExchange", &kCardExchange, {nullptr, nullptr}},
    {"putDepositRequest", "deposit", &kDeposit, {&kDeposit, nullptr}},
    {"getAdRequest", "ad", nullptr, {nullptr, nullptr}},
    {"getLastRrnRequest", "rrn", nullptr, {nullptr, nullptr}},
};
static_assert(sizeof kOperations / sizeof kOperations[0] == REQUEST_UNKNOWN);

const OperationForm *FindOperation(int32_t type) {
  return type >= 0 && type < REQUEST_UNKNOWN ? &kOperations[type] : nullptr;
}

void Begin(JsonPrinter *printer, JsonEvent structure) {
  JsonPrinterRaw(printer, structure, nullptr, 0);
}

int End(JsonPrinter *printer, JsonEvent structure) {
  JsonPrinterRaw(printer, structure, nullptr, 0);
  return 0;
}

void WritePart(JsonPrinter *printer, const Transaction *transaction, const PartWriter *part) {
  if (part != nullptr) {
    WriteKey(printer, part->key);
    part->write(printer, transaction);
  }
}

}  // namespace

void AppendToString(void *string, const char *text, uint32_t length) {
  StringAppendN(static_cast<String *>(string), text, length);
}

int CreateOperationRequest(const Transaction *transaction, String *output) {
  Trace("CreateOperationRequest\n");
  JsonPrinter printer;
  const int result = JsonPrinterInit(&printer, output != nullptr ? AppendToString : nullptr, output);
  if (result != 0) {
    TraceError("Create operation request JSON printer init failed [%d]", result);
    return ERR_JSON_PRINTER_INIT;
  }
  Begin(&printer, JSON_OBJECT_BEGIN);
  WriteKey(&printer, RequestRootName(transaction->request.type));
  Begin(&printer, JSON_OBJECT_BEGIN);
  WriteKey(&printer, "request");
  WriteRequestPart(&printer, transaction);
  if (!WriteOperationRequestParts(&printer, transaction)) {
    Fatal("Unhandled request type!", LUMO_HERE);
  }
  End(&printer, JSON_OBJECT_END);
  End(&printer, JSON_OBJECT_END);
  JsonPrinterFree(&printer);
  return 0;
}

const char *RequestRootName(int32_t type) {
  const OperationForm *operation = FindOperation(type);
  return operation != nullptr ? operation->requestName : "";
}

const char *WebMethodName(int32_t type) {
  const OperationForm *operation = FindOperation(type);
  return operation != nullptr ? operation->webMethod : "";
}

bool WriteOperationRequestParts(JsonPrinter *printer, const Transaction *transaction) {
  const OperationForm *operation = FindOperation(transaction->request.type);
  if (operation == nullptr) {
    return false;
  }
  WritePart(printer, transaction, operation->requestPart);
  return true;
}

bool WriteOperationRecordParts(JsonPrinter *printer, const Transaction *transaction) {
  const OperationForm *operation = FindOperation(transaction->request.type);
  if (operation == nullptr) {
    return false;
  }
  for (const PartWriter *part : operation->recordParts) {
    WritePart(printer, transaction, part);
  }
  return true;
}

int WriteRequestPart(JsonPrinter *printer, const Transaction *transaction) {
  const RequestBlock &request = transaction->request;
  Begin(printer, JSON_OBJECT_BEGIN);
  WriteStringMember(printer, "ver", request.ver);
  WriteStringMember(printer, "type", RequestTypeToString(request.type));
  WriteStringMember(printer, "requestId", request.requestId);
  WriteStringMember(printer, "terminalId", request.terminalId);
  WriteStringMember(printer, "requestDate", request.requestDate);
  WriteStringMember(printer, "employeeId", request.employeeId);
  WriteStringMember(printer, "cardNum", request.cardNum);
  WriteBoolMember(printer, "isOffline", isOffline(transaction));
  WriteStringMember(printer, "shiftId", request.shiftId);
  return End(printer, JSON_OBJECT_END);
}

int WriteActivationPart(JsonPrinter *printer, const ActivationBlock *activation) {
  Begin(printer, JSON_OBJECT_BEGIN);
  WriteStringMember(printer, "activationType", ActivationTypeToString(activation->activationType));
  WriteIntMember(printer, "amount", activation->amount);
  WriteStringMember(printer, "type", AccountTypeToString(activation->type));
  if (activation->referParentCardNum != nullptr) {
    WriteStringMember(printer, "referParentCardNum", activation->referParentCardNum);
  }
  return End(printer, JSON_OBJECT_END);
}

int WriteActivationResultPart(JsonPrinter *printer, const ActivationResultBlock *result) {
  Begin(printer, JSON_OBJECT_BEGIN);
  WriteIntMember(printer, "activationSum", result->activationSum);
  WriteStringMember(printer, "activationSumType", AccountTypeToString(result->activationSumType));
  WriteIntMember(printer, "referralSum", result->referralSum);
  WriteStringMember(printer, "referralSumType", AccountTypeToString(result->referralSumType));
  WriteIntMember(printer, "giftSum", result->giftSum);
  WriteStringMember(printer, "giftSumType", AccountTypeToString(result->giftSumType));
  return End(printer, JSON_OBJECT_END);
}

int WriteBillPart(JsonPrinter *printer, const BillBlock *bill) {
  Begin(printer, JSON_OBJECT_BEGIN);
  WriteIntMember(printer, "totalSum", bill->totalSum);
  WriteBoolMember(printer, "spendBonus", bill->spendAmount);
  WriteIntMember(printer, "orderLen", bill->orderLen);
  WriteStringMember(printer, "billNum", bill->billNum);
  WriteStringMember(printer, "billDate", bill->billDate);
  WriteIntMember(printer, "partnerFee", bill->partnerFee);
  if (bill->goodCount > 0) {
    WriteKey(printer, "goodList");
    Begin(printer, JSON_OBJECT_BEGIN);
    WriteKey(printer, "good");
    Begin(printer, JSON_ARRAY_BEGIN);
    for (int32_t i = 0; i < bill->goodCount; ++i) {
      WriteGoodPart(printer, &bill->goods[i]);
    }
    End(printer, JSON_ARRAY_END);
    End(printer, JSON_OBJECT_END);
  }
  return End(printer, JSON_OBJECT_END);
}

int WriteGoodPart(JsonPrinter *printer, const Good *good) {
  Begin(printer, JSON_OBJECT_BEGIN);
  WriteStringMember(printer, "title", good->title);
  WriteStringMember(printer, "productCode", good->productCode);
  WriteIntMember(printer, "positionCost", good->positionCost);
  WriteIntMember(printer, "orderNum", good->orderNum);
  WriteIntMember(printer, "cnt", good->cnt);
  if (good->bonusCount > 0) {
    WriteKey(printer, "bonus");
    Begin(printer, JSON_ARRAY_BEGIN);
    for (int32_t i = 0; i < good->bonusCount; ++i) {
      WriteBonusPart(printer, &good->bonuses[i]);
    }
    End(printer, JSON_ARRAY_END);
  }
  return End(printer, JSON_OBJECT_END);
}

int WriteBonusPart(JsonPrinter *printer, const Bonus *bonus) {
  Begin(printer, JSON_OBJECT_BEGIN);
  WriteIntMember(printer, "earned", bonus->earned);
  WriteIntMember(printer, "spend", bonus->spend);
  WriteIntMember(printer, "organizerFee", bonus->organizerFee);
  WriteStringMember(printer, "accountType", AccountTypeToString(bonus->accountType));
  return End(printer, JSON_OBJECT_END);
}

int WritePaymentConfirmPart(JsonPrinter *printer, const PaymentConfirmBlock *confirm) {
  Begin(printer, JSON_OBJECT_BEGIN);
  WriteStringMember(printer, "requestId", confirm->requestId);
  WriteBoolMember(printer, "isConfirm", confirm->isConfirm);
  return End(printer, JSON_OBJECT_END);
}

int WriteDepositPart(JsonPrinter *printer, int32_t amount) {
  Begin(printer, JSON_OBJECT_BEGIN);
  WriteIntMember(printer, "amount", amount);
  return End(printer, JSON_OBJECT_END);
}

int WriteCashBackPart(JsonPrinter *printer, const CashBackBlock *cash_back) {
  Begin(printer, JSON_OBJECT_BEGIN);
  WriteStringMember(printer, "requestId", cash_back->requestId);
  WriteStringMember(printer, "cashBackType", CashBackTypeToString(cash_back->cashBackType));
  if (cash_back->cashBackType == CASHBACK_SEQ && cash_back->goodCount > 0) {
    WriteKey(printer, "cashBackGood");
    Begin(printer, JSON_ARRAY_BEGIN);
    for (int32_t i = 0; i < cash_back->goodCount; ++i) {
      WriteCashBackGoodPart(printer, &cash_back->goods[i]);
    }
    End(printer, JSON_ARRAY_END);
  }
  return End(printer, JSON_OBJECT_END);
}

int WriteCashBackGoodPart(JsonPrinter *printer, const CashBackGood *good) {
  Begin(printer, JSON_OBJECT_BEGIN);
  WriteIntMember(printer, "pos", good->pos);
  WriteIntMember(printer, "sum", good->sum);
  WriteIntMember(printer, "cnt", good->cnt);
  return End(printer, JSON_OBJECT_END);
}

int WriteLinkedCardPart(JsonPrinter *printer, const char *linked_card_num) {
  Begin(printer, JSON_OBJECT_BEGIN);
  WriteStringMember(printer, "linkedCardNum", linked_card_num);
  return End(printer, JSON_OBJECT_END);
}

int WriteCardExchangePart(JsonPrinter *printer, const char *token) {
  Begin(printer, JSON_OBJECT_BEGIN);
  WriteStringMember(printer, "token", token);
  return End(printer, JSON_OBJECT_END);
}

}  // namespace lumo
