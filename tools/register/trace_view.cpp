#include "trace_view.h"

#include <algorithm>
#include <optional>
#include <vector>

#include "lumo.h"
#include "utf8.h"

namespace reg {
namespace {

constexpr size_t kDeepest = 40;         // a level below has no blanks of its own
constexpr size_t kDeepestParsed = 100;  // a document below stays a text

std::string Code(const Exchange &exchange) {
  return exchange.code ? std::to_string(*exchange.code) : "-";
}

std::string OrDash(const std::string &text) {
  return text.empty() ? "-" : text;
}

// "2012-12-05 10:00:00"
std::string Time(const Exchange &exchange) {
  std::string text = exchange.time;
  if (text.size() == 20 && text[10] == 'T' && text[19] == 'Z') {
    text[10] = ' ';
    text.pop_back();
  }
  return OrDash(text);
}

std::string Server(const Exchange &exchange) {
  const Attempt *reached = exchange.Reached();
  if (reached == nullptr) return "-";
  return reached->server + (exchange.attempts.size() > 1 ? " 2nd" : "");
}

// As wide as the column, or wider.
std::string Column(std::string text, size_t width) {
  return text.append(width - std::min(width, text.size()), ' ');
}

std::string Right(const std::string &text, size_t width) {
  return std::string(width - std::min(width, text.size()), ' ') + text;
}

std::string Row(const std::string &number, const std::string &time, const std::string &operation,
                const std::string &rrn, const std::string &server, const std::string &code,
                const std::string &ending) {
  return Right(number, 5) + "  " + Column(time, 19) + "  " + Column(operation, 19) + "  " + Column(rrn, 16) +
         "  " + Column(server, 25) + "  " + Right(code, 5) + "  " + ending + "\n";
}

// Each line behind two blanks.
std::string Block(const char *title, const std::string &text) {
  std::string block = std::string("\n") + title + "\n";
  for (size_t begin = 0; begin < text.size();) {
    const size_t end = std::min(text.find('\n', begin), text.size());
    if (end > begin) block.append("  ").append(text, begin, end - begin);
    block += '\n';
    begin = end + 1;
  }
  return block;
}

void Learn(const Exchange &exchange, CardMask &mask) {
  mask.Learn(exchange.cards, {exchange.request, exchange.answer});
}

// How deep brackets lie in each other.
size_t Depth(std::string_view document) {
  size_t depth = 0;
  size_t deepest = 0;
  bool in_text = false;
  for (size_t at = 0; at < document.size(); ++at) {
    const char byte = document[at];
    if (in_text && byte == '\\') ++at;
    if (byte == '"') in_text = !in_text;
    if (in_text) continue;
    if (byte == '{' || byte == '[') deepest = std::max(deepest, ++depth);
    if ((byte == '}' || byte == ']') && depth > 0) --depth;
  }
  return deepest;
}

}  // namespace

std::string Showable(std::string_view text) {
  std::string shown;
  for (size_t at = 0; at < text.size();) {
    const auto byte = static_cast<unsigned char>(text[at]);
    const bool steers =
        (byte < 0x20 && byte != '\n') || byte == 0x7F ||
        (byte == 0xC2 && at + 1 < text.size() && static_cast<unsigned char>(text[at + 1]) < 0xA0);
    const size_t length = steers ? 0 : CharacterBytes(text, at);
    shown.append(length != 0 ? text.substr(at, length) : "?");
    at += std::max<size_t>(length, 1);
  }
  return shown;
}

std::string Indented(std::string_view document) {
  std::string text;
  size_t depth = 0;
  const auto break_line = [&] { text.append("\n").append(2 * std::min(depth, kDeepest), ' '); };
  bool in_text = false;
  bool empty = false;  // nothing yet behind the last bracket
  for (size_t at = 0; at < document.size(); ++at) {
    const char byte = document[at];
    if (in_text) {
      text += byte;
      if (byte == '\\' && at + 1 < document.size()) text += document[++at];
      if (byte == '"') in_text = false;
      continue;
    }
    if (byte == ' ' || byte == '\t' || byte == '\r' || byte == '\n') continue;
    const bool closes = byte == '}' || byte == ']';
    if (closes && depth > 0) --depth;
    if (empty != closes) break_line();
    empty = false;
    text += byte;
    if (byte == '"') in_text = true;
    if (byte == ':') text += ' ';
    if (byte == ',') break_line();
    if (byte == '{' || byte == '[') {
      ++depth;
      empty = true;
    }
  }
  return text;
}

std::string CodeInWords(int code) {
  struct Row {
    int code;
    const char *text;
  };
  constexpr Row kRows[] = {
      {-1, "no sockets"},
      {ERR_JSON_SYNTAX, "the answer is no JSON"},
      {ERR_NO_RESPONSE, "no answer"},
      {ERR_RESPONSE_STRUCTURE, "an answer cut off, or none of this protocol"},
      {ERR_RESPONSE_TYPE, "an answer of an unknown name"},
      {ERR_RESPONSE_CONTENT, "a part of the answer is missing"},
      {ERR_SERVER_REJECTED, "HTTP Status 400"},
      {ERR_SERVER_FAILURE, "HTTP Status 500"},
      {ERR_REQUEST_SEND, "could not be sent"},
      {ERR_REQUEST_BUILD, "the request could not be made"},
      {ERR_CONNECT, "no server"},
  };
  const auto *row =
      std::find_if(std::begin(kRows), std::end(kRows), [code](const Row &each) { return each.code == code; });
  return row != std::end(kRows) ? row->text : "error " + std::to_string(code);
}

std::string Ending(const Exchange &exchange) {
  std::string text;
  if (!exchange.code) {
    text = exchange.sent ? "the trace has no end of it" : "the trace ends before a server is reached";
  } else if (*exchange.code == 0 || *exchange.code == ERR_SERVER_ERROR) {
    text = *exchange.code == 0 ? "" : "refused: ";
    text += OrDash(exchange.state) + " " + OrDash(exchange.stateCode);
  } else {
    text = CodeInWords(*exchange.code);
  }
  if (exchange.offline == Offline::kCompleted) text += ", completed offline";
  if (exchange.offline == Offline::kRecorded) text += ", recorded offline";
  if (exchange.offline == Offline::kRefused) text += ", not done offline: -104";
  if (exchange.replayed) text += " (replay)";
  if (!exchange.fatal.empty()) text += "; the library ended the register";
  return text;
}

std::string TraceHeading() {
  return Row("#", "time, UTC", "operation", "RRN", "server", "code", "how it ended");
}

std::string TraceLine(const Exchange &exchange, CardMask &mask) {
  Learn(exchange, mask);
  const std::string line = Row(std::to_string(exchange.number), Time(exchange), OrDash(exchange.operation),
                               OrDash(exchange.rrn), Server(exchange), Code(exchange), Ending(exchange));
  return Showable(mask.Hide(line));
}

std::string TraceInFull(const Exchange &exchange, CardMask &mask) {
  Learn(exchange, mask);
  std::string text = "Exchange " + std::to_string(exchange.number) + "\n";
  const auto line = [&text](const char *label, const std::string &value) {
    text.append("  ").append(Column(label, 11)).append(value).append("\n");
  };
  line("operation", OrDash(exchange.operation) + (exchange.replayed ? ", a replay" : ""));
  if (!exchange.call.empty()) line("call", exchange.call);
  line("RRN", OrDash(exchange.rrn));
  line("time", Time(exchange));
  const char *label = "server";
  for (const Attempt &attempt : exchange.attempts) {
    line(label, OrDash(attempt.server) + ": " + (attempt.problem.empty() ? "reached" : attempt.problem));
    label = "";
  }
  line("code", Code(exchange));
  line("ended", Ending(exchange));
  if (!exchange.request.empty()) {
    const std::string path = exchange.head.substr(0, exchange.head.find('\n'));
    text += Block("Request", path + "\n" + Indented(exchange.request));
  }
  if (!exchange.answer.empty()) text += Block("Answer", Indented(exchange.answer));
  std::string problems;
  for (const std::string &problem : exchange.problems) problems += problem + "\n";
  problems += exchange.fatal;
  if (!problems.empty()) text += Block("Trouble", problems);
  if (!exchange.slip.empty()) text += Block("Slip", exchange.slip);
  return Showable(mask.Hide(text));
}

Facts TraceFacts(const Exchange &exchange, CardMask &mask, bool in_full) {
  Learn(exchange, mask);
  const auto text = [&mask](const std::string &value) { return mask.Hide(value); };
  const auto known = [&](const std::string &value) {
    return value.empty() ? std::nullopt : std::optional<std::string>(text(value));
  };
  std::vector<Facts> attempts;
  for (const Attempt &attempt : exchange.attempts) {
    attempts.emplace_back();
    attempts.back().Add("server", known(attempt.server)).Add("reached", attempt.problem.empty());
    if (!attempt.problem.empty()) attempts.back().Add("problem", text(attempt.problem));
  }
  Facts facts;
  facts.Add("exchange", exchange.number)
      .Add("operation", known(exchange.operation))
      .Add("replay", exchange.replayed)
      .Add("rrn", known(exchange.rrn))
      .Add("time", known(exchange.time))
      .Add("server", exchange.Reached() != nullptr ? known(exchange.Reached()->server) : std::nullopt)
      .Add("attempts", attempts);
  if (exchange.code) {
    facts.Add("code", *exchange.code);
  } else {
    facts.Add("code", static_cast<const char *>(nullptr));
  }
  facts.Add("state", known(exchange.state))
      .Add("stateCode", known(exchange.stateCode))
      .Add("ended", text(Ending(exchange)))
      .Add("offline", exchange.offline == Offline::kCompleted || exchange.offline == Offline::kRecorded);
  if (!in_full) return facts;
  const auto document = [&](const char *name, const std::string &value) {
    const std::string hidden = mask.Hide(value);
    if (value.empty() || Depth(hidden) > kDeepestParsed) {
      facts.Add(name, known(value));
    } else {
      facts.AddJson(name, hidden);
    }
  };
  facts.Add("call", known(exchange.call));
  document("request", exchange.request);
  document("answer", exchange.answer);
  std::vector<std::string> problems;
  for (const std::string &problem : exchange.problems) problems.push_back(text(problem));
  if (!exchange.fatal.empty()) problems.push_back(text(exchange.fatal));
  facts.Add("trouble", problems).Add("slip", known(exchange.slip));
  return facts;
}

}  // namespace reg
