#include "loyalty_server/fault.h"

#include <algorithm>
#include <charconv>
#include <nlohmann/json.hpp>
#include <random>
#include <sstream>
#include <stdexcept>

namespace loyalty {
namespace {

using nlohmann::ordered_json;
using Pointer = ordered_json::json_pointer;

constexpr const char *kRubbish = "<<< rubbish \x01\x02 }]{[ \"\\u12 >>>";
constexpr int kMost = 1000000000;

struct PartSample {
  const char *part;
  const char *value;
};

// What a part of this name usually holds, so that "extra ad" is enough.
constexpr PartSample kSamples[] = {
    {"bill",
     R"({"totalSum":100,"billNum":"1","orderLen":0,"billDate":"2012-12-05T00:00:00Z","partnerFee":0})"},
    {"balance", R"({"account":[{"accountType":"GLOBAL","availableAmount":100,"amount":100}]})"},
    {"activationResult",
     R"({"activationSum":100,"activationSumType":"GLOBAL","referralSum":0,"referralSumType":"GLOBAL","giftSum":0,"giftSumType":"GLOBAL"})"},
    {"cashBackResult", R"({"returnedSum":100})"},
    {"deposit", R"({"amount":100})"},
    {"cardExchange", R"({"token":"TOKEN"})"},
    {"paymentConfirm", R"({"requestId":"0000012120500000","isConfirm":true})"},
    {"rrn", R"({"rrNumber":"0000012120500000"})"},
    {"ad", R"({"text":"extra"})"},
};

[[noreturn]] void Wrong(const std::string &what) {
  throw std::invalid_argument(what);
}

const FaultForm *FindForm(std::string_view word) {
  for (const FaultForm &form : FaultForms()) {
    if (word == form.word) return &form;
  }
  return nullptr;
}

const char *WordOf(FaultKind kind) {
  for (const FaultForm &form : FaultForms()) {
    if (form.kind == kind) return form.word;
  }
  return "off";
}

template <typename Number>
bool ReadNumber(const std::string &word, Number most, Number *out) {
  Number number = 0;
  const auto result = std::from_chars(word.data(), word.data() + word.size(), number);
  if (result.ec != std::errc() || result.ptr != word.data() + word.size()) return false;
  if (number < 0 || number > most) return false;
  *out = number;
  return true;
}

// The words of a fault, taken one by one.
class Words {
 public:
  explicit Words(std::string_view text) {
    std::istringstream stream{std::string(text)};
    for (std::string word; stream >> word;) words_.push_back(word);
  }

  bool IsEmpty() const { return next_ >= words_.size(); }
  const std::string &First() const { return words_.front(); }
  const std::string &Peek() const { return words_[next_]; }
  std::string Take(const char *what) {
    if (IsEmpty()) Wrong(First() + ": " + what + " is expected");
    return words_[next_++];
  }
  int TakeNumber(int least, int most) {
    int number = 0;
    if (IsEmpty() || !ReadNumber(words_[next_], most, &number) || number < least) {
      Wrong(First() + ": a number from " + std::to_string(least) + " to " + std::to_string(most) +
            " is expected");
    }
    ++next_;
    return number;
  }
  std::string TakeRest() {
    std::string text;
    for (; !IsEmpty(); ++next_) text += (text.empty() ? "" : " ") + words_[next_];
    return text;
  }

  // The last two words, when there are two behind the first one; see DropPair.
  bool FindPair(std::string *out_key, std::string *out_value) const {
    if (words_.size() < 3) return false;
    *out_key = words_[words_.size() - 2];
    *out_value = words_.back();
    return true;
  }
  void DropPair() { words_.resize(words_.size() - 2); }

