#include "loyalty_server/api.h"

#include <charconv>
#include <nlohmann/json.hpp>
#include <stdexcept>

namespace loyalty {
namespace {

using nlohmann::json;
using nlohmann::ordered_json;

constexpr uint64_t kMostSeconds = 60;

// What is answered instead of what was asked for.
struct Problem {
  int status;
  std::string text;
};

[[noreturn]] void Refuse(int status, const std::string &text) {
  throw Problem{status, text};
}

uint64_t NumberIn(const ApiCall &call, const char *name, uint64_t otherwise) {
  const auto value = call.query.find(name);
  if (value == call.query.end()) return otherwise;
  uint64_t number = 0;
  const char *end = value->second.data() + value->second.size();
  const auto result = std::from_chars(value->second.data(), end, number);
  if (result.ec != std::errc() || result.ptr != end) {
    Refuse(400, std::string(name) + ": a number is expected");
  }
  return number;
}

std::chrono::milliseconds Wait(const ApiCall &call) {
  const uint64_t seconds = NumberIn(call, "wait", 0);
  if (seconds > kMostSeconds) Refuse(400, "wait: at most " + std::to_string(kMostSeconds) + " seconds");
  return std::chrono::seconds(seconds);
}

json BodyOf(const ApiCall &call) {
  if (IsNestedTooDeep(call.body)) Refuse(400, "the body is nested too deep");
  return json::parse(call.body, nullptr, false);
}

// The one member of a body.
json Member(const ApiCall &call, const char *name) {
  const json body = BodyOf(call);
  if (!body.is_object()) Refuse(400, "the body is not a JSON object");
  for (const auto &member : body.items()) {
    if (member.key() != name) Refuse(400, member.key() + ": no such member");
  }
  if (!body.contains(name)) Refuse(400, std::string(name) + ": is missing");
  return body[name];
}

std::string TextIn(const ApiCall &call, const char *name) {
  const json value = Member(call, name);
  if (!value.is_string()) Refuse(400, std::string(name) + ": a text is expected");
  return value.get<std::string>();
}

ordered_json CardJson(const Programme &programme, const Card &card) {
  ordered_json object;
  object["number"] = card.number;
  object["state"] = CardStateName(card.state);
  object["account"] = card.account + 1;
  for (const AccountType type : kAllAccountTypes) {
    const Purse &purse = programme.PursesOf(card)[static_cast<size_t>(type)];
    ordered_json amounts;
    amounts["amount"] = purse.balance;
    amounts["reserved"] = purse.reserved;
    amounts["expected"] = purse.expected;
    object[AccountName(type)] = std::move(amounts);
  }
  return object;
}

ordered_json PaymentJson(const Payment &payment) {
  Amounts spent{};
  Amounts earned{};
  int64_t returned = 0;
  for (const Position &position : payment.positions) {
    for (size_t i = 0; i < kAccountTypes; ++i) {
      spent[i] += position.spent[i];
      earned[i] += position.earned[i];
    }
    returned += position.returnedSum;
  }
  ordered_json object;
  object["requestId"] = payment.requestId;
  object["number"] = payment.number;
  object["time"] = payment.time;
  object["terminal"] = payment.terminal;
  object["card"] = payment.card;
  object["state"] = PaymentStateName(payment.state);
  object["sum"] = payment.totalSum;
  object["spent"] = Sum(spent);
  object["earned"] = Sum(earned);
  object["returned"] = returned;
  return object;
}

ordered_json ExchangeJson(const Exchange &exchange) {
  ordered_json object;
  object["number"] = exchange.number;
  object["time"] = exchange.time;
  if (!exchange.note.empty()) {
    object["note"] = exchange.note;
    return object;
  }
  object["terminal"] = exchange.terminal;
  object["operation"] = exchange.operation;
  object["card"] = exchange.card;
  object["requestId"] = exchange.requestId;
  object["code"] = exchange.isDone ? CodeName(exchange.code) : "";
  object["details"] = exchange.details;
  object["fault"] = exchange.fault;
  object["request"] = exchange.request;
  object["requestBytes"] = exchange.requestBytes;
  object["answer"] = exchange.answer;
  object["answerBytes"] = exchange.answerBytes;
  return object;
}

ordered_json FaultJson(const Server &server) {
  const FaultPlan faults = server.faults();
  ordered_json object;
  object["fault"] = FaultText(faults.fault());
  object["step"] = faults.step() + 1;
  object["steps"] = std::max<size_t>(faults.step_count(), 1);
  return object;
}

ordered_json TerminalJson(const std::string &id, const TerminalState &terminal) {
  ordered_json object;
  object["id"] = id;
  object["lastId"] = terminal.lastId;
  object["locked"] = terminal.isLocked;
  return object;
}

class Api {
 public:
  Api(Server *server, const ApiCall &call, const std::function<bool()> &is_ending)
      : server_(server), call_(call), is_ending_(is_ending), is_change_(call.method == "PUT") {
    const size_t slash = call.path.find('/');
    thing_ = call.path.substr(0, slash);
    if (slash != std::string::npos) name_ = call.path.substr(slash + 1);
  }

