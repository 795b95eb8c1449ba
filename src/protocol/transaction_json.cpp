#include "protocol/transaction_json.h"

#include <cstddef>
#include <cstring>

#include "foundation/result_codes.h"
#include "foundation/trace.h"
#include "protocol/part_members.h"
#include "record/enumerations.h"
#include "record/transaction.h"

namespace lumo {
namespace {

// Room for one entry for each element of the list, null for none.
template <typename Entry>
Entry *AllocateFor(Transaction *transaction, const JsonNode &list) {
  const size_t count = JsonElements(list).count;
  return count > 0 ? static_cast<Entry *>(TransactionAllocate(transaction, count * sizeof(Entry))) : nullptr;
}

// How keys are matched and members stored and traced.
enum class Style {
  kPart,    // any beginning of a key matches; "label = value"
  kAnswer,  // the same, but of an unknown type of operation or activation the field keeps what it has
  kBill,    // whole keys; "label [value]"
  kGood,    // whole keys, whatever the value's kind; "label [value]"
  kBonus,   // any beginning of a key matches; "label [value]", enumerations as numbers
};

bool IsBracketed(Style style) {
  return style == Style::kBill || style == Style::kGood || style == Style::kBonus;
}

bool KeyEquals(const JsonMember &member, const char *name) {
  return std::strcmp(member.key, name) == 0;
}

bool KeyMatches(Style style, const JsonMember &member, const char *name) {
  // Note: bills alone are read by whole names.
  return style == Style::kBill || style == Style::kGood ? KeyEquals(member, name)
                                                        : KeyIsPrefixOf(member, name);
}

bool KindMatches(Style style, const JsonNode &value, MemberKind kind) {
  switch (kind) {
    case MemberKind::kWrittenFlag:
      return false;
    case MemberKind::kFlag:
      return value.type == JSON_TRUE || value.type == JSON_FALSE;
    case MemberKind::kNumber:
      return style == Style::kGood || JsonIsNumber(value);
    default:
      return style == Style::kGood || value.type == JSON_STRING;
  }
}

void TraceText(Style style, const char *label, const char *text) {
  Trace(IsBracketed(style) ? "%s [%s]\n" : "%s = %s\n", label, text);
}

void TraceNumber(Style style, const char *label, int32_t number) {
  Trace(IsBracketed(style) ? "%s [%d]\n" : "%s = %d\n", label, number);
}

void StoreDate(char (&field)[kDateBytes], const char *text) {
  std::memset(field, 0, kDateBytes);
  std::strncpy(field, text, kDateBytes - 1);
}

// What the operation is, is the terminal's to say: an answer cannot make it unknown.
template <typename Enumeration>
int32_t StoreKnown(Enumeration *field, Style style, Enumeration value, Enumeration unknown) {
  if (style != Style::kAnswer || value != unknown) *field = value;
  return value;
}

int32_t StoreEnumeration(MemberField field, Style style, MemberKind kind, const char *text) {
  switch (kind) {  // GCOVR_EXCL_BR_LINE: these are all the enumerations
    case MemberKind::kActivationType:
      return StoreKnown(field.activationType, style, ActivationTypeFromString(text), ACTIVATION_UNKNOWN);
    case MemberKind::kRequestType:
      return StoreKnown(field.requestType, style, RequestTypeFromString(text), REQUEST_UNKNOWN);
    case MemberKind::kRequestState:
      return *field.requestState = RequestStateFromString(text);
    case MemberKind::kRequestStateCode:
      return *field.requestStateCode = RequestStateCodeFromString(text);
    case MemberKind::kAccountType:
      return *field.accountType = AccountTypeFromString(text);
    case MemberKind::kCashBackType:
      return *field.cashBackType = CashBackTypeFromString(text);
    default:     // GCOVR_EXCL_LINE: no enumeration
      return 0;  // GCOVR_EXCL_LINE: no enumeration
  }
}

// Stores a value of the right kind and traces it.
void StoreValue(Transaction *transaction, Style style, const MemberName &member, MemberField field,
                const JsonNode &value) {
  const char *text = JsonText(value);
  int32_t enumerator;
  switch (member.kind) {
    case MemberKind::kText:
      TraceText(style, member.label, TransactionCopyText(transaction, field.text, text));
      break;
    case MemberKind::kDate:
      StoreDate(*field.date, text);
      TraceText(style, member.label, *field.date);
      break;
    case MemberKind::kNumber:
      *field.number = JsonInt32(value);
      TraceNumber(style, member.label, *field.number);
      break;
    case MemberKind::kFlag:
      *field.flag = value.type == JSON_TRUE;
      TraceNumber(style, member.label, *field.flag ? 1 : 0);
      break;
    default:
      enumerator = StoreEnumeration(field, style, member.kind, text);
      if (style == Style::kBonus) {
        TraceNumber(style, member.label, enumerator);
      } else {
        TraceText(style, member.label, text);
      }
      break;
  }
}

bool Fits(Style style, const JsonMember &json, const MemberName &member) {
  return KindMatches(style, json.value, member.kind) && KeyMatches(style, json, member.key);
}

// Stores one member in the block by the first of the list that fits; false when none does.
template <typename Block, size_t kCount>
bool LoadMember(Transaction *transaction, Block *block, Style style, const Member<Block> (&members)[kCount],
                const JsonMember &json) {
  for (const Member<Block> &member : members) {
    if (Fits(style, json, member)) {
      StoreValue(transaction, style, member, FieldOf(block, member), json.value);
      return true;
    }
  }
  return false;
}

void WarnUnknown(const char *subject, const JsonMember &member) {
  TraceWarning("Unsupported %s element [%d] [%.*s]\n", subject, member.value.type, TracedKeyLength(member),
               member.key);
}

// Loads the members of an object that the list knows, and warns of each other. Returns how many were loaded.
template <typename Block, size_t kCount>
uint32_t LoadObject(Transaction *transaction, Block *block, const Member<Block> (&members)[kCount],
                    const char *subject, const JsonNode *node, Style style = Style::kPart) {
  uint32_t loaded = 0;
  for (const JsonMember &member : JsonMembers(node)) {
    if (LoadMember(transaction, block, style, members, member)) {
      ++loaded;
    } else {
      WarnUnknown(subject, member);
    }
  }
  return loaded;
}

void LoadBonus(Transaction *transaction, Bonus *bonus, const JsonNode &node) {
  for (const JsonMember &member : JsonMembers(&node)) {
    if (!LoadMember(transaction, bonus, Style::kBonus, kBonusMembers, member)) {
      TraceWarning("Unsupported BONUS element [%.*s]\n", TracedKeyLength(member), member.key);
    }
  }
}

void LoadBonuses(Transaction *transaction, Good *good, const JsonNode &list) {
  good->bonusCount = 0;
  good->bonuses = AllocateFor<Bonus>(transaction, list);
  for (const JsonNode &element : JsonElements(list)) {
    if (JsonIsObject(element)) LoadBonus(transaction, &good->bonuses[good->bonusCount++], element);
  }
}

void LoadGood(Transaction *transaction, Good *good, const JsonNode &node, GoodBonuses bonuses) {
  for (const JsonMember &member : JsonMembers(&node)) {
    if (KeyEquals(member, "bonus")) {
      if (bonuses == GoodBonuses::kLoad) LoadBonuses(transaction, good, member.value);
    } else if (!LoadMember(transaction, good, Style::kGood, kGoodMembers, member)) {
      TraceWarning("Unsupported GOOD element [%.*s]\n", TracedKeyLength(member), member.key);
    }
  }
}

// 0 or ERR_RESPONSE_STRUCTURE.
int LoadGoods(Transaction *transaction, const JsonNode &list, GoodBonuses bonuses) {
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
    LoadGood(transaction, &bill.goods[bill.goodCount++], element, bonuses);
  }
  return 0;
}

// 0 or ERR_RESPONSE_STRUCTURE.
int LoadGoodList(Transaction *transaction, const JsonNode &node, GoodBonuses bonuses) {
  if (!JsonIsObject(node)) {
    TraceError("Goods list is not an object\n");
    return ERR_RESPONSE_STRUCTURE;
  }
  for (const JsonMember &member : JsonMembers(&node)) {
    if (!KeyEquals(member, "good")) {
      TraceError("not a good element [%.*s]\n", TracedKeyLength(member), member.key);
      continue;
    }
    const int result = LoadGoods(transaction, member.value, bonuses);
    if (result != 0) return result;
  }
  return 0;
}

void LoadAccounts(Transaction *transaction, const JsonNode &list) {
  BalanceBlock &balance = transaction->balance;
  balance.count = 0;
  balance.accounts = AllocateFor<BalanceAccount>(transaction, list);
  for (const JsonNode &element : JsonElements(list)) {
    if (JsonIsObject(element)) {
      LoadObject(transaction, &balance.accounts[balance.count++], kAccountMembers, "balance account",
                 &element);
    }
  }
}

void LoadCashBackGoods(Transaction *transaction, const JsonNode &list) {
  CashBackBlock &cash_back = transaction->cashBack;
  cash_back.goodCount = 0;
  cash_back.goods = AllocateFor<CashBackGood>(transaction, list);
  for (const JsonNode &element : JsonElements(list)) {
    if (JsonIsObject(element)) {
      LoadObject(transaction, &cash_back.goods[cash_back.goodCount++], kCashBackGoodMembers, "CashBack Good",
                 &element);
    }
  }
}

bool IsList(const JsonMember &member, const char *name) {
  return member.value.type == JSON_ARRAY_BEGIN && KeyIsPrefixOf(member, name);
}

int LoadAnsweredRequest(Transaction *transaction, const JsonNode *node) {
  LoadObject(transaction, &transaction->request, kRequestMembers, "request", node, Style::kAnswer);
  return 0;
}

int LoadAnsweredActivation(Transaction *transaction, const JsonNode *node) {
  LoadObject(transaction, &transaction->activation, kActivationMembers, "Activation", node, Style::kAnswer);
  return 0;
}

using Loader = int (*)(Transaction *transaction, const JsonNode *node);

struct PartLoader {
  const char *key;
  PartBit bit;
  Loader load;
  Loader loadAnswered = nullptr;  // in an answer, where that differs
};

// In the order of comparison: a key that begins several of the names selects the first.
constexpr PartLoader kPartLoaders[] = {
    {"request", PART_REQUEST, LoadRequest, LoadAnsweredRequest},
    {"response", PART_RESPONSE, LoadResponse},
    {"bill", PART_BILL,
     [](Transaction *transaction, const JsonNode *node) {
       return LoadBill(transaction, node, GoodBonuses::kLoad);
     }},
    {"paymentConfirm", PART_PAYMENT_CONFIRM, LoadPaymentConfirm},
    {"balance", PART_BALANCE, LoadBalance},
    {"activation", PART_ACTIVATION, LoadActivation, LoadAnsweredActivation},
    {"activationResult", PART_ACTIVATION_RESULT, LoadActivationResult},
    {"cashBackResult", PART_CASH_BACK_RESULT, LoadCashBackResult},
    {"deposit", PART_DEPOSIT, LoadDeposit},
    {"cardExchange", PART_CARD_EXCHANGE, LoadCardExchange},
    {"ad", PART_AD, LoadAdvertising},
    {"rrn", PART_RRN, LoadLastRrn},
};

const PartLoader *FindPartLoader(const JsonMember &member) {
  for (const PartLoader &part : kPartLoaders) {
    if (KeyIsPrefixOf(member, part.key)) return &part;
  }
  return nullptr;
}

}  // namespace

