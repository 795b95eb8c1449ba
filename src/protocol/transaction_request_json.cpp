#include "protocol/transaction_request_json.h"

#include <cstddef>

#include "foundation/lumostring.h"
#include "foundation/result_codes.h"
#include "foundation/trace.h"
#include "json/lumojson.h"
#include "protocol/part_members.h"
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
constexpr PartWriter kLinkedCard = {
    "linkedCard", [](Printer printer, Record record) { return WriteLinkedCardPart(printer, record); }};
constexpr PartWriter kCardExchange = {
    "cardExchange", [](Printer printer, Record record) { return WriteCardExchangePart(printer, record); }};
constexpr PartWriter kDeposit = {
    "deposit", [](Printer printer, Record record) { return WriteDepositPart(printer, record); }};

// What an operation looks like in documents, by its RequestType.
struct OperationForm {
  const char *requestName;
  const char *webMethod;
  const PartWriter *requestPart;     // after "request"; null for none
  const PartWriter *recordParts[2];  // after "request" in the journal record
};

// Note: of a return, a link and an exchange the journal keeps the request part alone.
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

const OperationForm *FindOperation(RequestType type) {
  return type >= 0 && type < REQUEST_UNKNOWN ? &kOperations[type] : nullptr;
}

void Begin(JsonPrinter *printer, JsonEvent structure) {
  JsonPrinterRaw(printer, structure, nullptr, 0);
}

int End(JsonPrinter *printer, JsonEvent structure) {
  JsonPrinterRaw(printer, structure, nullptr, 0);
  return 0;
}

const char *EnumerationText(MemberField field, MemberKind kind) {
  switch (kind) {  // GCOVR_EXCL_BR_LINE: no other enumeration is written from a list
    case MemberKind::kActivationType:
      return ActivationTypeToString(*field.activationType);
    case MemberKind::kRequestType:
      return RequestTypeToString(*field.requestType);
    case MemberKind::kAccountType:
      return AccountTypeToString(*field.accountType);
    default:      // GCOVR_EXCL_LINE: as above
      return "";  // GCOVR_EXCL_LINE: as above
  }
}

void WriteValue(JsonPrinter *printer, const MemberName &member, MemberField field) {
  switch (member.kind) {
    case MemberKind::kText:
      if (*field.text != nullptr || !member.isOptional) WriteStringMember(printer, member.key, *field.text);
      break;
    case MemberKind::kDate:
      WriteStringMember(printer, member.key, *field.date);
      break;
    case MemberKind::kNumber:
      WriteIntMember(printer, member.key, *field.number);
      break;
    case MemberKind::kWrittenFlag:
      WriteBoolMember(printer, member.key, *field.number != 0);
      break;
    case MemberKind::kFlag:
      WriteBoolMember(printer, member.key, *field.flag);
      break;
    default:
      WriteStringMember(printer, member.key, EnumerationText(field, member.kind));
      break;
  }
}

template <typename Block, size_t kCount>
void WriteMembers(JsonPrinter *printer, const Block &block, const Member<Block> (&members)[kCount]) {
  for (const Member<Block> &member : members) {
    // A field is only read here.
    WriteValue(printer, member, FieldOf(const_cast<Block *>(&block), member));
  }
}

// The whole part, when it has no list.
template <typename Block, size_t kCount>
int WriteObject(JsonPrinter *printer, const Block &block, const Member<Block> (&members)[kCount]) {
  Begin(printer, JSON_OBJECT_BEGIN);
  WriteMembers(printer, block, members);
  return End(printer, JSON_OBJECT_END);
}

void WritePart(JsonPrinter *printer, const Transaction *transaction, const PartWriter *part) {
  if (part != nullptr) {
    WriteKey(printer, part->key);
    part->write(printer, transaction);
  }
}

}  // namespace

int CreateOperationRequest(const Transaction *transaction, String *output) {
  Trace("CreateOperationRequest\n");
  JsonPrinter printer;
  const int result = JsonPrinterInit(&printer, output != nullptr ? StringSink : nullptr, output);
  if (result != 0) {
    TraceError("Create operation request JSON printer init failed [%d]", result);
    return ERR_JSON_PRINTER_INIT;
  }
  Begin(&printer, JSON_OBJECT_BEGIN);
  WriteKey(&printer, RequestRootName(transaction->request.type));
  Begin(&printer, JSON_OBJECT_BEGIN);
  WriteKey(&printer, "request");
  WriteRequestPart(&printer, transaction);
  if (!WriteOperationRequestParts(&printer, transaction)) Fatal("Unhandled request type!", LUMO_HERE);
  End(&printer, JSON_OBJECT_END);
  End(&printer, JSON_OBJECT_END);
  JsonPrinterFree(&printer);
  return 0;
}

