#include "loyalty_server/fault.h"

#include <charconv>
#include <sstream>
#include <stdexcept>
#include <vector>

namespace loyalty {
namespace {

using nlohmann::ordered_json;

struct KindWord {
  FaultKind kind;
  const char *word;
};

constexpr KindWord kWords[] = {
    {FaultKind::kOff, "off"},     {FaultKind::kRefuse, "refuse"},       {FaultKind::kSilence, "silence"},
    {FaultKind::kHttp, "http"},   {FaultKind::kRefusal, "refusal"},     {FaultKind::kRubbish, "rubbish"},
    {FaultKind::kDelay, "delay"}, {FaultKind::kPieces, "pieces"},       {FaultKind::kCut, "cut"},
    {FaultKind::kReset, "reset"}, {FaultKind::kDuplicate, "duplicate"}, {FaultKind::kWithout, "without"},
    {FaultKind::kExtra, "extra"}, {FaultKind::kName, "name"},
};

constexpr const char *kRubbish = "<<< rubbish \x01\x02 }]{[ \"\\u12 >>>";

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

bool ReadNumber(const std::string &word, int most, int *out) {
  int number = 0;
  const auto result = std::from_chars(word.data(), word.data() + word.size(), number);
  if (result.ec != std::errc() || result.ptr != word.data() + word.size()) return false;
  if (number < 0 || number > most) return false;
  *out = number;
  return true;
}

int NumberOf(const std::vector<std::string> &words, std::size_t index, int least, int most) {
  int number = 0;
  if (index >= words.size() || !ReadNumber(words[index], most, &number) || number < least) {
    Wrong(words[0] + ": a number from " + std::to_string(least) + " to " + std::to_string(most) +
          " is expected");
  }
  return number;
}

const char *WordOf(FaultKind kind) {
  for (const KindWord &entry : kWords) {
    if (entry.kind == kind) return entry.word;
  }
  return "off";
}

std::string Joined(const std::vector<std::string> &words, std::size_t from) {
  std::string text;
  for (std::size_t i = from; i < words.size(); ++i) text += (i == from ? "" : " ") + words[i];
  return text;
}

// The member a path names, made where it is missing; null when something on the way is no object.
ordered_json *Find(ordered_json *root, const std::string &path, bool is_made, std::string *out_last) {
  ordered_json *object = root;
  std::istringstream stream(path);
  std::string name;
  std::string next;
  std::getline(stream, name, '/');
  while (std::getline(stream, next, '/')) {
    if (!(object->is_object() || (is_made && object->is_null()))) return nullptr;
    if (!is_made && !object->contains(name)) return nullptr;
    object = &(*object)[name];
    name = next;
  }
  *out_last = name;
  return object->is_object() || (is_made && object->is_null()) ? object : nullptr;
}

}  // namespace

const char *FaultHelp() {
  return "  off                      behave\n"
         "  refuse                   stop listening, so that connections are refused\n"
         "  silence                  take the request, never answer\n"
         "  http STATUS              answer with an HTTP error page: http 400, http 500\n"
         "  refusal CODE             answer ERROR with this state code: refusal LOCKED_CARD\n"
         "  rubbish [TEXT]           answer with this text\n"
         "  delay MS                 answer late\n"
         "  pieces BYTES [MS]        answer in packets of so many bytes, so many milliseconds apart\n"
         "  cut [BYTES]              end the answer after so many bytes, or in its middle\n"
         "  reset [BYTES]            reset the connection after so many bytes, or in the middle\n"
         "  duplicate                send the answer twice\n"
         "  without PATH             leave a member out: without bill, without response/message\n"
         "  extra PATH [JSON]        add or replace a member: extra ad, extra response/isNeedUpdate true\n"
         "  name NAME                give the answer another name: name getAdResponse\n"
         "Each but refuse may go on with \"on METHOD\" (only for this operation) and \"times N\" (then "
         "off).\n"
         "With silence, http, refusal and rubbish the operation is not done; with the others it is.\n";
}

Fault ParseFault(std::string_view text) {
  std::istringstream stream{std::string(text)};
  std::vector<std::string> words;
  for (std::string word; stream >> word;) words.push_back(word);
  if (words.empty()) Wrong("no fault is named");

  Fault fault;
  bool is_known = false;
  for (const KindWord &entry : kWords) {
    if (words[0] != entry.word) continue;
    fault.kind = entry.kind;
    is_known = true;
  }
  if (!is_known) Wrong("no such fault: " + Printable(words[0]));

  while (words.size() >= 3) {
    const std::string &key = words[words.size() - 2];
    const std::string &value = words.back();
    if (key == "times" && ReadNumber(value, 1000000, &fault.times)) {
      if (fault.times == 0) Wrong("times: at least 1");
    } else if (key == "on" && FindOperation(value) != nullptr) {
      fault.operation = FindOperation(value);
    } else {
      break;
    }
    words.resize(words.size() - 2);
  }
  if (fault.kind == FaultKind::kRefuse && (fault.times != kUntilOff || fault.operation != nullptr)) {
    Wrong("refuse: a connection that is refused is not counted and names no operation");
  }

  constexpr int kMost = 1000000000;
  std::size_t used = 1;
  switch (fault.kind) {
    case FaultKind::kOff:
    case FaultKind::kRefuse:
    case FaultKind::kSilence:
    case FaultKind::kDuplicate:
      break;
    case FaultKind::kHttp:
      fault.number = NumberOf(words, used++, 100, 599);
      break;
    case FaultKind::kDelay:
      fault.number = NumberOf(words, used++, 0, kMost);
      break;
    case FaultKind::kPieces:
      fault.number = NumberOf(words, used++, 1, kMost);
      if (used < words.size()) fault.pause = NumberOf(words, used++, 0, kMost);
      break;
    case FaultKind::kCut:
    case FaultKind::kReset:
      fault.number = used < words.size() ? NumberOf(words, used, 0, kMost) : kHalf;
      ++used;
      break;
    case FaultKind::kRefusal:
      if (used >= words.size() || !FindCode(words[used], &fault.code) || fault.code == Code::kOk) {
        Wrong("refusal: a state code other than OK is expected");
      }
      ++used;
      break;
    case FaultKind::kRubbish:
      fault.text = used < words.size() ? Joined(words, used) : kRubbish;
      used = words.size();
      break;
    case FaultKind::kWithout:
    case FaultKind::kExtra:
    case FaultKind::kName:
      if (used >= words.size()) Wrong(words[0] + ": a name is expected");
      fault.text = words[used++];
      break;
  }
  if (fault.kind == FaultKind::kExtra) {
    fault.value = "extra";
    for (const PartSample &sample : kSamples) {
      if (fault.text == sample.part) fault.value = ordered_json::parse(sample.value);
    }
    if (used < words.size()) {
      fault.value = ordered_json::parse(Joined(words, used), nullptr, false);
      if (fault.value.is_discarded()) Wrong("extra: the value is not JSON");
      used = words.size();
    }
  }
  if (used < words.size()) Wrong(words[0] + ": more words than expected: " + Printable(words[used]));
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
      text += " " + fault.text + " " + fault.value.dump();
      break;
    case FaultKind::kOff:
    case FaultKind::kRefuse:
    case FaultKind::kSilence:
    case FaultKind::kDuplicate:
      break;
  }
  if (fault.operation != nullptr) text += std::string(" on ") + fault.operation->method;
  if (fault.times != kUntilOff) text += " times " + std::to_string(fault.times);
  return text;
}

