// record/enumerations.h: the closed vocabularies of the protocol. A value is its text's place in the table;
// one past the last is the unknown value.
#pragma once

#include <cstdint>

namespace lumo {

enum RequestType : int32_t {
  REQUEST_ACTIVATION = 0,
  REQUEST_PAYMENT = 1,
  REQUEST_PAYMENT_AND_CONFIRM = 2,
  REQUEST_PAYMENT_CONFIRM = 3,
  REQUEST_BALANCE = 4,
  REQUEST_CASHBACK = 5,
  REQUEST_LINK = 6,
  REQUEST_EXCHANGE = 7,
  REQUEST_DEPOSIT = 8,
  REQUEST_AD = 9,
  REQUEST_LAST_RRN = 10,
  REQUEST_UNKNOWN = 11,
};

enum RequestState : int32_t {
  STATE_OK = 0,
  STATE_SUCCESS = 1,
  STATE_PROCESSED = 2,
  STATE_ERROR = 3,
  STATE_CANCELED = 4,
  STATE_UNKNOWN = 5,
};

constexpr int32_t kStateCodeUnknown =
    33;  // the 33 codes have no rule of their own in the library, only texts

enum AccountType : int32_t {
  ACCOUNT_GLOBAL = 0,
  ACCOUNT_LOCAL = 1,
  ACCOUNT_DISCOUNT = 2,
  ACCOUNT_UNKNOWN = 3
};
enum CashBackType : int32_t { CASHBACK_FULL = 0, CASHBACK_SEQ = 1, CASHBACK_UNKNOWN = 2 };
enum ActivationType : int32_t {
  ACTIVATION_SIMPLE = 0,
  ACTIVATION_GIFT_CARD = 1,
  ACTIVATION_REFER_A_FRIEND = 2,
  ACTIVATION_UNKNOWN = 3,
};

// The table's text; the empty text for a value outside the table. RequestStateCodeToString alone traces an
// error and returns null for its unknown value.
const char *ActivationTypeToString(int32_t value);
const char *RequestTypeToString(int32_t value);
const char *RequestStateToString(int32_t value);
const char *RequestStateCodeToString(int32_t value);
const char *AccountTypeToString(int32_t value);
const char *CashBackTypeToString(int32_t value);

// The text's value; whole texts, upper and lower case differ. Another text, or null, traces an error and
// gives the unknown value.
int32_t ActivationTypeFromString(const char *text);
int32_t RequestTypeFromString(const char *text);
int32_t RequestStateFromString(const char *text);
int32_t RequestStateCodeFromString(const char *text);
int32_t AccountTypeFromString(const char *text);
int32_t CashBackTypeFromString(const char *text);

// The value without the error line, for a text that is only shown.
int32_t FindActivationType(const char *text);

}  // namespace lumo
