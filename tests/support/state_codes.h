// support/state_codes.h: the reasons a server gives, in the protocol's order, written out by hand: what the
// library and the loyalty server are held against.
#pragma once

namespace test {

constexpr const char *kStateCodes[] = {
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

}  // namespace test