bool IsProgrammeAsked(FaultKind kind) {
  return kind != FaultKind::kSilence && kind != FaultKind::kHttp && kind != FaultKind::kRubbish;
}

std::string HttpErrorPage(int status) {
  const std::string title = "HTTP Status " + std::to_string(status);
  return "<html><head><title>" + title + "</title></head><body><h1>" + title +
         " - the request was not done</h1></body></html>\n";
}

std::string Spoil(const Fault &fault, ordered_json answer) {
  constexpr auto kReplace = ordered_json::error_handler_t::replace;
  switch (fault.kind) {
    case FaultKind::kHttp:
      return HttpErrorPage(fault.number);
    case FaultKind::kRubbish:
      return fault.text;
    case FaultKind::kDuplicate: {
      const std::string text = answer.dump(-1, ' ', false, kReplace);
      return text + text;
    }
    case FaultKind::kWithout:
    case FaultKind::kExtra: {
      const bool is_made = fault.kind == FaultKind::kExtra;
      std::string name;
      ordered_json *object = Find(&answer.begin().value(), fault.text, is_made, &name);
      if (object == nullptr) break;
      if (is_made) {
        (*object)[name] = fault.value;
      } else {
        object->erase(name);
      }
      break;
    }
    case FaultKind::kName: {
      ordered_json renamed;
      renamed[fault.text] = std::move(answer.begin().value());
      answer = std::move(renamed);
      break;
    }
    case FaultKind::kOff:
    case FaultKind::kRefuse:
    case FaultKind::kSilence:
    case FaultKind::kRefusal:
    case FaultKind::kDelay:
    case FaultKind::kPieces:
    case FaultKind::kCut:
    case FaultKind::kReset:
      break;
  }
  return answer.dump(-1, ' ', false, kReplace);
}

}  // namespace loyalty