  ordered_json Answer() {
    if (!is_change_ && call_.method != "GET") Refuse(405, "only GET and PUT are served");
    if (thing_ == "state") return State();
    if (thing_ == "exchanges") return Exchanges();
    if (thing_ == "cards") return name_.empty() ? Cards() : Card();
    if (thing_ == "payments") return Payments();
    if (thing_ == "terminals") return name_.empty() ? Terminals() : Terminal();
    if (thing_ == "faults") return Faults();
    if (thing_ == "fault") return Fault();
    if (thing_ == "update") return Update();
    if (thing_ == "ad") return Ad();
    Refuse(404, "no such thing: " + Printable(thing_));
  }

 private:
  void OnlyLooks() const {
    if (is_change_) Refuse(405, thing_ + ": cannot be changed");
  }

  // Waits, when asked to, until something has happened that is not known yet.
  void AwaitChange(uint64_t known, std::chrono::milliseconds most) const {
    if (most.count() > 0 && !is_ending_()) server_->AwaitChange(known, most);
  }

  ordered_json State() {
    OnlyLooks();
    AwaitChange(NumberIn(call_, "after", 0), Wait(call_));
    ordered_json state;
    state["revision"] = server_->revision();
    state["address"] = server_->address();
    state["exchanges"] = server_->exchanges();
    state.update(FaultJson(*server_));
    server_->Look([&](const Programme &programme) {
      state["update"] = UpdateName(programme.update());
      state["ad"] = programme.advertisement();
    });
    return state;
  }

  ordered_json Exchanges() {
    OnlyLooks();
    const uint64_t after = NumberIn(call_, "after", 0);
    const auto until = std::chrono::steady_clock::now() + Wait(call_);
    std::vector<Exchange> exchanges;
    for (;;) {
      const uint64_t revision = server_->revision();
      exchanges = server_->ExchangesAfter(after);
      const auto left =
          std::chrono::duration_cast<std::chrono::milliseconds>(until - std::chrono::steady_clock::now());
      if (!exchanges.empty() || left.count() <= 0 || is_ending_()) break;
      AwaitChange(revision, left);
    }
    ordered_json list = ordered_json::array();
    for (const Exchange &exchange : exchanges) list.push_back(ExchangeJson(exchange));
    return {{"exchanges", std::move(list)}};
  }

  ordered_json Cards() {
    OnlyLooks();
    ordered_json list = ordered_json::array();
    server_->Look([&](const Programme &programme) {
      for (const auto &entry : programme.cards()) list.push_back(CardJson(programme, entry.second));
    });
    return {{"cards", std::move(list)}};
  }

  ordered_json Card() {
    if (is_change_) {
      CardState state;
      if (!FindCardState(TextIn(call_, "state"), &state)) {
        Refuse(400, "state: sold, active or locked is expected");
      }
      server_->Visit([&](Programme &programme) { programme.SetCardState(name_, state); });
    }
    ordered_json object;
    server_->Look([&](const Programme &programme) {
      const loyalty::Card *card = programme.FindCard(name_);
      if (card != nullptr) object = CardJson(programme, *card);
    });
    if (object.is_null()) Refuse(404, "no such card");
    return object;
  }

