// protocol/transaction_request_json.h: a transaction as JSON: the request for the server and the parts it
// shares with the journal record. A part has one form wherever it is written.
#pragma once

#include <cstdint>

#include "json/json_printer.h"
#include "record/enumerations.h"

namespace lumo {

struct ActivationBlock;
struct ActivationResultBlock;
struct BillBlock;
struct Bonus;
struct CashBackBlock;
struct CashBackGood;
struct Good;
struct PaymentConfirmBlock;
struct String;
struct Transaction;

int CreateOperationRequest(const Transaction *transaction, String *output);  // 0 or ERR_JSON_PRINTER_INIT

// The empty text for a type outside the table.
const char *RequestRootName(RequestType type);
const char *WebMethodName(RequestType type);

// Write, each with its key, the parts that follow "request" in the operation's request and in its journal
// record. False, and nothing written, for a type outside the table.
bool WriteOperationRequestParts(JsonPrinter *printer, const Transaction *transaction);
bool WriteOperationRecordParts(JsonPrinter *printer, const Transaction *transaction);

int WriteRequestPart(JsonPrinter *printer, const Transaction *transaction);
int WriteActivationPart(JsonPrinter *printer, const ActivationBlock *activation);
int WriteActivationResultPart(JsonPrinter *printer, const ActivationResultBlock *result);
int WriteBillPart(JsonPrinter *printer, const BillBlock *bill);
int WriteGoodPart(JsonPrinter *printer, const Good *good);
int WriteBonusPart(JsonPrinter *printer, const Bonus *bonus);
int WritePaymentConfirmPart(JsonPrinter *printer, const PaymentConfirmBlock *confirm);
int WriteDepositPart(JsonPrinter *printer, const Transaction *transaction);
int WriteCashBackPart(JsonPrinter *printer, const CashBackBlock *cash_back);
int WriteCashBackGoodPart(JsonPrinter *printer, const CashBackGood *good);
int WriteLinkedCardPart(JsonPrinter *printer, const Transaction *transaction);
int WriteCardExchangePart(JsonPrinter *printer, const Transaction *transaction);

}  // namespace lumo
