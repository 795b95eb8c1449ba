#include "record/enumerations.h"

#include <cstddef>
#include <cstring>

#include "foundation/trace.h"

namespace lumo {
namespace {

// The tables are the protocol: values are kept in records and compared by number, so order and letters never
// change.
constexpr const char *kActivationTypes[] = {"SIMPLE_ACTIVATION", "GIFT_CARD", "REFER_A_FRIEND"};

constexpr const char *kRequestTypes[] = {
    "ACTIVATION",
    "PAYMENT",
    "PAYMENT_AND_CONFIRM",
    "PAYMENT_CONFIRM",
    "BALANCE",
    "CASHBACK",
    "LINK",
    "EXCHANGE",
    "DEPOSIT",
    "AD",
    "LAST_RRN",
};

constexpr const char *kRequestStates[] = {"OK", "SUCCESS", "PROCESSED", "ERROR", "CANCELED"};

constexpr const char *kRequestStateCodes[] = {
    "OK",
    "INTERNAL_ERROR",
    "REQUEST_NOT_FOUND",
    "REQUEST_PARSING_ERROR",
    "UNSUPPORTED_PROTOCOL_VERSION",
    "INCORRECT_REQUEST_PARAM",
    "UNKNOWN_TERMINAL",
    "LOCKED_TERMINAL",
    "ACTIVATION_REQUIRED",
    "LOCKED_CARD",
    "CARD_NOT_FOUND",
    "CARD_NUMBER_INCORRECT",
    "ALREADY_ACTIVATED",
    "ACTIVATION_SUM_TYPE_REQUIRED",
    "ACTIVATION_BLOCK_REQUIRED",
    "REFERRAL_NOT_FOUND",
    "REFERRAL_LIMIT_REACHED",
    "INCORRECT_BILL",
    "UNPROCESSED_BILL",
    "BILL_NOT_FOUND",
    "UNKNOWN_USER",
    "INCORRECT_SUM",
    "UNKNOWN_CASH_BACK_TYPE",
    "INCORRECT_TOKEN",
    "RETAIL_POINT_CONFIG_ERROR",
    "REQUEST_ID_EMPTY",
    "INCORRECT_REQUEST_ID",
    "BILL_INCORRECT_STATE",
    "UPDATE_REQUIRED",
    "ZERO_ACTIVATION_ERROR",
    "INCORRECT_REQUEST",
    "DUPLICATE_REQUEST_ID",
    "SMS_AUTH_FAILED",
};

constexpr const char *kAccountTypes[] = {"GLOBAL", "LOCAL", "DISCOUNT"};
constexpr const char *kCashBackTypes[] = {"FULL", "SEQ"};

template <size_t kCount>
constexpr int32_t UnknownValue(const char *const (&)[kCount]) {
  return static_cast<int32_t>(kCount);
}

static_assert(UnknownValue(kActivationTypes) == ACTIVATION_UNKNOWN);
static_assert(UnknownValue(kRequestTypes) == REQUEST_UNKNOWN);
static_assert(UnknownValue(kRequestStates) == STATE_UNKNOWN);
static_assert(UnknownValue(kRequestStateCodes) == kStateCodeUnknown);
static_assert(UnknownValue(kAccountTypes) == ACCOUNT_UNKNOWN);
static_assert(UnknownValue(kCashBackTypes) == CASHBACK_UNKNOWN);

template <size_t kCount>
const char *TextAt(const char *const (&table)[kCount], int32_t value) {
  return value >= 0 && value < UnknownValue(table) ? table[value] : "";
}

template <size_t kCount>
int32_t Find(const char *const (&table)[kCount], const char *text) {
  int32_t value = 0;
  while (value < UnknownValue(table) && (text == nullptr || std::strcmp(table[value], text) != 0)) {
    ++value;
  }
  return value;
}

template <size_t kCount>
int32_t FindOrTrace(const char *const (&table)[kCount], const char *name, const char *text) {
  const int32_t value = Find(table, text);
  if (value == UnknownValue(table)) {
    // The spelling is what service staff search for.
    TraceError("Unknown enumiratoin for %s [%s]\n", name, text);
  }
  return value;
}

}  // namespace

const char *ActivationTypeToString(int32_t value) {
  return TextAt(kActivationTypes, value);
}
const char *RequestTypeToString(int32_t value) {
  return TextAt(kRequestTypes, value);
}
const char *RequestStateToString(int32_t value) {
  return TextAt(kRequestStates, value);
}
const char *RequestStateCodeToString(int32_t value) {
  if (value == kStateCodeUnknown) {
    TraceError("Unsupported Request State Code\n");
    return nullptr;
  }
  return TextAt(kRequestStateCodes, value);
}
const char *AccountTypeToString(int32_t value) {
  return TextAt(kAccountTypes, value);
}
const char *CashBackTypeToString(int32_t value) {
  return TextAt(kCashBackTypes, value);
}

int32_t ActivationTypeFromString(const char *text) {
  return FindOrTrace(kActivationTypes, "ActivationType", text);
}
int32_t RequestTypeFromString(const char *text) {
  return FindOrTrace(kRequestTypes, "RequestType", text);
}
int32_t RequestStateFromString(const char *text) {
  return FindOrTrace(kRequestStates, "RequestState", text);
}
int32_t RequestStateCodeFromString(const char *text) {
  return FindOrTrace(kRequestStateCodes, "RequestStateCode", text);
}
int32_t AccountTypeFromString(const char *text) {
  return FindOrTrace(kAccountTypes, "AccountType", text);
}
int32_t CashBackTypeFromString(const char *text) {
  return FindOrTrace(kCashBackTypes, "CashBackType", text);
}

int32_t FindActivationType(const char *text) {
  return Find(kActivationTypes, text);
}

}  // namespace lumo