uint32_t LoadParts(Transaction *transaction, const JsonNode *node, PartSource source) {
  uint32_t found = 0;
  for (const JsonMember &member : JsonMembers(node)) {
    if (member.keyLength > kLongestName) return 0;
    const PartLoader *part = FindPartLoader(member);
    if (part != nullptr) {
      const bool is_answered = source == PartSource::kAnswer && part->loadAnswered != nullptr;
      const Loader load = is_answered ? part->loadAnswered : part->load;
      load(transaction, &member.value);
      found |= part->bit;
    } else {
      TraceError("Unsupported part of activation [%.*s]\n", TracedKeyLength(member), member.key);
    }
  }
  return found;
}

int LoadRequest(Transaction *transaction, const JsonNode *node) {
  LoadObject(transaction, &transaction->request, kRequestMembers, "request", node);
  return 0;
}

int LoadResponse(Transaction *transaction, const JsonNode *node) {
  LoadObject(transaction, &transaction->response, kResponseMembers, "response", node);
  return 0;
}

int LoadBill(Transaction *transaction, const JsonNode *node, GoodBonuses bonuses) {
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
      const int result = LoadGoodList(transaction, member.value, bonuses);
      if (result != 0) return result;
    } else if (!LoadMember(transaction, &transaction->bill, Style::kBill, kBillMembers, member)) {
      TraceWarning("unsupported bill element [%.*s]\n", TracedKeyLength(member), member.key);
    }
  }
  return 0;
}

