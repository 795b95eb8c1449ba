#include "loyalty_server/programme.h"

#include <algorithm>
#include <chrono>
#include <limits>
#include <nlohmann/json.hpp>
#include <set>
#include <tuple>
#include <unordered_map>

namespace loyalty {
namespace {

using nlohmann::json;
using nlohmann::ordered_json;

constexpr int64_t kMostAmount = std::numeric_limits<int32_t>::max();
constexpr size_t kLongestCardNumber = 64;

// Why a request is not done. The detail is for the engineer at the bench and goes behind the message.
struct Refusal {
  Code code;
  std::string detail;
};

[[noreturn]] void Refuse(Code code, std::string detail = std::string()) {
  throw Refusal{code, std::move(detail)};
}

const json &Member(const json &object, const char *key) {
  const auto member = object.find(key);
  if (member == object.end()) Refuse(Code::kIncorrectRequestParam, key);
  return *member;
}

std::string TextOf(const json &object, const char *key) {
  const json &value = Member(object, key);
  if (!value.is_string()) Refuse(Code::kIncorrectRequestParam, key);
  return value.get<std::string>();
}

bool FlagOf(const json &object, const char *key) {
  const json &value = Member(object, key);
  if (!value.is_boolean()) Refuse(Code::kIncorrectRequestParam, key);
  return value.get<bool>();
}

// A whole number of 32 bits; `wrong` is the code for a number that is none.
int32_t NumberOf(const json &object, const char *key, Code wrong) {
  const json &value = Member(object, key);
  if (!value.is_number()) Refuse(Code::kIncorrectRequestParam, key);
  if (!value.is_number_integer()) Refuse(wrong, key);
  if (value.is_number_unsigned() && value.get<uint64_t>() > static_cast<uint64_t>(kMostAmount)) {
    Refuse(wrong, key);
  }
  const int64_t number = value.get<int64_t>();
  if (number < std::numeric_limits<int32_t>::min() || number > kMostAmount) Refuse(wrong, key);
  return static_cast<int32_t>(number);
}

int32_t AmountOf(const json &object, const char *key) {
  const int32_t amount = NumberOf(object, key, Code::kIncorrectSum);
  if (amount < 0) Refuse(Code::kIncorrectSum, key);
  return amount;
}

const json &PartOf(const json *part, const char *name) {
  if (part == nullptr || !part->is_object()) Refuse(Code::kIncorrectRequestParam, name);
  return *part;
}

bool IsCardNumber(std::string_view number) {
  return !number.empty() && number.size() <= kLongestCardNumber &&
         std::all_of(number.begin(), number.end(), [](char c) { return c > ' ' && c <= '~'; });
}

// The request ids of a terminal in the order it made them.
bool IsEarlier(std::string_view id, std::string_view other) {
  const auto key = [](std::string_view text) {
    const std::string_view counter = text.substr(11);
    const size_t zeros = std::min(counter.find_first_not_of('0'), counter.size());
    return std::make_tuple(text.substr(5, 6), counter.size() - zeros, counter.substr(zeros));
  };
  return key(id) < key(other);
}

bool IsRequestDate(std::string_view date) {
  constexpr std::string_view kShape = "0000-00-00T00:00:00Z";
  if (date.size() != kShape.size()) return false;
  for (size_t i = 0; i < date.size(); ++i) {
    const bool fits = kShape[i] == '0' ? date[i] >= '0' && date[i] <= '9' : date[i] == kShape[i];
    if (!fits) return false;
  }
  return true;
}

// A major version takes all its minor ones.
bool IsVersionSupported(std::string_view version, std::string_view supported) {
  return version == supported ||
         (version.size() > supported.size() && version.substr(0, supported.size()) == supported &&
          version[supported.size()] == '.');
}

int64_t Percent(int64_t amount, int64_t percent) {
  return amount * percent / 100;
}

// Whether the purse can take the amount without ever passing 32 bits.
bool HasRoom(const Purse &purse, int64_t amount) {
  return purse.balance + purse.expected + amount <= kMostAmount;
}

void Credit(Purses *purses, AccountType type, int64_t amount) {
  (*purses)[static_cast<size_t>(type)].balance += amount;
}

void CheckRoom(const Purses &purses, AccountType type, int64_t amount) {
  if (!HasRoom(purses[static_cast<size_t>(type)], amount)) Refuse(Code::kIncorrectSum, AccountName(type));
}

// The share of a position's bonuses that belongs to the part of it that is back. Counted from the start each
// time, so that the roundings of several returns never add up to more or less than the whole.
int64_t ReturnedShare(int64_t bonuses, const Position &position) {
  return position.cost == 0 ? 0 : bonuses * position.returnedSum / position.cost;
}

bool IsReturned(const Position &position) {
  return position.returnedSum == position.cost &&
         (position.cost != 0 || position.returnedCount == position.count);
}

}  // namespace

struct Programme::Request {
  Operation operation = Operation::kBalance;
  std::string version;
  std::string id;
  std::string terminal;
  std::string card;
  std::string employee;
  bool isOffline = false;
};

long long SystemClock() {
  return std::chrono::duration_cast<std::chrono::seconds>(std::chrono::system_clock::now().time_since_epoch())
      .count();
}

Programme::Programme(Shop shop, Clock clock, std::unique_ptr<Store> store)
    : shop_(std::move(shop)), clock_(std::move(clock)), ledger_(std::move(store)) {
  const auto add = [this](const std::string &number, CardState state, const CardSetup *setup) {
    if (cards().count(number) != 0) return;
    Card &card = ledger_.EditCard(number);
    card.state = state;
    card.account = ledger_.OpenAccount();
    Purses &purses = ledger_.EditAccount(card.account);
    for (size_t i = 0; setup != nullptr && i < kAccountTypes; ++i) purses[i].balance = setup->balance[i];
  };
  for (const CardSetup &setup : shop_.cards) add(setup.number, setup.state, &setup);
  for (const auto &token : shop_.tokens) add(token.second, CardState::kSold, nullptr);
  ledger_.Keep();
}

Reply Programme::Handle(const OperationNames &operation, std::string_view document, Code refusal) {
  Reply reply;
  Request request;
  Parts parts = Parts::object();
  std::string message;
  const auto refuse = [&](Code code, const std::string &detail) {
    reply.code = code;
    reply.details = detail;
    parts = Parts::object();
  };
  const uint64_t number = ledger_.state().answers + 1;
  ledger_.CountAnswer();
  try {
    Judge(operation, document, refusal, &request, &reply, &parts);
  } catch (const Refusal &refused) {
    refuse(refused.code, refused.detail);
    if (!refused.detail.empty()) message = ": " + refused.detail;
  } catch (const std::exception &error) {
    ledger_.Undo();
    refuse(Code::kInternalError, error.what());
  }
  try {
    ledger_.Keep();
  } catch (const std::exception &error) {
    refuse(Code::kInternalError, error.what());
    message.clear();
  }

  Parts response;
  response["ver"] = request.version.empty() ? shop_.protocolVersion : request.version;
  // An id that could not be read stays out, so that the terminal keeps its own.
  if (!request.id.empty()) {
    const bool is_resumed = shop_.isIdResumedAfterReplay && request.isOffline;
    response["requestId"] = is_resumed ? HighestId(request) : request.id;
  }
  response["responseId"] = std::to_string(number);
  response["responseDate"] = Now();
  response["requestState"] = reply.code == Code::kOk ? "SUCCESS" : "ERROR";
  response["requestStateCode"] = CodeName(reply.code);
  response["message"] = CodeMessage(reply.code) + message;
  response["isNeedUpdate"] = shop_.update != Update::kNone;

  Parts content;
  content["response"] = std::move(response);
  for (auto &part : parts.items()) content[part.key()] = std::move(part.value());
  Parts answer;
  answer[operation.response] = std::move(content);
  reply.answer = answer.dump(-1, ' ', false, Parts::error_handler_t::replace);
  return reply;
}

void Programme::Judge(const OperationNames &operation, std::string_view document, Code refusal,
                      Request *request, Reply *reply, Parts *parts) {
  const json root = json::parse(document, nullptr, false);
  // The parser takes a zero byte for the end of the text.
  if (root.is_discarded() || document.find('\0') != std::string_view::npos) {
    Refuse(Code::kRequestParsingError);
  }
  if (!root.is_object() || root.size() != 1 || root.begin().key() != operation.request) {
    Refuse(Code::kIncorrectRequest, operation.request);
  }
  const json &content = root.begin().value();
  if (!content.is_object() || !content.contains("request") || !content["request"].is_object()) {
    Refuse(Code::kIncorrectRequest, "request");
  }

  const json &head = content["request"];
  request->operation = operation.operation;
  request->id = reply->requestId = TextOf(head, "requestId");
  request->terminal = reply->terminal = TextOf(head, "terminalId");
  request->card = reply->card = TextOf(head, "cardNum");
  request->version = TextOf(head, "ver");
  request->employee = TextOf(head, "employeeId");
  request->isOffline = FlagOf(head, "isOffline");
  if (TextOf(head, "type") != operation.type) Refuse(Code::kIncorrectRequest, "type");
  TextOf(head, "shiftId");
  if (!IsRequestDate(TextOf(head, "requestDate"))) Refuse(Code::kIncorrectRequestParam, "requestDate");

  if (refusal != Code::kOk) Refuse(refusal);
  if (!IsVersionSupported(request->version, shop_.protocolVersion)) Refuse(Code::kUnsupportedProtocolVersion);
  CheckTerminal(*request);
  CheckRequestId(operation, *request);
  if (operation.operation == Operation::kLastRrn) {
    (*parts)["rrn"]["rrNumber"] = reply->details = LastRequestId(request->terminal);
    return;
  }
  if (operation.operation == Operation::kAd) {
    (*parts)["ad"]["text"] = reply->details = shop_.advertisement;
    return;
  }

  if (shop_.update == Update::kRequired) Refuse(Code::kUpdateRequired);
  if (!shop_.users.empty() &&
      std::find(shop_.users.begin(), shop_.users.end(), request->employee) == shop_.users.end()) {
    Refuse(Code::kUnknownUser);
  }
  if (!IsCardNumber(request->card)) Refuse(Code::kCardNumberIncorrect);
  const json *part = nullptr;
  if (operation.part != nullptr && content.contains(operation.part)) part = &content[operation.part];
  Perform(*request, part, reply, parts);
  ledger_.AcceptId(request->id);
}

bool Programme::IsLocked(const std::string &terminal) const {
  const auto lock = ledger_.state().locks.find(terminal);
  if (lock != ledger_.state().locks.end()) return lock->second;
  const auto listed = shop_.terminals.find(terminal);
  return listed != shop_.terminals.end() && listed->second;
}

void Programme::CheckTerminal(const Request &request) const {
  if (IsLocked(request.terminal)) Refuse(Code::kLockedTerminal);
  const bool is_listed =
      shop_.terminals.count(request.terminal) != 0 || ledger_.state().locks.count(request.terminal) != 0;
  if (!is_listed && (!shop_.isAnyTerminalKnown || request.terminal.empty())) Refuse(Code::kUnknownTerminal);
}

// An id is taken by the operation that succeeds under it. A refused one may come again: a terminal sends its
// offline records unchanged until they are accepted.
void Programme::CheckRequestId(const OperationNames &operation, const Request &request) {
  if (request.id.empty()) Refuse(Code::kRequestIdEmpty);
  if (operation.is_service) return;
  if (!IsRequestId(request.id)) Refuse(Code::kIncorrectRequestId);
  const std::string last = LastRequestId(request.terminal);
  if (last.empty() || IsEarlier(last, request.id)) ledger_.SetLastId(request.terminal, request.id);
  if (ledger_.state().acceptedIds.count(request.id) != 0) Refuse(Code::kDuplicateRequestId);
}

// What a terminal goes on from after a replay. The request's own id counts also when it was refused before
// it was judged.
std::string Programme::HighestId(const Request &request) const {
  std::string last = LastRequestId(request.terminal);
  if (last.empty() || (IsRequestId(request.id) && IsEarlier(last, request.id))) return request.id;
  return last;
}

void Programme::Perform(const Request &request, const json *part, Reply *reply, Parts *parts) {
  switch (request.operation) {
    case Operation::kActivation:
      return Activate(request, part, reply, parts);
    case Operation::kPayment:
    case Operation::kPaymentAndConfirm:
      return Pay(request, PartOf(part, "bill"), reply, parts);
    case Operation::kPaymentConfirm:
      return ConfirmPayment(request, PartOf(part, "paymentConfirm"), reply);
    case Operation::kBalance:
      return Balance(request, reply, parts);
    case Operation::kCashBack:
      return ReturnGoods(request, PartOf(part, "cashBack"), reply, parts);
    case Operation::kLink:
      return Link(request, PartOf(part, "linkedCard"), reply);
    case Operation::kExchange:
      return Exchange(request, PartOf(part, "cardExchange"), reply);
    case Operation::kDeposit:
      return Deposit(request, PartOf(part, "deposit"), reply);
    case Operation::kAd:
    case Operation::kLastRrn:
      break;
  }
}

void Programme::Activate(const Request &request, const json *part, Reply *reply, Parts *parts) {
  const Card &card = CardOf(request.card);
  if (card.state == CardState::kLocked) Refuse(Code::kLockedCard);
  if (card.state == CardState::kActive) Refuse(Code::kAlreadyActivated);
  if (part == nullptr || !part->is_object()) Refuse(Code::kActivationBlockRequired);

  const std::string type = TextOf(*part, "activationType");
  const int32_t amount = AmountOf(*part, "amount");
  const Purses &purses = PursesOf(card);
  Reward activation{0, shop_.activation.account};
  Reward referral{0, shop_.referral.account};
  Reward gift{0, AccountType::kGlobal};
  if (type == "SIMPLE_ACTIVATION") {
    activation = shop_.activation;
    CheckRoom(purses, activation.account, activation.sum);
  } else if (type == "GIFT_CARD") {
    if (!part->contains("type") || !(*part)["type"].is_string() ||
        !FindAccountType((*part)["type"].get<std::string>(), &gift.account)) {
      Refuse(Code::kActivationSumTypeRequired);
    }
    if (amount == 0) Refuse(Code::kZeroActivationError);
    gift.sum = amount;
    CheckRoom(purses, gift.account, gift.sum);
  } else if (type == "REFER_A_FRIEND") {
    const Card *parent =
        part->contains("referParentCardNum") ? FindCard(TextOf(*part, "referParentCardNum")) : nullptr;
    if (parent == nullptr || parent->state != CardState::kActive) Refuse(Code::kReferralNotFound);
    if (parent->friends >= shop_.referralLimit) Refuse(Code::kReferralLimitReached);
    activation = shop_.activation;
    referral = shop_.referral;
    CheckRoom(purses, activation.account, activation.sum);
    CheckRoom(PursesOf(*parent), referral.account, referral.sum);
    Credit(&ledger_.EditAccount(parent->account), referral.account, referral.sum);
    ++ledger_.EditCard(parent->number).friends;
  } else {
    Refuse(Code::kIncorrectRequestParam, "activationType");
  }
  Credit(&ledger_.EditAccount(card.account), activation.account, activation.sum);
  Credit(&ledger_.EditAccount(card.account), gift.account, gift.sum);
  ledger_.EditCard(card.number).state = CardState::kActive;

  Parts result;
  result["activationSum"] = activation.sum;
  result["activationSumType"] = AccountName(activation.account);
  result["referralSum"] = referral.sum;
  result["referralSumType"] = AccountName(referral.account);
  result["giftSum"] = gift.sum;
  result["giftSumType"] = AccountName(gift.account);
  (*parts)["activationResult"] = std::move(result);
  reply->details = type + ", activation " + AmountText(activation.sum) + ", referral " +
                   AmountText(referral.sum) + ", gift " + AmountText(gift.sum);
}

std::vector<Position> Programme::ReadPositions(const json &bill, int64_t total_sum) const {
  std::vector<Position> positions;
  const int32_t declared = NumberOf(bill, "orderLen", Code::kIncorrectBill);
  if (!bill.contains("goodList")) return positions;  // a bare total: nothing to earn on
  const json &list = bill["goodList"];
  if (!list.is_object() || !list.contains("good") || !list["good"].is_array()) {
    Refuse(Code::kIncorrectBill, "goodList");
  }
  std::set<int32_t> numbers;
  int64_t sum = 0;
  for (const json &good : list["good"]) {
    if (!good.is_object()) Refuse(Code::kIncorrectBill, "good");
    TextOf(good, "title");
    TextOf(good, "productCode");
    Position position;
    position.cost = AmountOf(good, "positionCost");
    position.number = NumberOf(good, "orderNum", Code::kIncorrectBill);
    position.count = NumberOf(good, "cnt", Code::kIncorrectBill);
    sum += position.cost;
    if (shop_.isBillChecked && position.count < 1) Refuse(Code::kIncorrectBill, "cnt");
    if (!numbers.insert(position.number).second && shop_.isBillChecked) {
      Refuse(Code::kIncorrectBill, "orderNum");
    }
    positions.push_back(position);
  }
  if (shop_.isBillChecked && sum != total_sum) Refuse(Code::kIncorrectBill, "totalSum");
  if (shop_.isBillChecked && static_cast<size_t>(std::max(declared, 0)) != positions.size()) {
    Refuse(Code::kIncorrectBill, "orderLen");
  }
  return positions;
}

// Position by position: bonuses pay up to the limit, from the shop's own account first; what is left to pay
// in money earns. The organiser's fee is charged against the local earning first, the rest of it against
// the global one.
void Programme::CountBonuses(bool is_spending, Purses purses, std::vector<Position> *positions) const {
  constexpr std::array<AccountType, kAccountTypes> kSpendingOrder = {
      AccountType::kLocal, AccountType::kGlobal, AccountType::kDiscount};
  const Rates &rates = shop_.rates;
  for (Position &position : *positions) {
    int64_t payable = is_spending ? Percent(position.cost, rates.spendLimit) : 0;
    for (const AccountType type : kSpendingOrder) {
      const auto i = static_cast<size_t>(type);
      position.spent[i] = std::min(payable, purses[i].Available());
      purses[i].reserved += position.spent[i];
      payable -= position.spent[i];
    }
    const int64_t money = position.cost - Sum(position.spent);
    position.earned = {Percent(money, rates.global), Percent(money, rates.local),
                       Percent(money, rates.discount)};
    position.fee = std::min(Percent(money, rates.organizerFee), position.earned[0] + position.earned[1]);
  }
}

void Programme::Pay(const Request &request, const json &bill, Reply *reply, Parts *parts) {
  const Card &card = ActiveCard(request.card);
  Payment payment;
  payment.requestId = request.id;
  payment.number = ledger_.state().answers;
  payment.time = Now();
  payment.terminal = request.terminal;
  payment.card = card.number;
  payment.account = card.account;
  payment.totalSum = AmountOf(bill, "totalSum");
  const bool is_spending = FlagOf(bill, "spendBonus");
  const int32_t partner_fee = NumberOf(bill, "partnerFee", Code::kIncorrectSum);
  const std::string bill_number = TextOf(bill, "billNum");
  const std::string bill_date = TextOf(bill, "billDate");
  if (shop_.rates.organizerFee > shop_.rates.global + shop_.rates.local) {
    Refuse(Code::kRetailPointConfigError, "organizerFee");
  }
  payment.positions = ReadPositions(bill, payment.totalSum);
  Purses &purses = ledger_.EditAccount(card.account);
  CountBonuses(is_spending, purses, &payment.positions);

  Amounts spent{};
  Amounts earned{};
  for (const Position &position : payment.positions) {
    for (size_t i = 0; i < kAccountTypes; ++i) {
      spent[i] += position.spent[i];
      earned[i] += position.earned[i];
    }
  }
  for (const AccountType type : kAllAccountTypes) CheckRoom(purses, type, earned[static_cast<size_t>(type)]);
  for (size_t i = 0; i < kAccountTypes; ++i) {
    purses[i].reserved += spent[i];
    purses[i].expected += earned[i];
  }

  Parts answer;
  answer["totalSum"] = payment.totalSum;
  answer["billNum"] = bill_number;
  answer["orderLen"] = bill["orderLen"];
  answer["billDate"] = bill_date;
  answer["partnerFee"] = partner_fee;
  if (!payment.positions.empty()) {
    Parts goods = Parts::array();
    const json &list = bill["goodList"]["good"];
    for (size_t n = 0; n < payment.positions.size(); ++n) {
      const Position &position = payment.positions[n];
      Parts good;
      good["title"] = list[n]["title"].get<std::string>();
      good["productCode"] = list[n]["productCode"].get<std::string>();
      good["positionCost"] = position.cost;
      good["orderNum"] = position.number;
      good["cnt"] = position.count;
      const int64_t local_fee = std::min(position.fee, position.earned[1]);
      const Amounts fees = {position.fee - local_fee, local_fee, 0};
      Parts bonuses = Parts::array();
      for (size_t i = 0; i < kAccountTypes; ++i) {
        if (position.earned[i] == 0 && position.spent[i] == 0) continue;
        Parts bonus;
        bonus["earned"] = position.earned[i];
        bonus["spend"] = position.spent[i];
        bonus["organizerFee"] = fees[i];
        bonus["accountType"] = AccountName(kAllAccountTypes[i]);
        bonuses.push_back(std::move(bonus));
      }
      if (!bonuses.empty()) good["bonus"] = std::move(bonuses);
      goods.push_back(std::move(good));
    }
    answer["goodList"]["good"] = std::move(goods);
  }
  (*parts)["bill"] = std::move(answer);
  reply->details = "sum " + AmountText(payment.totalSum) + ", spent " + AmountText(Sum(spent)) + ", earned " +
                   AmountText(Sum(earned));

  ledger_.EditPayment(request.id) = std::move(payment);
  if (request.operation == Operation::kPaymentAndConfirm) Settle(request.id);
}

// Does what a held payment promised.
void Programme::Settle(const std::string &request_id) {
  Payment &payment = ledger_.EditPayment(request_id);
  Purses &purses = ledger_.EditAccount(payment.account);
  for (const Position &position : payment.positions) {
    for (size_t i = 0; i < kAccountTypes; ++i) {
      purses[i].reserved -= position.spent[i];
      purses[i].balance -= position.spent[i];
      purses[i].expected -= position.earned[i];
      purses[i].balance += position.earned[i];
    }
  }
  payment.state = PaymentState::kConfirmed;
}

void Programme::ConfirmPayment(const Request &request, const json &part, Reply *reply) {
  ActiveCard(request.card);
  const std::string id = TextOf(part, "requestId");
  const bool is_confirm = FlagOf(part, "isConfirm");
  const Payment &payment = PaymentOf(request, id);
  if (payment.state != PaymentState::kHeld) {
    Refuse(Code::kBillIncorrectState, PaymentStateName(payment.state));
  }
  if (is_confirm) {
    Settle(id);
  } else {
    Purses &purses = ledger_.EditAccount(payment.account);
    for (const Position &position : payment.positions) {
      for (size_t i = 0; i < kAccountTypes; ++i) {
        purses[i].reserved -= position.spent[i];
        purses[i].expected -= position.earned[i];
      }
    }
    ledger_.EditPayment(id).state = PaymentState::kCanceled;
  }
  reply->details = id + " " + PaymentStateName(payment.state) + ", sum " + AmountText(payment.totalSum);
}

void Programme::Balance(const Request &request, Reply *reply, Parts *parts) {
  const Purses &purses = PursesOf(ActiveCard(request.card));
  Parts accounts = Parts::array();
  for (const AccountType type : kAllAccountTypes) {
    const Purse &purse = purses[static_cast<size_t>(type)];
    Parts account;
    account["accountType"] = AccountName(type);
    account["availableAmount"] = purse.Available();
    account["amount"] = purse.balance;
    accounts.push_back(std::move(account));
    reply->details += (reply->details.empty() ? "" : ", ") + std::string(AccountName(type)) + " " +
                      AmountText(purse.balance) + " (" + AmountText(purse.Available()) + ")";
  }
  (*parts)["balance"]["account"] = std::move(accounts);
}

void Programme::ReturnGoods(const Request &request, const json &part, Reply *reply, Parts *parts) {
  ActiveCard(request.card);
  const std::string type = TextOf(part, "cashBackType");
  if (type != "FULL" && type != "SEQ") Refuse(Code::kUnknownCashBackType);
  const Payment &payment = PaymentOf(request, TextOf(part, "requestId"));
  if (payment.state == PaymentState::kHeld) Refuse(Code::kUnprocessedBill);
  if (payment.state != PaymentState::kConfirmed) {
    Refuse(Code::kBillIncorrectState, PaymentStateName(payment.state));
  }

  std::vector<Position> positions = payment.positions;
  if (type == "FULL") {
    for (Position &position : positions) {
      position.returnedSum = position.cost;
      position.returnedCount = position.count;
    }
  } else {
    if (!part.contains("cashBackGood") || !part["cashBackGood"].is_array() || part["cashBackGood"].empty()) {
      Refuse(Code::kIncorrectRequestParam, "cashBackGood");
    }
    std::unordered_map<int32_t, Position *> by_number;
    for (Position &position : positions) by_number.emplace(position.number, &position);
    for (const json &good : part["cashBackGood"]) {
      if (!good.is_object()) Refuse(Code::kIncorrectRequestParam, "cashBackGood");
      const auto found = by_number.find(NumberOf(good, "pos", Code::kIncorrectBill));
      const int32_t sum = AmountOf(good, "sum");
      const int32_t count = NumberOf(good, "cnt", Code::kIncorrectBill);
      if (found == by_number.end()) Refuse(Code::kIncorrectBill, "pos");
      Position &position = *found->second;
      if (count < 1 || count > position.count - position.returnedCount) Refuse(Code::kIncorrectBill, "cnt");
      if (sum > position.cost - position.returnedSum || (sum == 0 && position.cost != 0)) {
        Refuse(Code::kIncorrectSum, "sum");
      }
      position.returnedSum += sum;
      position.returnedCount += count;
    }
  }

  Amounts restored{};
  Amounts withdrawn{};
  for (size_t n = 0; n < positions.size(); ++n) {
    const Position &before = payment.positions[n];
    const Position &after = positions[n];
    for (size_t i = 0; i < kAccountTypes; ++i) {
      restored[i] += ReturnedShare(after.spent[i], after) - ReturnedShare(before.spent[i], before);
      withdrawn[i] += ReturnedShare(after.earned[i], after) - ReturnedShare(before.earned[i], before);
    }
  }
  Purses &purses = ledger_.EditAccount(payment.account);
  for (const AccountType type_of : kAllAccountTypes) {
    CheckRoom(purses, type_of, restored[static_cast<size_t>(type_of)]);
  }
  for (size_t i = 0; i < kAccountTypes; ++i) {
    purses[i].balance += restored[i];
    // What was earned goes back as far as it is still there: a customer never owes bonuses.
    purses[i].balance -= std::min(withdrawn[i], purses[i].Available());
  }
  Payment &edited = ledger_.EditPayment(payment.requestId);
  edited.positions = std::move(positions);
  if (std::all_of(edited.positions.begin(), edited.positions.end(), IsReturned)) {
    edited.state = PaymentState::kReturned;
  }
  (*parts)["cashBackResult"]["returnedSum"] = Sum(restored);
  reply->details = type + " " + payment.requestId + ", returned " + AmountText(Sum(restored)) +
                   ", withdrawn " + AmountText(Sum(withdrawn));
}

// The card shares the account of another from now on; what its own account holds goes along.
void Programme::Link(const Request &request, const json &part, Reply *reply) {
  const Card &card = CardOf(request.card);
  if (card.state == CardState::kLocked) Refuse(Code::kLockedCard);
  const std::string number = TextOf(part, "linkedCardNum");
  if (!IsCardNumber(number)) Refuse(Code::kCardNumberIncorrect, "linkedCardNum");
  const Card &other = ActiveCard(number);
  if (card.account == other.account) Refuse(Code::kIncorrectRequestParam, "linkedCardNum");
  JoinAccounts(card.account, other.account);
  ledger_.EditCard(card.number).state = CardState::kActive;
  reply->details = "joins " + number;
}

// Everything that belongs to one account belongs to another from now on.
void Programme::JoinAccounts(size_t from, size_t to) {
  if (from == to) return;
  const Purses moved = ledger_.state().accounts[from];
  Purses &purses = ledger_.EditAccount(to);
  for (const AccountType type : kAllAccountTypes) {
    const Purse &purse = moved[static_cast<size_t>(type)];
    CheckRoom(purses, type, purse.balance + purse.expected);
  }
  for (size_t i = 0; i < kAccountTypes; ++i) {
    purses[i].balance += moved[i].balance;
    purses[i].reserved += moved[i].reserved;
    purses[i].expected += moved[i].expected;
  }
  ledger_.EditAccount(from) = Purses{};
  for (const auto &entry : cards()) {
    if (entry.second.account == from) ledger_.EditCard(entry.first).account = to;
  }
  for (const auto &entry : payments()) {
    if (entry.second.account == from) ledger_.EditPayment(entry.first).account = to;
  }
}

// A new card takes the place of the customer's; the token came with the new one and is good once.
void Programme::Exchange(const Request &request, const json &part, Reply *reply) {
  const Card &card = ActiveCard(request.card);
  const auto token = shop_.tokens.find(TextOf(part, "token"));
  if (token == shop_.tokens.end() || ledger_.state().usedTokens.count(token->first) != 0) {
    Refuse(Code::kIncorrectToken);
  }
  const Card &fresh = CardOf(token->second);
  if (fresh.state != CardState::kSold) Refuse(Code::kIncorrectToken, CardStateName(fresh.state));
  JoinAccounts(fresh.account, card.account);
  Card &edited = ledger_.EditCard(fresh.number);
  edited.state = CardState::kActive;
  edited.friends = card.friends;
  ledger_.EditCard(card.number).state = CardState::kLocked;
  ledger_.UseToken(token->first);
  reply->details = "now " + fresh.number;
}

void Programme::Deposit(const Request &request, const json &part, Reply *reply) {
  Purses &purses = ledger_.EditAccount(ActiveCard(request.card).account);
  const int32_t amount = AmountOf(part, "amount");
  CheckRoom(purses, shop_.depositAccount, amount);
  Credit(&purses, shop_.depositAccount, amount);
  reply->details = "amount " + AmountText(amount);
}

const Card &Programme::CardOf(const std::string &number) const {
  const Card *card = FindCard(number);
  if (card == nullptr) Refuse(Code::kCardNotFound);
  return *card;
}

const Card &Programme::ActiveCard(const std::string &number) const {
  const Card &card = CardOf(number);
  if (card.state == CardState::kLocked) Refuse(Code::kLockedCard);
  if (card.state == CardState::kSold) Refuse(Code::kActivationRequired);
  return card;
}

// A payment is known to the account that made it, whichever of its cards is shown.
const Payment &Programme::PaymentOf(const Request &request, const std::string &request_id) const {
  const auto payment = payments().find(request_id);
  if (payment == payments().end() || payment->second.account != CardOf(request.card).account) {
    Refuse(Code::kBillNotFound);
  }
  return payment->second;
}

const Purses &Programme::PursesOf(const Card &card) const {
  return ledger_.state().accounts.at(card.account);
}

const Card *Programme::FindCard(const std::string &number) const {
  const auto card = cards().find(number);
  return card == cards().end() ? nullptr : &card->second;
}

std::string Programme::LastRequestId(const std::string &terminal) const {
  const auto last = ledger_.state().lastIds.find(terminal);
  return last == ledger_.state().lastIds.end() ? std::string() : last->second;
}

std::map<std::string, TerminalState> Programme::Terminals() const {
  std::map<std::string, TerminalState> terminals;
  for (const auto &entry : shop_.terminals) terminals[entry.first];
  for (const auto &entry : ledger_.state().locks) terminals[entry.first];
  for (const auto &entry : ledger_.state().lastIds) terminals[entry.first].lastId = entry.second;
  for (auto &entry : terminals) entry.second.isLocked = IsLocked(entry.first);
  return terminals;
}

bool Programme::SetCardState(const std::string &number, CardState state) {
  if (FindCard(number) == nullptr) return false;
  ledger_.EditCard(number).state = state;
  ledger_.Keep();
  return true;
}

void Programme::LockTerminal(const std::string &terminal, bool is_locked) {
  ledger_.SetLock(terminal, is_locked);
  ledger_.Keep();
}

}  // namespace loyalty
