// loyalty_server/vocabulary.h: the words of the protocol, as each side of an exchange calls them.
#pragma once

#include <array>
#include <cstddef>
#include <string>
#include <string_view>

namespace loyalty {

enum class Operation {
  kActivation,
  kPayment,
  kPaymentAndConfirm,
  kPaymentConfirm,
  kBalance,
  kCashBack,
  kLink,
  kExchange,
  kDeposit,
  kAd,
  kLastRrn
};

struct OperationNames {
  Operation operation;
  const char *method;    // last segment of the path
  const char *type;      // "type" of the request part
  const char *request;   // name of the request document
  const char *response;  // name of the answer
  const char *part;      // part beside "request" in the request; null when there is none
  bool is_service;       // asks about the terminal, not for a card: its request id says nothing
};

inline constexpr std::array<OperationNames, 11> kOperations = {{
    {Operation::kActivation, "activate", "ACTIVATION", "cardActivationRequest", "cardActivationResponse",
     "activation", false},
    {Operation::kPayment, "payment", "PAYMENT", "putPaymentRequest", "putPaymentResponse", "bill", false},
    {Operation::kPaymentAndConfirm, "paymentAndConfirm", "PAYMENT_AND_CONFIRM", "putPaymentAndConfirmRequest",
     "putPaymentAndConfirmResponse", "bill", false},
    {Operation::kPaymentConfirm, "confirm", "PAYMENT_CONFIRM", "putPaymentConfirmRequest",
     "putPaymentConfirmResponse", "paymentConfirm", false},
    {Operation::kBalance, "balance", "BALANCE", "getBalanceRequest", "getBalanceResponse", nullptr, false},
    {Operation::kCashBack, "cashBack", "CASHBACK", "putCashBackRequest", "putCashBackResponse", "cashBack",
     false},
    {Operation::kLink, "linkCard", "LINK", "linkedCardRequest", "linkedCardResponse", "linkedCard", false},
    {Operation::kExchange, "cardExchange", "EXCHANGE", "cardExchangeRequest", "cardExchangeResponse",
     "cardExchange", false},
    {Operation::kDeposit, "deposit", "DEPOSIT", "putDepositRequest", "putDepositResponse", "deposit", false},
    {Operation::kAd, "ad", "AD", "getAdRequest", "getAdResponse", nullptr, true},
    {Operation::kLastRrn, "rrn", "LAST_RRN", "getLastRrnRequest", "getLastRrnResponse", nullptr, true},
}};

// Null when no operation has this method.
const OperationNames *FindOperation(std::string_view method);

// The detailed outcome of a request, in the order of the protocol's table.
enum class Code {
  kOk,
  kInternalError,
  kRequestNotFound,
  kRequestParsingError,
  kUnsupportedProtocolVersion,
  kIncorrectRequestParam,
  kUnknownTerminal,
  kLockedTerminal,
  kActivationRequired,
  kLockedCard,
  kCardNotFound,
  kCardNumberIncorrect,
  kAlreadyActivated,
  kActivationSumTypeRequired,
  kActivationBlockRequired,
  kReferralNotFound,
  kReferralLimitReached,
  kIncorrectBill,
  kUnprocessedBill,
  kBillNotFound,
  kUnknownUser,
  kIncorrectSum,
  kUnknownCashBackType,
  kIncorrectToken,
  kRetailPointConfigError,
  kRequestIdEmpty,
  kIncorrectRequestId,
  kBillIncorrectState,
  kUpdateRequired,
  kZeroActivationError,
  kIncorrectRequest,
  kDuplicateRequestId,
  kSmsAuthFailed
};
inline constexpr size_t kCodeCount = 33;

const char *CodeName(Code code);
const char *CodeMessage(Code code);  // what the cashier reads
bool FindCode(std::string_view name, Code *out_code);

enum class AccountType { kGlobal, kLocal, kDiscount };
inline constexpr size_t kAccountTypes = 3;
inline constexpr std::array<AccountType, kAccountTypes> kAllAccountTypes = {
    AccountType::kGlobal, AccountType::kLocal, AccountType::kDiscount};

const char *AccountName(AccountType type);
bool FindAccountType(std::string_view name, AccountType *out_type);

// Whether this can be a request id: five characters of the terminal, the date, a counter that outgrows its
// five digits late on a busy day.
bool IsRequestId(std::string_view id);

// Whether a JSON text goes deeper than any document here has reason to. What works on a document level by
// level would need more stack than there is.
bool IsNestedTooDeep(std::string_view json);

// An amount in hundredths as people write it: 1250 is "12.50".
std::string AmountText(long long amount);

// Seconds since 1970 as "2012-12-05T10:20:30Z".
std::string DateText(long long unix_seconds);

// Text from a client made fit for a line of a log: control characters become "?", and at most
// `limit` bytes stay.
std::string Printable(std::string_view text, size_t limit = 40);

}  // namespace loyalty
