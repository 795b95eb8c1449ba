// record/enumerations.h: the closed vocabularies of the protocol. A value is its text's place in the table;
// one past the last is the unknown value.
#pragma once

#include <cstdint>

#include "record/state_codes.h"

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

// No rule of the library asks for one of them: they have only texts.
enum RequestStateCode : int32_t {
#define LUMO_STATE_CODE(name) STATE_CODE_##name,
  LUMO_STATE_CODES(LUMO_STATE_CODE) STATE_CODE_UNKNOWN
#undef LUMO_STATE_CODE
};

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
const char *ActivationTypeToString(ActivationType value);
const char *RequestTypeToString(RequestType value);
const char *RequestStateToString(RequestState value);
const char *RequestStateCodeToString(RequestStateCode value);
const char *AccountTypeToString(AccountType value);
const char *CashBackTypeToString(CashBackType value);

// The text's value; whole texts, upper and lower case differ. Another text, or null, traces an error and
// gives the unknown value.
ActivationType ActivationTypeFromString(const char *text);
RequestType RequestTypeFromString(const char *text);
RequestState RequestStateFromString(const char *text);
RequestStateCode RequestStateCodeFromString(const char *text);
AccountType AccountTypeFromString(const char *text);
CashBackType CashBackTypeFromString(const char *text);

// The value without the error line, for a text that is only shown.
ActivationType FindActivationType(const char *text);

}  // namespace lumo