  // The last ones first.
  ordered_json Payments() {
    OnlyLooks();
    const uint64_t most = NumberIn(call_, "most", UINT64_MAX);
    ordered_json list = ordered_json::array();
    server_->Look([&](const Programme &programme) {
      std::map<uint64_t, const Payment *, std::greater<>> in_order;
      for (const auto &entry : programme.payments()) in_order[entry.second.number] = &entry.second;
      for (const auto &entry : in_order) {
        if (list.size() < most) list.push_back(PaymentJson(*entry.second));
      }
    });
    return {{"payments", std::move(list)}};
  }

  ordered_json Terminals() {
    OnlyLooks();
    ordered_json list = ordered_json::array();
    server_->Look([&](const Programme &programme) {
      for (const auto &entry : programme.Terminals()) list.push_back(TerminalJson(entry.first, entry.second));
    });
    return {{"terminals", std::move(list)}};
  }

  ordered_json Terminal() {
    if (is_change_) {
      const json locked = Member(call_, "locked");
      if (!locked.is_boolean()) Refuse(400, "locked: true or false is expected");
      server_->Visit([&](Programme &programme) { programme.LockTerminal(name_, locked.get<bool>()); });
    }
    ordered_json object;
    server_->Look([&](const Programme &programme) {
      const auto terminals = programme.Terminals();
      const auto found = terminals.find(name_);
      if (found != terminals.end()) object = TerminalJson(name_, found->second);
    });
    if (object.is_null()) Refuse(404, "no such terminal");
    return object;
  }

  // What there is to choose from.
  ordered_json Faults() {
    OnlyLooks();
    ordered_json list = ordered_json::array();
    for (const FaultForm &form : FaultForms()) {
      ordered_json object;
      object["fault"] = form.word;
      object["arguments"] = form.arguments;
      object["help"] = form.help;
      list.push_back(std::move(object));
    }
    ordered_json operations = ordered_json::array();
    for (const OperationNames &operation : kOperations) operations.push_back(operation.method);
    return {{"faults", std::move(list)}, {"operations", std::move(operations)}};
  }

  ordered_json Fault() {
    if (is_change_) {
      const json body = BodyOf(call_);
      try {
        if (body.is_object() && body.contains("script")) {
          server_->SetFaults(ParseFaultScript(TextIn(call_, "script")));
        } else {
          server_->SetFault(ParseFault(TextIn(call_, "fault")));
        }
      } catch (const std::invalid_argument &error) {
        Refuse(400, error.what());
      }
    }
    return FaultJson(*server_);
  }

  ordered_json Update() {
    if (is_change_) {
      loyalty::Update update;
      if (!FindUpdate(TextIn(call_, "update"), &update)) {
        Refuse(400, "update: none, offered or required is expected");
      }
      server_->Visit([&](Programme &programme) { programme.SetUpdate(update); });
    }
    ordered_json object;
    server_->Look([&](const Programme &programme) { object["update"] = UpdateName(programme.update()); });
    return object;
  }

  ordered_json Ad() {
    if (is_change_) {
      const std::string text = TextIn(call_, "ad");
      server_->Visit([&](Programme &programme) { programme.SetAdvertisement(text); });
    }
    ordered_json object;
    server_->Look([&](const Programme &programme) { object["ad"] = programme.advertisement(); });
    return object;
  }

  Server *server_;
  const ApiCall &call_;
  const std::function<bool()> &is_ending_;
  bool is_change_;
  std::string thing_;
  std::string name_;
};

}  // namespace

ApiAnswer CallApi(Server *server, const ApiCall &call, const std::function<bool()> &is_ending) {
  ApiAnswer answer;
  ordered_json body;
  try {
    body = Api(server, call, is_ending).Answer();
  } catch (const Problem &problem) {
    answer.status = problem.status;
    body["error"] = problem.text;
  } catch (const std::exception &error) {
    answer.status = 500;
    body["error"] = error.what();
  }
  // What a client sent need not be UTF-8.
  answer.body = body.dump(-1, ' ', false, ordered_json::error_handler_t::replace) + "\n";
  return answer;
}

}  // namespace loyalty
