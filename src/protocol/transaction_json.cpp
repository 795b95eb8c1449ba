#include "protocol/transaction_json.h"

#include <cstddef>
#include <cstring>

#include "foundation/trace.h"
#include "lumo.h"
#include "record/enumerations.h"
#include "record/transaction.h"

namespace lumo {
namespace {

// Room for one entry for each element of the list, null for none.
template <typename Entry>
Entry *AllocateFor(Transaction *transaction, const JsonNode &list) {
  const size_t count = JsonElements(list).count;
  return count > 0 ? static_cast<Entry *>(trans_alloc(transaction, count * sizeof(Entry))) : nullptr;
}

enum class Field { kText, kDate, kNumber, kFlag, kEnumeration };

using FromText = int32_t (*)(const char *text);

// One member that a part's object may hold.
struct MemberRule {
  const char *key;
  Field field;
  size_t offset;       // of the field in the part's block
  const char *label;   // in the trace
  FromText from_text;  // of enumerations
};

// How a part's members are matched and traced.
enum class Style {
  kPart,   // any beginning of a key matches; "label = value"
  kBill,   // whole keys; "label [value]"
  kGood,   // whole keys, whatever the value's kind; "label [value]"
  kBonus,  // any beginning of a key matches; "label [value]", enumerations as numbers
};

template <size_t kCount>
struct Rules {
  Style style;
  MemberRule members[kCount];
};

bool KeyEquals(const JsonMember &member, const char *name) {
  return member.key != nullptr && std::strcmp(member.key, name) == 0;
}

bool KeyMatches(Style style, const JsonMember &member, const char *name) {
  // Deliberate: bills alone are read by whole names.
  return style == Style::kBill || style == Style::kGood ? KeyEquals(member, name)
                                                        : KeyIsPrefixOf(member, name);
}

bool KindMatches(Style style, const JsonNode &value, Field field) {
  switch (field) {
    case Field::kNumber:
      return style == Style::kGood || JsonIsNumber(value);
    case Field::kFlag:
      return value.type == JSON_TRUE || value.type == JSON_FALSE;
    default:
      return style == Style::kGood || value.type == JSON_STRING;
  }
}

void TraceText(Style style, const char *label, const char *text) {
  if (style == Style::kPart) {
    Trace("%s = %s\n", label, text);
  } else {
    Trace("%s [%s]\n", label, text);
  }
}

void TraceNumber(Style style, const char *label, int32_t number) {
  if (style == Style::kPart) {
    Trace("%s = %d\n", label, number);
  } else {
    Trace("%s [%d]\n", label, number);
  }
}

void StoreDate(char *field, const char *text) {
  std::memset(field, 0, kDateBytes);
  std::strncpy(field, text, kDateBytes - 1);
}

void StoreMember(Transaction *transaction, void *block, Style style, const MemberRule &rule,
                 const JsonNode &value) {
  void *field = static_cast<char *>(block) + rule.offset;
  const char *text = JsonText(value);
  if (rule.field == Field::kText) {
    TraceText(style, rule.label, trans_strcpy(transaction, static_cast<const char **>(field), text));
    return;
  }
  if (rule.field == Field::kDate) {
    StoreDate(static_cast<char *>(field), text);
    TraceText(style, rule.label, static_cast<char *>(field));
    return;
  }
  auto *number = static_cast<int32_t *>(field);
  if (rule.field == Field::kEnumeration) {
    *number = rule.from_text(text);
  } else {
    *number = rule.field == Field::kFlag ? value.type == JSON_TRUE : JsonInt32(value);
  }
  if (rule.field == Field::kEnumeration && style != Style::kBonus) {
    TraceText(style, rule.label, text);
  } else {
    TraceNumber(style, rule.label, *number);
  }
}

// Stores one member in the block by the first rule that fits; false when none does.
template <size_t kCount>
bool LoadMember(Transaction *transaction, void *block, const Rules<kCount> &rules, const JsonMember &member) {
  for (const MemberRule &rule : rules.members) {
    if (KindMatches(rules.style, member.value, rule.field) && KeyMatches(rules.style, member, rule.key)) {
      StoreMember(transaction, block, rules.style, rule, member.value);
      return true;
    }
  }
  return false;
}

void WarnUnknown(const char *subject, const JsonMember &member) {
  TraceWarning("Unsupported %s element [%d] [%.*s]\n", subject, member.value.type, TracedKeyLength(member),
               member.key);
}

// Loads the members of an object that have a rule, with a warning for each other; returns how many had one.
template <size_t kCount>
uint32_t LoadObject(Transaction *transaction, void *block, const Rules<kCount> &rules, const char *subject,
                    const JsonNode *node) {
  uint32_t loaded = 0;
  for (const JsonMember &member : JsonMembers(node)) {
    if (LoadMember(transaction, block, rules, member)) {
      ++loaded;
    } else {
      WarnUnknown(subject, member);
    }
  }
  return loaded;
}

// Order matters where one key begins like another: the first rule of the value's kind wins.

constexpr Rules<9> kRequestRules = {
    Style::kPart,
    {
        {"ver", Field::kText, offsetof(RequestBlock, ver), "request.ver", nullptr},
        {"type", Field::kEnumeration, offsetof(RequestBlock, type), "request.type", RequestTypeFromString},
        {"requestId", Field::kText, offsetof(RequestBlock, requestId), "request.requestId", nullptr},
        {"terminalId", Field::kText, offsetof(RequestBlock, terminalId), "request.terminalId", nullptr},
        {"requestDate", Field::kDate, offsetof(RequestBlock, requestDate), "request.requestDate", nullptr},
        {"employeeId", Field::kText, offsetof(RequestBlock, employeeId), "request.employeeId", nullptr},
        {"cardNum", Field::kText, offsetof(RequestBlock, cardNum), "request.cardNum", nullptr},
        {"shiftId", Field::kText, offsetof(RequestBlock, shiftId), "request.shiftId", nullptr},
        {"isOffline", Field::kFlag, offsetof(RequestBlock, isOffline), "request.offline", nullptr},
    }};

constexpr Rules<8> kResponseRules = {
    Style::kPart,
    {
        {"ver", Field::kText, offsetof(ResponseBlock, ver), "response.ver", nullptr},
        {"requestId", Field::kText, offsetof(ResponseBlock, requestId), "response.requestId", nullptr},
        {"responseId", Field::kText, offsetof(ResponseBlock, responseId), "response.responseId", nullptr},
        {"responseDate", Field::kDate, offsetof(ResponseBlock, responseDate), "response.responseDate",
         nullptr},
        {"requestState", Field::kEnumeration, offsetof(ResponseBlock, requestState), "response.state",
         RequestStateFromString},
        {"requestStateCode", Field::kEnumeration, offsetof(ResponseBlock, requestStateCode),
         "response.stateCode", RequestStateCodeFromString},
        {"message", Field::kText, offsetof(ResponseBlock, message), "response.message", nullptr},
        {"isNeedUpdate", Field::kFlag, offsetof(ResponseBlock, isNeedUpdate), "response.needUpdate", nullptr},
    }};

constexpr Rules<5> kBillRules = {
    Style::kBill,
    {
        {"totalSum", Field::kNumber, offsetof(BillBlock, totalSum), " totalSum", nullptr},
        {"orderLen", Field::kNumber, offsetof(BillBlock, orderLen), " orderLen", nullptr},
        {"partnerFee", Field::kNumber, offsetof(BillBlock, partnerFee), " partnerFee", nullptr},
        {"billNum", Field::kText, offsetof(BillBlock, billNum), " billNum", nullptr},
        {"billDate", Field::kDate, offsetof(BillBlock, billDate), " billDate", nullptr},
    }};

constexpr Rules<5> kGoodRules = {
    Style::kGood,
    {
        {"title", Field::kText, offsetof(Good, title), " title", nullptr},
        {"productCode", Field::kText, offsetof(Good, productCode), " productCode", nullptr},
        {"positionCost", Field::kNumber, offsetof(Good, positionCost), " positionCost", nullptr},
        {"orderNum", Field::kNumber, offsetof(Good, orderNum), " orderNum", nullptr},
        {"cnt", Field::kNumber, offsetof(Good, cnt), " cnt", nullptr},
    }};

constexpr Rules<4> kBonusRules = {
    Style::kBonus,
    {
        {"earned", Field::kNumber, offsetof(Bonus, earned), "  earned", nullptr},
        {"spend", Field::kNumber, offsetof(Bonus, spend), "  spend", nullptr},
        {"organizerFee", Field::kNumber, offsetof(Bonus, organizerFee), "  organizerFee", nullptr},
        {"accountType", Field::kEnumeration, offsetof(Bonus, accountType), "  accountType",
         AccountTypeFromString},
    }};

constexpr Rules<2> kPaymentConfirmRules = {
    Style::kPart,
    {
        {"isConfirm", Field::kFlag, offsetof(PaymentConfirmBlock, isConfirm), "confirm.isConfirm", nullptr},
        {"requestId", Field::kText, offsetof(PaymentConfirmBlock, requestId), "confirm.requestId", nullptr},
    }};

constexpr Rules<3> kAccountRules = {
    Style::kPart,
    {
        {"accountType", Field::kEnumeration, offsetof(BalanceAccount, accountType), "balance.account",
         AccountTypeFromString},
        {"availableAmount", Field::kNumber, offsetof(BalanceAccount, availableAmount),
         "balance.availableAmount", nullptr},
        {"amount", Field::kNumber, offsetof(BalanceAccount, amount), "balance.amount", nullptr},
    }};

constexpr Rules<2> kCashBackRules = {
    Style::kPart,
    {
        {"cashBackType", Field::kEnumeration, offsetof(CashBackBlock, cashBackType), "cashback.cashBackType",
         CashBackTypeFromString},
        {"requestId", Field::kText, offsetof(CashBackBlock, requestId), "cashback.requestId", nullptr},
    }};

// Deliberate: sum and cnt bear another part's label.
constexpr Rules<3> kCashBackGoodRules = {
    Style::kPart,
    {
        {"pos", Field::kNumber, offsetof(CashBackGood, pos), "cbgood.pos", nullptr},
        {"sum", Field::kNumber, offsetof(CashBackGood, sum), "activation.sum", nullptr},
        {"cnt", Field::kNumber, offsetof(CashBackGood, cnt), "activation.cnt", nullptr},
    }};

constexpr Rules<1> kCashBackResultRules = {
    Style::kPart,
    {{"returnedSum", Field::kNumber, offsetof(Transaction, returnedSum), "cashbackResult.returnedSum",
      nullptr}}};

constexpr Rules<4> kActivationRules = {
    Style::kPart,
    {
        {"activationType", Field::kEnumeration, offsetof(ActivationBlock, activationType),
         "activation.activationType", ActivationTypeFromString},
        {"type", Field::kEnumeration, offsetof(ActivationBlock, type), "activation.accountType",
         AccountTypeFromString},
        {"referParentCardNum", Field::kText, offsetof(ActivationBlock, referParentCardNum),
         "activation.referParentCardNum", nullptr},
        {"amount", Field::kNumber, offsetof(ActivationBlock, amount), "activation.amount", nullptr},
    }};

constexpr Rules<6> kActivationResultRules = {
    Style::kPart,
    {
        {"activationSumType", Field::kEnumeration, offsetof(ActivationResultBlock, activationSumType),
         "activationResult.activationSumType", AccountTypeFromString},
        {"referralSumType", Field::kEnumeration, offsetof(ActivationResultBlock, referralSumType),
         "activationResult.referralSumType", AccountTypeFromString},
        {"giftSumType", Field::kEnumeration, offsetof(ActivationResultBlock, giftSumType),
         "activationResult.giftSumType", AccountTypeFromString},
        {"activationSum", Field::kNumber, offsetof(ActivationResultBlock, activationSum),
         "activationResult.activationSum", nullptr},
        {"referralSum", Field::kNumber, offsetof(ActivationResultBlock, referralSum),
         "activationResult.referralSum", nullptr},
        {"giftSum", Field::kNumber, offsetof(ActivationResultBlock, giftSum), "activationResult.giftSum",
         nullptr},
    }};

constexpr Rules<1> kDepositRules = {
    Style::kPart,
    {{"amount", Field::kNumber, offsetof(Transaction, depositAmount), "deposit.amount", nullptr}}};

constexpr Rules<1> kCardExchangeRules = {
    Style::kPart, {{"token", Field::kText, offsetof(Transaction, exchangeToken), "exchange.token", nullptr}}};

constexpr Rules<1> kLastRrnRules = {
    Style::kPart,
    {{"rrNumber", Field::kText, offsetof(Transaction, rrNumber), "last_rrn.last_rrn", nullptr}}};

constexpr Rules<1> kAdvertisingRules = {
    Style::kPart, {{"text", Field::kText, offsetof(Transaction, adText), "ad.ad", nullptr}}};

void LoadBonus(Transaction *transaction, Bonus *bonus, const JsonNode &node) {
  for (const JsonMember &member : JsonMembers(&node)) {
    if (!LoadMember(transaction, bonus, kBonusRules, member)) {
      TraceWarning("Unsupported BONUS element [%.*s]\n", TracedKeyLength(member), member.key);
    }
  }
}

void LoadBonuses(Transaction *transaction, Good *good, const JsonNode &list) {
  good->bonusCount = 0;
  good->bonuses = AllocateFor<Bonus>(transaction, list);
  for (const JsonNode &element : JsonElements(list)) {
    if (JsonIsObject(element)) {
      LoadBonus(transaction, &good->bonuses[good->bonusCount++], element);
    }
  }
}

void LoadGood(Transaction *transaction, Good *good, const JsonNode &node, int load_bonuses) {
  for (const JsonMember &member : JsonMembers(&node)) {
    if (KeyEquals(member, "bonus")) {
      if (load_bonuses != 0) {
        LoadBonuses(transaction, good, member.value);
      }
    } else if (!LoadMember(transaction, good, kGoodRules, member)) {
      TraceWarning("Unsupported GOOD element [%.*s]\n", TracedKeyLength(member), member.key);
    }
  }
}

// 0 or -402.
int LoadGoods(Transaction *transaction, const JsonNode &list, int load_bonuses) {
  if (list.type != JSON_ARRAY_BEGIN) {
    TraceError("Goods is not an array\n");
    return ERR_RESPONSE_STRUCTURE;
  }
  BillBlock &bill = transaction->bill;
  bill.goodCount = 0;
  bill.goods = AllocateFor<Good>(transaction, list);
  for (const JsonNode &element : JsonElements(list)) {
    if (!JsonIsObject(element)) {
      TraceError("Good is not an object\n");
      return ERR_RESPONSE_STRUCTURE;
    }
    LoadGood(transaction, &bill.goods[bill.goodCount++], element, load_bonuses);
  }
  return 0;
}

// 0 or -402.
int LoadGoodList(Transaction *transaction, const JsonNode &node, int load_bonuses) {
  if (!JsonIsObject(node)) {
    TraceError("Goods list is not an object\n");
    return ERR_RESPONSE_STRUCTURE;
  }
  for (const JsonMember &member : JsonMembers(&node)) {
    if (!KeyEquals(member, "good")) {
      TraceError("not a good element [%.*s]\n", TracedKeyLength(member), member.key);
      continue;
    }
    const int result = LoadGoods(transaction, member.value, load_bonuses);
    if (result != 0) {
      return result;
    }
  }
  return 0;
}

void LoadAccounts(Transaction *transaction, const JsonNode &list) {
  BalanceBlock &balance = transaction->balance;
  balance.count = 0;
  balance.accounts = AllocateFor<BalanceAccount>(transaction, list);
  for (const JsonNode &element : JsonElements(list)) {
    if (JsonIsObject(element)) {
      LoadObject(transaction, &balance.accounts[balance.count++], kAccountRules, "balance account", &element);
    }
  }
}

void LoadCashBackGoods(Transaction *transaction, const JsonNode &list) {
  CashBackBlock &cash_back = transaction->cashBack;
  cash_back.goodCount = 0;
  cash_back.goods = AllocateFor<CashBackGood>(transaction, list);
  for (const JsonNode &element : JsonElements(list)) {
    if (JsonIsObject(element)) {
      LoadObject(transaction, &cash_back.goods[cash_back.goodCount++], kCashBackGoodRules, "CashBack Good",
                 &element);
    }
  }
}

bool IsList(const JsonMember &member, const char *name) {
  return member.value.type == JSON_ARRAY_BEGIN && KeyIsPrefixOf(member, name);
}

struct PartLoader {
  const char *key;
  PartBit bit;
  int (*load)(Transaction *transaction, const JsonNode *node);
};

// In the order of comparison: a key that begins several of the names selects the first.
constexpr PartLoader kPartLoaders[] = {
    {"request", PART_REQUEST, LoadRequest},
    {"response", PART_RESPONSE, LoadResponse},
    {"bill", PART_BILL,
     [](Transaction *transaction, const JsonNode *node) { return LoadBill(transaction, node, 1); }},
    {"paymentConfirm", PART_PAYMENT_CONFIRM, LoadPaymentConfirm},
    {"balance", PART_BALANCE, LoadBalance},
    {"activation", PART_ACTIVATION, LoadActivation},
    {"activationResult", PART_ACTIVATION_RESULT, LoadActivationResult},
    {"cashBackResult", PART_CASH_BACK_RESULT, LoadCashBackResult},
    {"deposit", PART_DEPOSIT, LoadDeposit},
    {"cardExchange", PART_CARD_EXCHANGE, LoadCardExchange},
    {"ad", PART_AD, LoadAdvertising},
    {"rrn", PART_RRN, LoadLastRrn},
};

const PartLoader *FindPartLoader(const JsonMember &member) {
  for (const PartLoader &part : kPartLoaders) {
    if (KeyIsPrefixOf(member, part.key)) {
      return &part;
    }
  }
  return nullptr;
}

}  // namespace

uint32_t LoadParts(Transaction *transaction, const JsonNode *node) {
  uint32_t found = 0;
  for (const JsonMember &member : JsonMembers(node)) {
    if (member.key == nullptr || member.key_length > kLongestName) {
      return 0;
    }
    const PartLoader *part = FindPartLoader(member);
    if (part != nullptr) {
      part->load(transaction, &member.value);
      found |= part->bit;
    } else {
      TraceError("Unsupported part of activation [%.*s]\n", TracedKeyLength(member), member.key);
    }
  }
  return found;
}

int LoadRequest(Transaction *transaction, const JsonNode *node) {
  LoadObject(transaction, &transaction->request, kRequestRules, "request", node);
  return 0;
}

int LoadResponse(Transaction *transaction, const JsonNode *node) {
  LoadObject(transaction, &transaction->response, kResponseRules, "response", node);
  return 0;
}

int LoadBill(Transaction *transaction, const JsonNode *node, int load_bonuses) {
  if (node == nullptr) {
    TraceError("root element is NULL\n");
    return ERR_RESPONSE_STRUCTURE;
  }
  if (!JsonIsObject(*node)) {
    TraceError("root element is not an object\n");
    return ERR_RESPONSE_STRUCTURE;
  }
  for (const JsonMember &member : JsonMembers(node)) {
    if (KeyEquals(member, "goodList")) {
      const int result = LoadGoodList(transaction, member.value, load_bonuses);
      if (result != 0) {
        return result;
      }
    } else if (!LoadMember(transaction, &transaction->bill, kBillRules, member)) {
      TraceWarning("unsupported bill element [%.*s]\n", TracedKeyLength(member), member.key);
    }
  }
  return 0;
}

int LoadPaymentConfirm(Transaction *transaction, const JsonNode *node) {
  LoadObject(transaction, &transaction->paymentConfirm, kPaymentConfirmRules, "Payment Confirm", node);
  return 0;
}

int LoadBalance(Transaction *transaction, const JsonNode *node) {
  transaction->balance = BalanceBlock{};
  for (const JsonMember &member : JsonMembers(node)) {
    if (IsList(member, "account")) {
      LoadAccounts(transaction, member.value);
    } else {
      WarnUnknown("balance account", member);
    }
  }
  return 0;
}

int LoadCashBack(Transaction *transaction, const JsonNode *node) {
  CashBackBlock &cash_back = transaction->cashBack;
  cash_back.goodCount = 0;
  cash_back.goods = nullptr;
  if (node == nullptr || !JsonIsObject(*node)) {
    return ERR_RESPONSE_STRUCTURE;
  }
  for (const JsonMember &member : JsonMembers(node)) {
    if (IsList(member, "cashBackGood")) {
      LoadCashBackGoods(transaction, member.value);
    } else if (!LoadMember(transaction, &cash_back, kCashBackRules, member)) {
      WarnUnknown("Activation", member);  // deliberate: another part's name
    }
  }
  return 0;
}

int LoadCashBackResult(Transaction *transaction, const JsonNode *node) {
  LoadObject(transaction, transaction, kCashBackResultRules, "Cashback Result", node);
  return 0;
}

int LoadActivation(Transaction *transaction, const JsonNode *node) {
  LoadObject(transaction, &transaction->activation, kActivationRules, "Activation", node);
  return 0;
}

int LoadActivationResult(Transaction *transaction, const JsonNode *node) {
  LoadObject(transaction, &transaction->activationResult, kActivationResultRules, "Activation Result", node);
  return 0;
}

int LoadDeposit(Transaction *transaction, const JsonNode *node) {
  LoadObject(transaction, transaction, kDepositRules, "Deposit", node);
  return 0;
}

int LoadCardExchange(Transaction *transaction, const JsonNode *node) {
  LoadObject(transaction, transaction, kCardExchangeRules, "Card Exchange", node);
  return 0;
}

int LoadLastRrn(Transaction *transaction, const JsonNode *node) {
  if (LoadObject(transaction, transaction, kLastRrnRules, "Last Rrn", node) == 0) {
    Trace("last_rrn.last_rrn = (null)\n");
  }
  return 0;
}

int LoadAdvertising(Transaction *transaction, const JsonNode *node) {
  // Deliberate: another part's name.
  if (LoadObject(transaction, transaction, kAdvertisingRules, "Last Rrn", node) == 0) {
    Trace("ad.ad = (null)\n");
  }
  return 0;
}

}  // namespace lumo
