// record/transaction.h: the record of one card transaction: what is asked, what was answered, and the
// receipt. All texts of the record are its own copies; nothing is freed before the record is.
#pragma once

#include <cstddef>
#include <cstdint>

#include "foundation/scoped.h"
#include "record/enumerations.h"

namespace lumo {

struct ReceiptBuffer;
struct TransactionMemory;

constexpr uint32_t kDateBytes = 32;

struct RequestBlock {
  const char *ver;
  const char *terminalId;
  const char *employeeId;
  const char *cardNum;
  const char *shiftId;
  RequestType type;
  const char *requestId;  // the RRN; "0000000000000000" for the service requests
  char requestDate[kDateBytes];
  bool isOffline;  // the operation was completed without the server
};

struct ResponseBlock {
  const char *ver;
  const char *requestId;  // null when the answer holds none
  const char *responseId;
  char responseDate[kDateBytes];
  RequestState requestState;
  RequestStateCode requestStateCode;
  const char *message;
  bool isNeedUpdate;
};

struct BalanceAccount {
  AccountType accountType;
  int32_t availableAmount;
  int32_t amount;
};

struct BalanceBlock {
  int32_t count;
  BalanceAccount *accounts;
};

struct Bonus {
  int32_t spend;
  int32_t earned;
  int32_t organizerFee;
  AccountType accountType;
};

struct Good {
  const char *title;
  const char *productCode;
  int32_t positionCost;
  int32_t orderNum;
  int32_t cnt;
  int32_t bonusCount;
  Bonus *bonuses;
};

struct BillBlock {
  Good *goods;
  int32_t goodCount;
  int32_t totalSum;
  int32_t orderLen;
  const char *billNum;
  int32_t spendAmount;  // bonuses the customer asks to spend; never read from a file
  char billDate[kDateBytes];
  int32_t partnerFee;
};

struct CashBackGood {
  int32_t pos;
  int32_t sum;
  int32_t cnt;
};

struct CashBackBlock {
  CashBackType cashBackType;
  const char *requestId;  // the RRN of the payment whose goods come back
  int32_t goodCount;
  CashBackGood *goods;
};

struct PaymentConfirmBlock {
  bool isConfirm;
  const char *requestId;  // the RRN of the payment
};

struct ActivationBlock {
  int32_t amount;
  AccountType type;
  ActivationType activationType;
  const char *referParentCardNum;
};

struct ActivationResultBlock {
  int32_t activationSum;
  AccountType activationSumType;
  int32_t referralSum;
  AccountType referralSumType;
  int32_t giftSum;
  AccountType giftSumType;
};

// The operations that succeeded on a record, one bit each.
enum CompletedOperation : uint32_t {
  COMPLETED_PAYMENT = 0x01,
  COMPLETED_CONFIRM = 0x02,
  COMPLETED_BALANCE = 0x04,
  COMPLETED_CASHBACK = 0x08,
  COMPLETED_ACTIVATION = 0x10,
  COMPLETED_DEPOSIT = 0x20,
  COMPLETED_LINK = 0x40,
  COMPLETED_EXCHANGE = 0x80,
};

struct Transaction {
  RequestBlock request;
  ResponseBlock response;
  BalanceBlock balance;
  BillBlock bill;
  CashBackBlock cashBack;
  int32_t returnedSum;  // cashBackResult
  const char *linkedCardNum;
  int32_t depositAmount;
  const char *exchangeToken;
  PaymentConfirmBlock paymentConfirm;
  ActivationBlock activation;
  ActivationResultBlock activationResult;
  const char *rrNumber;  // last RRN
  const char *adText;

  const char *serverAddr;
  const char *serverAltAddr;
  int32_t timeout;  // seconds
  int32_t sslMode;

  uint32_t completedOperations;  // CompletedOperation bits
  ReceiptBuffer *header;
  ReceiptBuffer *body;
  ReceiptBuffer *footer;
  TransactionMemory *memory;  // everything the record owns beyond itself and its receipts
};

Transaction *TransactionCreate();               // connection settings copied, receipts empty, all else zero
int TransactionFree(Transaction *transaction);  // null is allowed; returns 0
using ScopedTransaction = Scoped<Transaction, TransactionFree>;

// Zero-filled memory that lives as long as the record.
void *TransactionAllocate(Transaction *transaction, size_t size);

// Stores a copy of `source` in `field` and returns it. A null source stores null and traces an error, which
// is no failure.
const char *TransactionCopyText(Transaction *transaction, const char **field, const char *source);

bool IsOffline(const Transaction *transaction);

// True, with the pointer's error line in the trace, when there is no record.
bool TraceIfNull(const Transaction *transaction);

}  // namespace lumo
