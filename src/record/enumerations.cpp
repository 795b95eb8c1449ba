#include "record/enumerations.h"

#include <cstddef>
#include <cstring>

#include "foundation/trace.h"

namespace lumo {
namespace {

// The tables are the protocol: values are kept in records and compared by number, so order and
// letters never change.
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
#define LUMO_STATE_CODE(name) #name,
    LUMO_STATE_CODES(LUMO_STATE_CODE)
#undef LUMO_STATE_CODE
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
static_assert(UnknownValue(kRequestStateCodes) == STATE_CODE_UNKNOWN);
static_assert(UnknownValue(kAccountTypes) == ACCOUNT_UNKNOWN);
static_assert(UnknownValue(kCashBackTypes) == CASHBACK_UNKNOWN);

template <size_t kCount>
const char *TextAt(const char *const (&table)[kCount], int32_t value) {
  return value >= 0 && value < UnknownValue(table) ? table[value] : "";
}

template <size_t kCount>
int32_t Find(const char *const (&table)[kCount], const char *text) {
  int32_t value = 0;
  while (value < UnknownValue(table) && (text == nullptr || std::strcmp(table[value], text) != 0)) ++value;
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

const char *ActivationTypeToString(ActivationType value) {
  return TextAt(kActivationTypes, value);
}
const char *RequestTypeToString(RequestType value) {
  return TextAt(kRequestTypes, value);
}
const char *RequestStateToString(RequestState value) {
  return TextAt(kRequestStates, value);
}
const char *RequestStateCodeToString(RequestStateCode value) {
  if (value == STATE_CODE_UNKNOWN) {
    TraceError("Unsupported Request State Code\n");
    return nullptr;
  }
  return TextAt(kRequestStateCodes, value);
}
const char *AccountTypeToString(AccountType value) {
  return TextAt(kAccountTypes, value);
}
const char *CashBackTypeToString(CashBackType value) {
  return TextAt(kCashBackTypes, value);
}

ActivationType ActivationTypeFromString(const char *text) {
  return static_cast<ActivationType>(FindOrTrace(kActivationTypes, "ActivationType", text));
}
RequestType RequestTypeFromString(const char *text) {
  return static_cast<RequestType>(FindOrTrace(kRequestTypes, "RequestType", text));
}
RequestState RequestStateFromString(const char *text) {
  return static_cast<RequestState>(FindOrTrace(kRequestStates, "RequestState", text));
}
RequestStateCode RequestStateCodeFromString(const char *text) {
  return static_cast<RequestStateCode>(FindOrTrace(kRequestStateCodes, "RequestStateCode", text));
}
AccountType AccountTypeFromString(const char *text) {
  return static_cast<AccountType>(FindOrTrace(kAccountTypes, "AccountType", text));
}
CashBackType CashBackTypeFromString(const char *text) {
  return static_cast<CashBackType>(FindOrTrace(kCashBackTypes, "CashBackType", text));
}

ActivationType FindActivationType(const char *text) {
  return static_cast<ActivationType>(Find(kActivationTypes, text));
}

}  // namespace lumo