 private:
  std::vector<std::string> words_;
  size_t next_ = 0;
};

// "on METHOD", "times N" and "for MS", in any order.
void TakeLimits(Words *words, Fault *fault) {
  std::string key;
  std::string value;
  while (words->FindPair(&key, &value)) {
    if (key == "times" && ReadNumber(value, 1000000, &fault->times)) {
      if (fault->times == 0) Wrong("times: at least 1");
    } else if (key == "for" && ReadNumber(value, kMost, &fault->milliseconds)) {
      if (fault->milliseconds == 0) Wrong("for: at least 1 millisecond");
    } else if (key == "on" && FindOperation(value) != nullptr) {
      fault->operation = FindOperation(value);
    } else {
      break;
    }
    words->DropPair();
  }
  const std::string &word = words->First();
  if (IsOfConnection(fault->kind) && fault->operation != nullptr) {
    Wrong(word + ": it comes before the request and cannot know its operation");
  }
  const bool is_seen = fault->kind != FaultKind::kRefuse && fault->kind != FaultKind::kBlackHole;
  if (!is_seen && fault->times != kUntilOff) {
    Wrong(word + ": a connection that does not come about is not counted; say how long it lasts, for MS");
  }
}

// Console and files bring any bytes; only UTF-8 can stand in an answer.
void CheckText(const std::string &text, const std::string &what) {
  try {
    (void)ordered_json(text).dump();
  } catch (const ordered_json::exception &) {
    Wrong(what + ": not UTF-8");
  }
}

// A path as people write it, response/message, or as a JSON pointer.
Pointer PointerOf(const std::string &path) {
  try {
    return Pointer(path.empty() || path.front() == '/' ? path : "/" + path);
  } catch (const ordered_json::exception &) {
    Wrong("no path: " + Printable(path));
  }
}

std::string ValueOf(const std::string &path, const std::string &text) {
  if (!text.empty()) {
    if (IsNestedTooDeep(text)) Wrong("extra: the value is nested too deep");
    const ordered_json value = ordered_json::parse(text, nullptr, false);
    if (value.is_discarded()) Wrong("extra: the value is not JSON");
    return value.dump();
  }
  for (const PartSample &sample : kSamples) {
    if (path == sample.part) return sample.value;
  }
  return "\"extra\"";
}

// Whether the path asks for a place of a list behind the next free one, so that others had to be filled.
bool IsBeyondAList(const ordered_json &content, Pointer pointer) {
  for (; !pointer.empty(); pointer.pop_back()) {
    const std::string &place = pointer.back();
    int number = 0;
    const bool is_number = !place.empty() && place.find_first_not_of("0123456789") == std::string::npos;
    if (!is_number) continue;
    const Pointer parent = pointer.parent_pointer();
    size_t size = 0;  // a number makes a list of what is not there
    if (content.contains(parent) && !content[parent].is_null()) {
      if (!content[parent].is_array()) continue;
      size = content[parent].size();
    }
    if (!ReadNumber(place, kMost, &number) || static_cast<size_t>(number) > size) return true;
  }
  return false;
}

void TakeRandom(Words *words, Fault *fault) {
  fault->number = words->TakeNumber(1, 100);
  bool is_seeded = false;
  while (!words->IsEmpty()) {
    const std::string key = words->Take("a word");
    if (key == "seed" && !is_seeded) {
      const std::string seed = words->Take("a number");
      if (!ReadNumber(seed, UINT32_MAX, &fault->seed)) Wrong("seed: a number is expected");
      is_seeded = true;
    } else if (key == "among" && fault->among.empty()) {
      std::istringstream kinds(words->Take("a list of faults"));
      for (std::string kind; std::getline(kinds, kind, ',');) {
        const FaultForm *form = FindForm(kind);
        const bool is_drawn = form != nullptr && !IsOfConnection(form->kind) &&
                              form->kind != FaultKind::kOff && form->kind != FaultKind::kRandom;
        if (!is_drawn) Wrong("among: no fault that a request can meet: " + Printable(kind));
        fault->among.push_back(form->kind);
      }
    } else {
      Wrong("random: more words than expected: " + Printable(key));
    }
  }
  if (!is_seeded) fault->seed = std::random_device()();
}

}  // namespace

const std::vector<FaultForm> &FaultForms() {
  static const std::vector<FaultForm> forms = {
      {FaultKind::kOff, "off", "", "behave"},
      {FaultKind::kRefuse, "refuse", "", "stop listening, so that connections are refused"},
      {FaultKind::kBlackHole, "blackhole", "", "let connections neither open nor fail (Linux)"},
      {FaultKind::kHangUp, "hangup", "", "reset the connection as soon as it is open: the send fails"},
      {FaultKind::kSilence, "silence", "", "take the request, never answer"},
      {FaultKind::kHttp, "http", "STATUS", "answer with an HTTP error page: http 400, http 500"},
      {FaultKind::kRefusal, "refusal", "CODE", "answer ERROR with this state code: refusal LOCKED_CARD"},
      {FaultKind::kRubbish, "rubbish", "[TEXT]", "answer with this text"},
      {FaultKind::kDelay, "delay", "MS", "answer late"},
      {FaultKind::kPieces, "pieces", "BYTES [MS]", "answer in packets of so many bytes, so far apart"},
      {FaultKind::kCut, "cut", "[BYTES]", "end the answer after so many bytes, or in its middle"},
      {FaultKind::kReset, "reset", "[BYTES]", "reset the connection after so many bytes, or in the middle"},
      {FaultKind::kDuplicate, "duplicate", "", "send the answer twice"},
      {FaultKind::kWithout, "without", "PATH", "leave a member out: without bill, without response/message"},
      {FaultKind::kExtra, "extra", "PATH [JSON]",
       "add or replace a member: extra response/isNeedUpdate true"},
      {FaultKind::kName, "name", "NAME", "give the answer another name: name getAdResponse"},
      {FaultKind::kRandom, "random", "PERCENT [seed N] [among FAULT,...]",
       "one of them, so often, by chance"},
  };
  return forms;
}

std::string FaultHelp() {
  constexpr size_t kColumn = 27;
  std::string text;
  for (const FaultForm &form : FaultForms()) {
    std::string line = std::string("  ") + form.word + " " + form.arguments;
    if (line.size() >= kColumn) line += "\n" + std::string(kColumn, ' ');
    line.resize(std::max(line.size(), kColumn), ' ');
    text += line + form.help + "\n";
  }
  return text +
         "Each may go on with \"on METHOD\" (only for this operation), \"times N\" (then off) and \"for MS\" "
         "(then off).\n"
         "With silence, http, refusal and rubbish the operation is not done; with delay and those behind it, "
         "it is.\n";
}

Fault ParseFault(std::string_view text) {
  Words words(text);
  if (words.IsEmpty()) Wrong("no fault is named");
  const FaultForm *form = FindForm(words.First());
  if (form == nullptr) Wrong("no such fault: " + Printable(words.First()));
  Fault fault;
  fault.kind = form->kind;
  TakeLimits(&words, &fault);
  words.Take("a fault");

  switch (fault.kind) {
    case FaultKind::kOff:
    case FaultKind::kRefuse:
    case FaultKind::kBlackHole:
    case FaultKind::kHangUp:
    case FaultKind::kSilence:
    case FaultKind::kDuplicate:
      break;
    case FaultKind::kHttp:
      fault.number = words.TakeNumber(100, 599);
      break;
    case FaultKind::kDelay:
      fault.number = words.TakeNumber(0, kMost);
      break;
    case FaultKind::kPieces:
      fault.number = words.TakeNumber(1, kMost);
      if (!words.IsEmpty()) fault.pause = words.TakeNumber(0, kMost);
      break;
    case FaultKind::kCut:
    case FaultKind::kReset:
      fault.number = words.IsEmpty() ? kHalf : words.TakeNumber(0, kMost);
      break;
    case FaultKind::kRefusal:
      if (!FindCode(words.Take("a state code"), &fault.code) || fault.code == Code::kOk) {
        Wrong("refusal: a state code other than OK is expected");
      }
      break;
    case FaultKind::kRubbish:
      fault.text = words.IsEmpty() ? kRubbish : words.TakeRest();
      break;
    case FaultKind::kWithout:
      fault.text = words.Take("a path");
      CheckText(fault.text, "path");
      PointerOf(fault.text);
      break;
    case FaultKind::kExtra:
      fault.text = words.Take("a path");
      CheckText(fault.text, "path");
      PointerOf(fault.text);
      fault.value = ValueOf(fault.text, words.TakeRest());
      break;
    case FaultKind::kName:
      fault.text = words.Take("a name");
      CheckText(fault.text, "name");
      break;
    case FaultKind::kRandom:
      TakeRandom(&words, &fault);
      break;
  }
  if (!words.IsEmpty()) Wrong(words.First() + ": more words than expected: " + Printable(words.Peek()));
  return fault;
}

std::string FaultText(const Fault &fault) {
  std::string text = WordOf(fault.kind);
  switch (fault.kind) {
    case FaultKind::kHttp:
    case FaultKind::kDelay:
      text += " " + std::to_string(fault.number);
      break;
    case FaultKind::kPieces:
      text += " " + std::to_string(fault.number) + " " + std::to_string(fault.pause);
      break;
    case FaultKind::kCut:
    case FaultKind::kReset:
      if (fault.number != kHalf) text += " " + std::to_string(fault.number);
      break;
    case FaultKind::kRefusal:
      text += std::string(" ") + CodeName(fault.code);
      break;
    case FaultKind::kRubbish:
    case FaultKind::kWithout:
    case FaultKind::kName:
      text += " " + fault.text;
      break;
    case FaultKind::kExtra:
      text += " " + fault.text + " " + fault.value;
      break;
    case FaultKind::kRandom:
      text += " " + std::to_string(fault.number) + " seed " + std::to_string(fault.seed);
      for (size_t i = 0; i < fault.among.size(); ++i) {
        text += (i == 0 ? " among " : ",") + std::string(WordOf(fault.among[i]));
      }
      break;
    case FaultKind::kOff:
    case FaultKind::kRefuse:
    case FaultKind::kBlackHole:
    case FaultKind::kHangUp:
    case FaultKind::kSilence:
    case FaultKind::kDuplicate:
      break;
  }
  if (fault.operation != nullptr) text += std::string(" on ") + fault.operation->method;
  if (fault.times != kUntilOff) text += " times " + std::to_string(fault.times);
  if (fault.milliseconds != kUntilOff) text += " for " + std::to_string(fault.milliseconds);
  return text;
}

bool IsOfConnection(FaultKind kind) {
  return kind == FaultKind::kRefuse || kind == FaultKind::kBlackHole || kind == FaultKind::kHangUp;
}

bool IsProgrammeAsked(FaultKind kind) {
  return kind != FaultKind::kSilence && kind != FaultKind::kHttp && kind != FaultKind::kRubbish;
}

Fault DrawnFault(const Fault &random, uint64_t draw) {
  const auto pick = [&draw](size_t count) {
    const auto picked = static_cast<size_t>(draw % count);
    draw /= count;
    return picked;
  };
  std::vector<FaultKind> kinds = random.among;
  for (const FaultForm &form : FaultForms()) {
    if (!random.among.empty() || IsOfConnection(form.kind) || form.kind == FaultKind::kOff ||
        form.kind == FaultKind::kRandom) {
      continue;
    }
    kinds.push_back(form.kind);
  }
  constexpr int kStatuses[] = {400, 404, 500, 502, 503};
  constexpr const char *kPaths[] = {"response",
                                    "response/requestId",
                                    "response/requestState",
                                    "response/requestStateCode",
                                    "response/message",
                                    "bill",
                                    "balance",
                                    "rrn"};
  Fault fault;
  fault.kind = kinds[pick(kinds.size())];
  switch (fault.kind) {
    case FaultKind::kHttp:
      fault.number = kStatuses[pick(std::size(kStatuses))];
      break;
    case FaultKind::kRefusal:
      fault.code = static_cast<Code>(1 + pick(kCodeCount - 1));
      break;
    case FaultKind::kRubbish:
      fault.text = kRubbish;
      break;
    case FaultKind::kDelay:
      fault.number = static_cast<int>(10 + pick(1991));
      break;
    case FaultKind::kPieces:
      fault.number = static_cast<int>(1 + pick(600));
      fault.pause = static_cast<int>(pick(20));
      break;
    case FaultKind::kCut:
    case FaultKind::kReset:
      fault.number = static_cast<int>(pick(701));
      break;
    case FaultKind::kWithout:
      fault.text = kPaths[pick(std::size(kPaths))];
      break;
    case FaultKind::kExtra: {
      const PartSample &sample = kSamples[pick(std::size(kSamples))];
      fault.text = sample.part;
      fault.value = sample.value;
      break;
    }
    case FaultKind::kName:
      fault.text = kOperations[pick(kOperations.size())].response;
      break;
    default:
      break;
  }
  return fault;
}

std::string HttpErrorPage(int status) {
  const std::string title = "HTTP Status " + std::to_string(status);
  return "<html><head><title>" + title + "</title></head><body><h1>" + title +
         " - the request was not done</h1></body></html>\n";
}

std::string Spoil(const Fault &fault, const std::string &answer) {
  switch (fault.kind) {
    case FaultKind::kSilence:
      return std::string();
    case FaultKind::kHttp:
      return HttpErrorPage(fault.number);
    case FaultKind::kRubbish:
      return fault.text;
    case FaultKind::kDuplicate:
      return answer + answer;
    case FaultKind::kCut:
    case FaultKind::kReset:
      return answer.substr(0, fault.number == kHalf ? answer.size() / 2 : static_cast<size_t>(fault.number));
    case FaultKind::kWithout:
    case FaultKind::kExtra:
    case FaultKind::kName:
      break;
    default:
      return answer;
  }

  ordered_json document = ordered_json::parse(answer);
  ordered_json &content = document.begin().value();
  if (fault.kind == FaultKind::kName) {
    ordered_json renamed;
    renamed[fault.text] = std::move(content);
    return renamed.dump();
  }
  // A path that leads through what is no object, or to nothing, leaves the answer as it is; so does one
  // beyond the end of a list.
  try {
    const Pointer pointer = PointerOf(fault.text);
    if (fault.kind == FaultKind::kExtra) {
      if (IsBeyondAList(content, pointer)) return answer;
      content[pointer] = ordered_json::parse(fault.value);
    } else if (content.contains(pointer)) {
      ordered_json &parent = content[pointer.parent_pointer()];
      if (parent.is_array()) {
        parent.erase(static_cast<size_t>(std::stoul(pointer.back())));
      } else {
        parent.erase(pointer.back());
      }
    }
  } catch (const ordered_json::exception &) {
    return answer;
  }
  return document.dump();
}

}  // namespace loyalty
