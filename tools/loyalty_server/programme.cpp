#include "loyalty_server/programme.h"

#include <algorithm>
#include <chrono>
#include <limits>
#include <tuple>
#include <unordered_map>

namespace loyalty {
namespace {

using nlohmann::json;
using nlohmann::ordered_json;

constexpr std::int64_t kMostAmount = std::numeric_limits<std::int32_t>::max();
constexpr std::size_t kLongestCardNumber = 64;

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
std::int32_t NumberOf(const json &object, const char *key, Code wrong) {
  const json &value = Member(object, key);
  if (!value.is_number()) Refuse(Code::kIncorrectRequestParam, key);
  if (!value.is_number_integer()) Refuse(wrong, key);
  if (value.is_number_unsigned() && value.get<std::uint64_t>() > static_cast<std::uint64_t>(kMostAmount)) {
    Refuse(wrong, key);
  }
  const std::int64_t number = value.get<std::int64_t>();
  if (number < std::numeric_limits<std::int32_t>::min() || number > kMostAmount) Refuse(wrong, key);
  return static_cast<std::int32_t>(number);
}

std::int32_t AmountOf(const json &object, const char *key) {
  const std::int32_t amount = NumberOf(object, key, Code::kIncorrectSum);
  if (amount < 0) Refuse(Code::kIncorrectSum, key);
  return amount;
}

const json &PartOf(const json *part, const char *name) {
  if (part == nullptr || !part->is_object()) Refuse(Code::kIncorrectRequestParam, name);
  return *part;
}

bool IsDigits(std::string_view text) {
  return std::all_of(text.begin(), text.end(), [](char c) { return c >= '0' && c <= '9'; });
}

bool IsCardNumber(std::string_view number) {
  return !number.empty() && number.size() <= kLongestCardNumber &&
         std::all_of(number.begin(), number.end(), [](char c) { return c > ' ' && c <= '~'; });
}

bool IsBetween(std::string_view two_digits, int least, int most) {
  const int number = (two_digits[0] - '0') * 10 + (two_digits[1] - '0');
  return number >= least && number <= most;
}

// Five characters of the terminal, the date, a counter that outgrows its five digits late on a busy day.
bool IsRequestId(std::string_view id) {
  return id.size() >= 16 && id.size() <= 20 && IsDigits(id.substr(5)) && IsBetween(id.substr(7, 2), 1, 12) &&
         IsBetween(id.substr(9, 2), 1, 31);
}

// The request ids of a terminal in the order it made them.
bool IsEarlier(std::string_view id, std::string_view other) {
  const auto key = [](std::string_view text) {
    const std::string_view counter = text.substr(11);
    const std::size_t zeros = std::min(counter.find_first_not_of('0'), counter.size());
    return std::make_tuple(text.substr(5, 6), counter.size() - zeros, counter.substr(zeros));
  };
  return key(id) < key(other);
}

bool IsRequestDate(std::string_view date) {
  constexpr std::string_view kShape = "0000-00-00T00:00:00Z";
  if (date.size() != kShape.size()) return false;
  for (std::size_t i = 0; i < date.size(); ++i) {
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

std::int64_t Percent(std::int64_t amount, std::int64_t percent) {
  return amount * percent / 100;
}

std::int64_t Sum(const Amounts &amounts) {
  return amounts[0] + amounts[1] + amounts[2];
}

// Whether the purse can take the amount without ever passing 32 bits.
bool HasRoom(const Purse &purse, std::int64_t amount) {
  return purse.balance + purse.expected + amount <= kMostAmount;
}

void Credit(Purses *purses, AccountType type, std::int64_t amount) {
  (*purses)[static_cast<std::size_t>(type)].balance += amount;
}

void CheckRoom(const Purses &purses, AccountType type, std::int64_t amount) {
  if (!HasRoom(purses[static_cast<std::size_t>(type)], amount))
    Refuse(Code::kIncorrectSum, AccountName(type));
}

// The share of a position's bonuses that belongs to the part of it that is back. Counted from the start each
// time, so that the roundings of several returns never add up to more or less than the whole.
std::int64_t ReturnedShare(std::int64_t bonuses, const Position &position) {
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

const char *PaymentStateName(PaymentState state) {
  constexpr std::array<const char *, 4> kNames = {"held", "confirmed", "canceled", "returned"};
  return kNames.at(static_cast<std::size_t>(state));
}

Programme::Programme(Shop shop, Clock clock) : shop_(std::move(shop)), clock_(std::move(clock)) {
  for (const CardSetup &setup : shop_.cards) {
    Purses purses;
    for (std::size_t i = 0; i < kAccountTypes; ++i) purses[i].balance = setup.balance[i];
    accounts_.push_back(purses);
    cards_[setup.number] = Card{setup.number, setup.state, accounts_.size() - 1, 0};
  }
  for (const auto &token : shop_.tokens) {
    if (cards_.count(token.second) != 0) continue;
    accounts_.emplace_back();
    cards_[token.second] = Card{token.second, CardState::kSold, accounts_.size() - 1, 0};
  }
}

Reply Programme::Handle(const OperationNames &operation, std::string_view document, Code refusal) {
  Reply reply;
  Request request;
  Parts parts = Parts::object();
  std::string message;
  try {
    Judge(operation, document, refusal, &request, &reply, &parts);
  } catch (const Refusal &refused) {
    reply.code = refused.code;
    if (!refused.detail.empty()) message = ": " + refused.detail;
    reply.details = refused.detail;
    parts = Parts::object();
  } catch (const std::exception &error) {
    reply.code = Code::kInternalError;
    reply.details = error.what();
    parts = Parts::object();
  }

  Parts response;
  response["ver"] = request.version.empty() ? shop_.protocolVersion : request.version;
  // An id that could not be read stays out, so that the terminal keeps its own.
  if (!request.id.empty()) {
    const bool is_resumed = shop_.isIdResumedAfterReplay && request.isOffline;
    response["requestId"] = is_resumed ? HighestId(request) : request.id;
  }
  response["responseId"] = std::to_string(++answers_);
  response["responseDate"] = Now();
  response["requestState"] = reply.code == Code::kOk ? "SUCCESS" : "ERROR";
  response["requestStateCode"] = CodeName(reply.code);
  response["message"] = CodeMessage(reply.code) + message;
  response["isNeedUpdate"] = shop_.update != Update::kNone;

  Parts content;
  content["response"] = std::move(response);
  for (auto &part : parts.items()) content[part.key()] = std::move(part.value());
  reply.document[operation.response] = std::move(content);
  return reply;
}

void Programme::Judge(const OperationNames &operation, std::string_view document, Code refusal,
                      Request *request, Reply *reply, Parts *parts) {
  const json root = json::parse(document, nullptr, false);
  // The parser takes a zero byte for the end of the text.
  if (root.is_discarded() || document.find('\0') != std::string_view::npos)
    Refuse(Code::kRequestParsingError);
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
  accepted_ids_.insert(request->id);
}

void Programme::CheckTerminal(const Request &request) const {
  const auto terminal = shop_.terminals.find(request.terminal);
  if (terminal != shop_.terminals.end()) {
    if (terminal->second) Refuse(Code::kLockedTerminal);
  } else if (!shop_.isAnyTerminalKnown || request.terminal.empty()) {
    Refuse(Code::kUnknownTerminal);
  }
}

// An id is taken by the operation that succeeds under it. A refused one may come again: a terminal sends its
// offline records unchanged until they are accepted.
void Programme::CheckRequestId(const OperationNames &operation, const Request &request) {
  if (request.id.empty()) Refuse(Code::kRequestIdEmpty);
  if (operation.is_service) return;
  if (!IsRequestId(request.id)) Refuse(Code::kIncorrectRequestId);
  std::string &last = last_ids_[request.terminal];
  if (last.empty() || IsEarlier(last, request.id)) last = request.id;
  if (accepted_ids_.count(request.id) != 0) Refuse(Code::kDuplicateRequestId);
}

// What a terminal goes on from after a replay. The request's own id counts also when it was refused before it
// was judged.
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
  Card &card = CardOf(request.card);
  if (card.state == CardState::kLocked) Refuse(Code::kLockedCard);
  if (card.state == CardState::kActive) Refuse(Code::kAlreadyActivated);
  if (part == nullptr || !part->is_object()) Refuse(Code::kActivationBlockRequired);

  const std::string type = TextOf(*part, "activationType");
  const std::int32_t amount = AmountOf(*part, "amount");
  Purses &purses = AccountOf(card);
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
    const auto parent = part->contains("referParentCardNum")
                            ? cards_.find(TextOf(*part, "referParentCardNum"))
                            : cards_.end();
    if (parent == cards_.end() || parent->second.state != CardState::kActive) Refuse(Code::kReferralNotFound);
    if (parent->second.friends >= shop_.referralLimit) Refuse(Code::kReferralLimitReached);
    activation = shop_.activation;
    referral = shop_.referral;
    Purses &parent_purses = AccountOf(parent->second);
    CheckRoom(purses, activation.account, activation.sum);
    CheckRoom(parent_purses, referral.account, referral.sum);
    Credit(&parent_purses, referral.account, referral.sum);
    ++parent->second.friends;
  } else {
    Refuse(Code::kIncorrectRequestParam, "activationType");
  }
  Credit(&purses, activation.account, activation.sum);
  Credit(&purses, gift.account, gift.sum);
  card.state = CardState::kActive;

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

std::vector<Position> Programme::ReadPositions(const json &bill, std::int64_t total_sum) const {
  std::vector<Position> positions;
  const std::int32_t declared = NumberOf(bill, "orderLen", Code::kIncorrectBill);
  if (!bill.contains("goodList")) return positions;  // a bare total: nothing to earn on
  const json &list = bill["goodList"];
  if (!list.is_object() || !list.contains("good") || !list["good"].is_array()) {
    Refuse(Code::kIncorrectBill, "goodList");
  }
  std::set<std::int32_t> numbers;
  std::int64_t sum = 0;
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
    if (!numbers.insert(position.number).second && shop_.isBillChecked)
      Refuse(Code::kIncorrectBill, "orderNum");
    positions.push_back(position);
  }
  if (shop_.isBillChecked && sum != total_sum) Refuse(Code::kIncorrectBill, "totalSum");
  if (shop_.isBillChecked && static_cast<std::size_t>(std::max(declared, 0)) != positions.size()) {
    Refuse(Code::kIncorrectBill, "orderLen");
  }
  return positions;
}

// Position by position: bonuses pay up to the limit, from the shop's own account first; what is left to pay
// in money earns. The organiser's fee is charged against the local earning first, the rest of it against the
// global one.
void Programme::CountBonuses(bool is_spending, Purses purses, std::vector<Position> *positions) const {
  constexpr std::array<AccountType, kAccountTypes> kSpendingOrder = {
      AccountType::kLocal, AccountType::kGlobal, AccountType::kDiscount};
  const Rates &rates = shop_.rates;
  for (Position &position : *positions) {
    std::int64_t payable = is_spending ? Percent(position.cost, rates.spendLimit) : 0;
    for (const AccountType type : kSpendingOrder) {
      const auto i = static_cast<std::size_t>(type);
      position.spent[i] = std::min(payable, purses[i].Available());
      purses[i].reserved += position.spent[i];
      payable -= position.spent[i];
    }
    const std::int64_t money = position.cost - Sum(position.spent);
    position.earned = {Percent(money, rates.global), Percent(money, rates.local),
                       Percent(money, rates.discount)};
    position.fee = std::min(Percent(money, rates.organizerFee), position.earned[0] + position.earned[1]);
  }
}

void Programme::Pay(const Request &request, const json &bill, Reply *reply, Parts *parts) {
  const Card &card = ActiveCard(request.card);
  Payment payment;
  payment.requestId = request.id;
  payment.card = card.number;
  payment.account = card.account;
  payment.totalSum = AmountOf(bill, "totalSum");
  const bool is_spending = FlagOf(bill, "spendBonus");
  const std::int32_t partner_fee = NumberOf(bill, "partnerFee", Code::kIncorrectSum);
  const std::string bill_number = TextOf(bill, "billNum");
  const std::string bill_date = TextOf(bill, "billDate");
  if (shop_.rates.organizerFee > shop_.rates.global + shop_.rates.local) {
    Refuse(Code::kRetailPointConfigError, "organizerFee");
  }
  payment.positions = ReadPositions(bill, payment.totalSum);
  Purses &purses = AccountOf(card);
  CountBonuses(is_spending, purses, &payment.positions);

  Amounts spent{};
  Amounts earned{};
  for (const Position &position : payment.positions) {
    for (std::size_t i = 0; i < kAccountTypes; ++i) {
      spent[i] += position.spent[i];
      earned[i] += position.earned[i];
    }
  }
  for (const AccountType type : kAllAccountTypes)
    CheckRoom(purses, type, earned[static_cast<std::size_t>(type)]);
  for (std::size_t i = 0; i < kAccountTypes; ++i) {
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
    for (std::size_t n = 0; n < payment.positions.size(); ++n) {
      const Position &position = payment.positions[n];
      Parts good;
      good["title"] = list[n]["title"].get<std::string>();
      good["productCode"] = list[n]["productCode"].get<std::string>();
      good["positionCost"] = position.cost;
      good["orderNum"] = position.number;
      good["cnt"] = position.count;
      const std::int64_t local_fee = std::min(position.fee, position.earned[1]);
      const Amounts fees = {position.fee - local_fee, local_fee, 0};
      Parts bonuses = Parts::array();
      for (std::size_t i = 0; i < kAccountTypes; ++i) {
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

  Payment &kept = payments_[request.id] = std::move(payment);
  if (request.operation == Operation::kPaymentAndConfirm) Settle(&kept);
}

// Does what a held payment promised.
void Programme::Settle(Payment *payment) {
  Purses &purses = accounts_[payment->account];
  for (const Position &position : payment->positions) {
    for (std::size_t i = 0; i < kAccountTypes; ++i) {
      purses[i].reserved -= position.spent[i];
      purses[i].balance -= position.spent[i];
      purses[i].expected -= position.earned[i];
      purses[i].balance += position.earned[i];
    }
  }
  payment->state = PaymentState::kConfirmed;
}

void Programme::ConfirmPayment(const Request &request, const json &part, Reply *reply) {
  ActiveCard(request.card);
  const std::string id = TextOf(part, "requestId");
  const bool is_confirm = FlagOf(part, "isConfirm");
  Payment &payment = PaymentOf(request, id);
  if (payment.state != PaymentState::kHeld) {
    Refuse(Code::kBillIncorrectState, PaymentStateName(payment.state));
  }
  if (is_confirm) {
    Settle(&payment);
  } else {
    Purses &purses = accounts_[payment.account];
    for (const Position &position : payment.positions) {
      for (std::size_t i = 0; i < kAccountTypes; ++i) {
        purses[i].reserved -= position.spent[i];
        purses[i].expected -= position.earned[i];
      }
    }
    payment.state = PaymentState::kCanceled;
  }
  reply->details = id + " " + PaymentStateName(payment.state) + ", sum " + AmountText(payment.totalSum);
}

void Programme::Balance(const Request &request, Reply *reply, Parts *parts) {
  const Purses &purses = PursesOf(ActiveCard(request.card));
  Parts accounts = Parts::array();
  for (const AccountType type : kAllAccountTypes) {
    const Purse &purse = purses[static_cast<std::size_t>(type)];
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
  Payment &payment = PaymentOf(request, TextOf(part, "requestId"));
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
    std::unordered_map<std::int32_t, Position *> by_number;
    for (Position &position : positions) by_number.emplace(position.number, &position);
    for (const json &good : part["cashBackGood"]) {
      if (!good.is_object()) Refuse(Code::kIncorrectRequestParam, "cashBackGood");
      const auto found = by_number.find(NumberOf(good, "pos", Code::kIncorrectBill));
      const std::int32_t sum = AmountOf(good, "sum");
      const std::int32_t count = NumberOf(good, "cnt", Code::kIncorrectBill);
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
  for (std::size_t n = 0; n < positions.size(); ++n) {
    const Position &before = payment.positions[n];
    const Position &after = positions[n];
    for (std::size_t i = 0; i < kAccountTypes; ++i) {
      restored[i] += ReturnedShare(after.spent[i], after) - ReturnedShare(before.spent[i], before);
      withdrawn[i] += ReturnedShare(after.earned[i], after) - ReturnedShare(before.earned[i], before);
    }
  }
  Purses &purses = accounts_[payment.account];
  for (const AccountType type_of : kAllAccountTypes) {
    CheckRoom(purses, type_of, restored[static_cast<std::size_t>(type_of)]);
  }
  for (std::size_t i = 0; i < kAccountTypes; ++i) {
    purses[i].balance += restored[i];
    // What was earned goes back as far as it is still there: a customer never owes bonuses.
    purses[i].balance -= std::min(withdrawn[i], purses[i].Available());
  }
  payment.positions = std::move(positions);
  if (std::all_of(payment.positions.begin(), payment.positions.end(), IsReturned)) {
    payment.state = PaymentState::kReturned;
  }
  (*parts)["cashBackResult"]["returnedSum"] = Sum(restored);
  reply->details = type + " " + payment.requestId + ", returned " + AmountText(Sum(restored)) +
                   ", withdrawn " + AmountText(Sum(withdrawn));
}

// The card shares the account of another from now on; what its own account holds goes along.
void Programme::Link(const Request &request, const json &part, Reply *reply) {
  Card &card = CardOf(request.card);
  if (card.state == CardState::kLocked) Refuse(Code::kLockedCard);
  const std::string number = TextOf(part, "linkedCardNum");
  if (!IsCardNumber(number)) Refuse(Code::kCardNumberIncorrect, "linkedCardNum");
  const Card &other = ActiveCard(number);
  if (card.account == other.account) Refuse(Code::kIncorrectRequestParam, "linkedCardNum");
  JoinAccounts(card.account, other.account);
  card.state = CardState::kActive;
  reply->details = "joins " + number;
}

// Everything that belongs to one account belongs to another from now on.
void Programme::JoinAccounts(std::size_t from, std::size_t to) {
  if (from == to) return;
  for (const AccountType type : kAllAccountTypes) {
    const Purse &purse = accounts_[from][static_cast<std::size_t>(type)];
    CheckRoom(accounts_[to], type, purse.balance + purse.expected);
  }
  for (std::size_t i = 0; i < kAccountTypes; ++i) {
    accounts_[to][i].balance += accounts_[from][i].balance;
    accounts_[to][i].reserved += accounts_[from][i].reserved;
    accounts_[to][i].expected += accounts_[from][i].expected;
  }
  accounts_[from] = Purses{};
  for (auto &entry : cards_) {
    if (entry.second.account == from) entry.second.account = to;
  }
  for (auto &entry : payments_) {
    if (entry.second.account == from) entry.second.account = to;
  }
}

// A new card takes the place of the customer's; the token came with the new one and is good once.
void Programme::Exchange(const Request &request, const json &part, Reply *reply) {
  Card &card = ActiveCard(request.card);
  const auto token = shop_.tokens.find(TextOf(part, "token"));
  if (token == shop_.tokens.end()) Refuse(Code::kIncorrectToken);
  Card &fresh = CardOf(token->second);
  if (fresh.state != CardState::kSold) Refuse(Code::kIncorrectToken, CardStateName(fresh.state));
  JoinAccounts(fresh.account, card.account);
  fresh.state = CardState::kActive;
  fresh.friends = card.friends;
  card.state = CardState::kLocked;
  shop_.tokens.erase(token);
  reply->details = "now " + fresh.number;
}

void Programme::Deposit(const Request &request, const json &part, Reply *reply) {
  Purses &purses = AccountOf(ActiveCard(request.card));
  const std::int32_t amount = AmountOf(part, "amount");
  CheckRoom(purses, shop_.depositAccount, amount);
  Credit(&purses, shop_.depositAccount, amount);
  reply->details = "amount " + AmountText(amount);
}

Card &Programme::CardOf(const std::string &number) {
  const auto card = cards_.find(number);
  if (card == cards_.end()) Refuse(Code::kCardNotFound);
  return card->second;
}

Card &Programme::ActiveCard(const std::string &number) {
  Card &card = CardOf(number);
  if (card.state == CardState::kLocked) Refuse(Code::kLockedCard);
  if (card.state == CardState::kSold) Refuse(Code::kActivationRequired);
  return card;
}

// A payment is known to the account that made it, whichever of its cards is shown.
Payment &Programme::PaymentOf(const Request &request, const std::string &request_id) {
  const auto payment = payments_.find(request_id);
  if (payment == payments_.end() || payment->second.account != CardOf(request.card).account) {
    Refuse(Code::kBillNotFound);
  }
  return payment->second;
}

const Purses &Programme::PursesOf(const Card &card) const {
  return accounts_[card.account];
}

const Card *Programme::FindCard(const std::string &number) const {
  const auto card = cards_.find(number);
  return card == cards_.end() ? nullptr : &card->second;
}

std::string Programme::LastRequestId(const std::string &terminal) const {
  const auto last = last_ids_.find(terminal);
  return last == last_ids_.end() ? std::string() : last->second;
}

bool Programme::SetCardState(const std::string &number, CardState state) {
  const auto card = cards_.find(number);
  if (card == cards_.end()) return false;
  card->second.state = state;
  return true;
}

void Programme::LockTerminal(const std::string &terminal, bool is_locked) {
  shop_.terminals[terminal] = is_locked;
}

}  // namespace loyalty