const char *RequestRootName(RequestType type) {
  const OperationForm *operation = FindOperation(type);
  return operation != nullptr ? operation->requestName : "";
}

const char *WebMethodName(RequestType type) {
  const OperationForm *operation = FindOperation(type);
  return operation != nullptr ? operation->webMethod : "";
}

bool WriteOperationRequestParts(JsonPrinter *printer, const Transaction *transaction) {
  const OperationForm *operation = FindOperation(transaction->request.type);
  if (operation == nullptr) return false;
  WritePart(printer, transaction, operation->requestPart);
  return true;
}

bool WriteOperationRecordParts(JsonPrinter *printer, const Transaction *transaction) {
  const OperationForm *operation = FindOperation(transaction->request.type);
  if (operation == nullptr) return false;
  for (const PartWriter *part : operation->recordParts) WritePart(printer, transaction, part);
  return true;
}

int WriteRequestPart(JsonPrinter *printer, const Transaction *transaction) {
  return WriteObject(printer, transaction->request, kRequestMembers);
}

int WriteActivationPart(JsonPrinter *printer, const ActivationBlock *activation) {
  return WriteObject(printer, *activation, kActivationMembers);
}

int WriteActivationResultPart(JsonPrinter *printer, const ActivationResultBlock *result) {
  return WriteObject(printer, *result, kActivationResultMembers);
}

int WriteBillPart(JsonPrinter *printer, const BillBlock *bill) {
  Begin(printer, JSON_OBJECT_BEGIN);
  WriteMembers(printer, *bill, kBillMembers);
  if (bill->goodCount > 0) {
    WriteKey(printer, "goodList");
    Begin(printer, JSON_OBJECT_BEGIN);
    WriteKey(printer, "good");
    Begin(printer, JSON_ARRAY_BEGIN);
    for (int32_t i = 0; i < bill->goodCount; ++i) WriteGoodPart(printer, &bill->goods[i]);
    End(printer, JSON_ARRAY_END);
    End(printer, JSON_OBJECT_END);
  }
  return End(printer, JSON_OBJECT_END);
}

int WriteGoodPart(JsonPrinter *printer, const Good *good) {
  Begin(printer, JSON_OBJECT_BEGIN);
  WriteMembers(printer, *good, kGoodMembers);
  if (good->bonusCount > 0) {
    WriteKey(printer, "bonus");
    Begin(printer, JSON_ARRAY_BEGIN);
    for (int32_t i = 0; i < good->bonusCount; ++i) WriteBonusPart(printer, &good->bonuses[i]);
    End(printer, JSON_ARRAY_END);
  }
  return End(printer, JSON_OBJECT_END);
}

int WriteBonusPart(JsonPrinter *printer, const Bonus *bonus) {
  return WriteObject(printer, *bonus, kBonusMembers);
}

int WritePaymentConfirmPart(JsonPrinter *printer, const PaymentConfirmBlock *confirm) {
  return WriteObject(printer, *confirm, kPaymentConfirmMembers);
}

int WriteDepositPart(JsonPrinter *printer, const Transaction *transaction) {
  return WriteObject(printer, *transaction, kDepositMembers);
}

int WriteCashBackPart(JsonPrinter *printer, const CashBackBlock *cash_back) {
  Begin(printer, JSON_OBJECT_BEGIN);
  // In another order than they are read.
  WriteStringMember(printer, "requestId", cash_back->requestId);
  WriteStringMember(printer, "cashBackType", CashBackTypeToString(cash_back->cashBackType));
  if (cash_back->cashBackType == CASHBACK_SEQ && cash_back->goodCount > 0) {
    WriteKey(printer, "cashBackGood");
    Begin(printer, JSON_ARRAY_BEGIN);
    for (int32_t i = 0; i < cash_back->goodCount; ++i) WriteCashBackGoodPart(printer, &cash_back->goods[i]);
    End(printer, JSON_ARRAY_END);
  }
  return End(printer, JSON_OBJECT_END);
}

int WriteCashBackGoodPart(JsonPrinter *printer, const CashBackGood *good) {
  return WriteObject(printer, *good, kCashBackGoodMembers);
}

int WriteLinkedCardPart(JsonPrinter *printer, const Transaction *transaction) {
  return WriteObject(printer, *transaction, kLinkedCardMembers);
}

int WriteCardExchangePart(JsonPrinter *printer, const Transaction *transaction) {
  return WriteObject(printer, *transaction, kCardExchangeMembers);
}

}  // namespace lumo