int LoadPaymentConfirm(Transaction *transaction, const JsonNode *node) {
  LoadObject(transaction, &transaction->paymentConfirm, kPaymentConfirmMembers, "Payment Confirm", node);
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
  if (node == nullptr || !JsonIsObject(*node)) return ERR_RESPONSE_STRUCTURE;
  for (const JsonMember &member : JsonMembers(node)) {
    if (IsList(member, "cashBackGood")) {
      LoadCashBackGoods(transaction, member.value);
    } else if (!LoadMember(transaction, &cash_back, Style::kPart, kCashBackMembers, member)) {
      WarnUnknown("Activation", member);  // note: another part's name
    }
  }
  return 0;
}

int LoadCashBackResult(Transaction *transaction, const JsonNode *node) {
  LoadObject(transaction, transaction, kCashBackResultMembers, "Cashback Result", node);
  return 0;
}

int LoadActivation(Transaction *transaction, const JsonNode *node) {
  LoadObject(transaction, &transaction->activation, kActivationMembers, "Activation", node);
  return 0;
}

int LoadActivationResult(Transaction *transaction, const JsonNode *node) {
  LoadObject(transaction, &transaction->activationResult, kActivationResultMembers, "Activation Result",
             node);
  return 0;
}

int LoadDeposit(Transaction *transaction, const JsonNode *node) {
  LoadObject(transaction, transaction, kDepositMembers, "Deposit", node);
  return 0;
}

int LoadCardExchange(Transaction *transaction, const JsonNode *node) {
  LoadObject(transaction, transaction, kCardExchangeMembers, "Card Exchange", node);
  return 0;
}

int LoadLastRrn(Transaction *transaction, const JsonNode *node) {
  if (LoadObject(transaction, transaction, kLastRrnMembers, "Last Rrn", node) == 0) {
    Trace("last_rrn.last_rrn = (null)\n");
  }
  return 0;
}

int LoadAdvertising(Transaction *transaction, const JsonNode *node) {
  // Note: another part's name.
  if (LoadObject(transaction, transaction, kAdvertisingMembers, "Last Rrn", node) == 0) {
    Trace("ad.ad = (null)\n");
  }
  return 0;
}

}  // namespace lumo
