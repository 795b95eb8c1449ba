// protocol/transaction_json.h: JSON into a transaction, part by part, as answers, journal records and the
// register's files hold them.
#pragma once

#include <cstdint>

#include "json/lumojson.h"

namespace lumo {

struct Transaction;

constexpr uint32_t kLongestName = 100;  // of an answer and of a part

// The parts of an answer or record, as bits.
enum PartBit : uint32_t {
  PART_RESPONSE = 0x0001,
  PART_REQUEST = 0x0002,
  PART_BILL = 0x0004,
  PART_PAYMENT_CONFIRM = 0x0008,
  PART_BALANCE = 0x0010,
  PART_CASH_BACK_RESULT = 0x0040,
  PART_ACTIVATION = 0x0080,
  PART_ACTIVATION_RESULT = 0x0100,
  PART_DEPOSIT = 0x0200,
  PART_CARD_EXCHANGE = 0x0400,
  PART_RRN = 0x1000,
  PART_AD = 0x2000,
};

enum class PartSource {
  kRecord,  // of a journal: everything is taken as it stands
  kAnswer,  // an unknown type of operation or of activation is traced and not taken
};

// Loads the parts that are members of the object; returns their bits. A key longer than kLongestName ends the
// walk, and the result is 0.
uint32_t LoadParts(Transaction *transaction, const JsonNode *node, PartSource source);

// What a register's own bill says of its goods' bonuses does not count: only the server gives them.
enum class GoodBonuses { kLoad, kPassOver };

// Loaders, one a part. Each returns 0; LoadBill and LoadCashBack also ERR_RESPONSE_STRUCTURE.
int LoadRequest(Transaction *transaction, const JsonNode *node);
int LoadResponse(Transaction *transaction, const JsonNode *node);
int LoadBill(Transaction *transaction, const JsonNode *node, GoodBonuses bonuses);
int LoadPaymentConfirm(Transaction *transaction, const JsonNode *node);
int LoadBalance(Transaction *transaction, const JsonNode *node);
int LoadCashBack(Transaction *transaction, const JsonNode *node);
int LoadCashBackResult(Transaction *transaction, const JsonNode *node);
int LoadActivation(Transaction *transaction, const JsonNode *node);
int LoadActivationResult(Transaction *transaction, const JsonNode *node);
int LoadDeposit(Transaction *transaction, const JsonNode *node);
int LoadCardExchange(Transaction *transaction, const JsonNode *node);
int LoadLastRrn(Transaction *transaction, const JsonNode *node);
int LoadAdvertising(Transaction *transaction, const JsonNode *node);

}  // namespace lumo
