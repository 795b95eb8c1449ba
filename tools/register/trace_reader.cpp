#include "trace_reader.h"

#include <algorithm>
#include <cstdlib>
#include <utility>

#include "lumo.h"

namespace reg {
namespace {

constexpr size_t kLongestText = size_t{8} << 20;      // of a line, an answer; the library takes half of it
constexpr size_t kMostLines = 1000;                   // of problems, of a slip
constexpr size_t kPieceBytes = 500;                   // the library writes an answer to its trace as it comes
constexpr size_t kAttempts = 2;                       // the server and the alternate one
constexpr std::string_view kLastNumber = "LAST_RRN";  // the question for it has none itself
constexpr int kNoSockets = -1;                        // it has no name in lumo.h

// Of an exchange whose answer was read.
int CodeOfState(const std::string &state) {
  return state == "SUCCESS" ? 0 : int{ERR_SERVER_ERROR};
}

bool StartsWith(std::string_view line, std::string_view start) {
  return line.substr(0, start.size()) == start;
}

// Takes `start` off the line when it begins with it.
bool Take(std::string_view &line, std::string_view start) {
  if (!StartsWith(line, start)) return false;
  line.remove_prefix(start.size());
  return true;
}

// "text]" of "label [text]".
std::string_view Bracketed(std::string_view line) {
  const size_t end = line.rfind(']');
  return line.substr(0, end);
}

// The first text of this name in a document that the library wrote.
std::string Member(std::string_view document, std::string_view name) {
  const std::string key = "\"" + std::string(name) + "\":\"";
  const size_t found = document.find(key);
  if (found == std::string_view::npos) return "";
  const size_t begin = found + key.size();
  const size_t end = document.find('"', begin);
  return std::string(document.substr(begin, end == std::string_view::npos ? end : end - begin));
}

void Append(std::string &text, std::string_view more) {
  text.append(more.substr(0, kLongestText - std::min(kLongestText, text.size())));
}

void Add(std::vector<std::string> &lines, std::string_view line) {
  if (lines.size() < kMostLines) lines.emplace_back(line);
}

// Lines that look like trouble and are none.
bool IsNoise(std::string_view line) {
  constexpr std::string_view kNoise[] = {
      "ERROR: SetFilePointer function failed",
      "ERROR: CreateFile function failed with error 2",  // what it means is in the line behind it
      "ERROR: trans_strcpy src == NULL",
      "ERROR: LUMO_Receive res",
      "ERROR: Connection failed!",
      "WARNING: unsupported bill element [spendBonus]",
  };
  return std::any_of(std::begin(kNoise), std::end(kNoise),
                     [line](std::string_view noise) { return StartsWith(line, noise); });
}

bool EndsAnswer(std::string_view line) {
  constexpr std::string_view kEnds[] = {
      "ParseOperationResponse",  "ERROR: LUMO_Receive", "ERROR: recv failed", "Connection closed",
      "ERROR: No data received", "Disconnect",          "LUMOInit()",         "CreateTransaction ["};
  return std::any_of(std::begin(kEnds), std::end(kEnds),
                     [line](std::string_view end) { return StartsWith(line, end); });
}

// The calls that begin an operation.
bool IsCall(std::string_view line) {
  constexpr std::string_view kCalls[] = {
      "BalanceProc()", "PaymentProc(", "PaymentAndConfirmProc(", "PaymentConfirmProc(", "PaymentCancelProc(",
      "CashBackProc(", "DepositProc(", "ExchangeProc(",          "LinkCardProc("};
  return line == "ActivationProc" ||
         std::any_of(std::begin(kCalls), std::end(kCalls),
                     [line](std::string_view call) { return StartsWith(line, call); });
}

}  // namespace

const Attempt *Exchange::Reached() const {
  return !attempts.empty() && attempts.back().problem.empty() ? &attempts.back() : nullptr;
}

void TraceReader::Feed(std::string_view bytes) {
  while (!bytes.empty()) {
    const size_t end = bytes.find('\n');
    const std::string_view piece = bytes.substr(0, end);
    bytes.remove_prefix(end == std::string_view::npos ? bytes.size() : end + 1);
    if (end == std::string_view::npos || !rest_.empty()) {
      Append(rest_, piece);
      skips_ = rest_.size() >= kLongestText;
      if (end == std::string_view::npos) return;
      const std::string line = std::exchange(rest_, {});
      if (!std::exchange(skips_, false)) TakeLine(line);
    } else {
      TakeLine(piece);
    }
  }
}

void TraceReader::Finish() {
  if (!rest_.empty() && !skips_) TakeLine(std::exchange(rest_, {}));
  Close();
}

void TraceReader::Settle() {
  if (open_ && exchange_.code && rest_.empty() && part_ == Part::kLines) Close();
}

void TraceReader::Restart() {
  Close();
  rest_.clear();
  skips_ = false;
  next_ = {};
}

void TraceReader::Open(std::string_view operation) {
  Close();
  exchange_ = next_;
  exchange_.number = ++count_;
  exchange_.operation = operation;
  if (!has_number_ || operation == kLastNumber) exchange_.rrn.clear();
  open_ = true;
  parses_ = false;
}

// Another operation begins, perhaps of the same transaction and its cards.
void TraceReader::StartAnew() {
  Close();
  std::vector<std::string> cards = std::move(next_.cards);
  next_ = {};
  next_.cards = std::move(cards);
}

void TraceReader::Close() {
  part_ = Part::kLines;
  if (!open_) return;
  open_ = false;
  sink_(exchange_);
}

void TraceReader::TakeLine(std::string_view line) {
  if (!line.empty() && line.back() == '\r') line.remove_suffix(1);
  // A line that a killed process left without its end, and the next process's first.
  constexpr std::string_view kStart = "LUMOInit()";
  if (line.size() > kStart.size() && line.substr(line.size() - kStart.size()) == kStart) {
    TakeLine(line.substr(0, line.size() - kStart.size()));
    line = kStart;
  }
  switch (part_) {
    case Part::kRequest:
      if (line != "Receiving " && !StartsWith(line, "ERROR: ") && line != kStart) return TakeRequest(line);
      break;
    case Part::kAnswer:
      if (!EndsAnswer(line)) return TakeAnswer(line);
      break;
    case Part::kSlip:
      if (line.empty() || exchange_.slip.size() > kPieceBytes * kMostLines) {
        part_ = Part::kLines;
      } else {
        Append(exchange_.slip, line);
        exchange_.slip += '\n';
      }
      return;
    case Part::kLines:
      break;
  }
  part_ = Part::kLines;
  if (!TakeContext(line)) TakeExchange(line);
  after_bom_ = StartsWith(line, "No BOM found");
}

// The lines around exchanges. True when the line is one of them.
bool TraceReader::TakeContext(std::string_view line) {
  const std::string_view whole = line;
  if (line == "LUMOInit()" || line == "CloseTransaction()" || line == "GetLogRecords()") {
    StartAnew();
    next_.cards.clear();
    next_.replayed = false;
  } else if (Take(line, "CreateTransaction [")) {
    StartAnew();
    next_.cards.clear();
    next_.cards.emplace_back(line.substr(0, line.find("] [")));
  } else if (IsCall(line)) {
    StartAnew();
    next_.call = whole;
  } else if (line == "SendOfflinePayments()") {
    StartAnew();
    next_.cards.clear();
    next_.replayed = true;
  } else if (Take(line, "  refer_card_num [") || Take(line, "LinkCardProcess card [")) {
    Add(next_.cards, Bracketed(line));
  } else if (StartsWith(line, "FillRequest(")) {
    Close();
    has_number_ = true;
  } else if (Take(line, "First RRN generation [") || Take(line, "Next RRN generation [")) {
    Close();
    next_.rrn = Bracketed(line);
  } else if (StartsWith(line, "ERROR: GetLastRrnProcess error") ||
             StartsWith(line, "ERROR: Date compare error")) {
    Close();
    Add(next_.problems, line);
    has_number_ = false;  // the one that was made is not used
  } else if (line == "LoadLogRecord") {
    const bool replayed = next_.replayed;
    StartAnew();
    next_.cards.clear();
    next_.replayed = replayed;
    has_number_ = true;
  } else if (Take(line, "TransactionProcess [")) {
    Open(Bracketed(line));
    next_.problems.clear();
  } else if (!open_ && (line == "Sending buffer:" || StartsWith(line, "Connecting to "))) {
    Open("");  // the trace begins here
    return false;
  } else if (!open_ && Take(line, "request.requestId = ")) {
    next_.rrn = line;
  } else if (!open_ && Take(line, "request.requestDate = ")) {
    next_.time = line;
  } else if (!open_ && Take(line, "request.cardNum = ")) {
    Add(next_.cards, line);
  } else {
    return !open_;
  }
  return true;
}

void TraceReader::TakeExchange(std::string_view line) {
  const std::string_view whole = line;
  if (Take(line, "Connecting to ")) {
    exchange_.attempts.push_back({std::string(line.substr(0, line.find('/'))), "no end"});
  } else if (line == "Connection established!") {
    if (!exchange_.attempts.empty()) exchange_.attempts.back().problem.clear();
  } else if (line == "Sending buffer:") {
    exchange_.sent = true;
    in_head_ = true;
    part_ = Part::kRequest;
  } else if (line == "Receiving ") {
    piece_ = 0;
    part_ = Part::kAnswer;
  } else if (line == "ParseOperationResponse") {
    parses_ = true;
  } else if (Take(line, "response.state = ")) {
    exchange_.state = line;
    // That was about a bill in the answer.
    if (exchange_.code == ERR_RESPONSE_STRUCTURE) exchange_.code.reset();
  } else if (Take(line, "response.stateCode = ")) {
    exchange_.stateCode = line;
  } else if (line == "Disconnect") {
    if (parses_ && !exchange_.code) exchange_.code = CodeOfState(exchange_.state);
  } else if (line == "PaymentProcessOffline()") {
    exchange_.offline = Offline::kCompleted;
  } else if (line == "Bill:") {
    part_ = Part::kSlip;
  } else if (StartsWith(line, "ERROR: ASSERT IN ")) {
    exchange_.fatal = whole;
    Close();
  } else if (StartsWith(line, "ERROR: ") || StartsWith(line, "WARNING: ")) {
    TakeError(line);
  }
}

void TraceReader::TakeError(std::string_view line) {
  struct Meaning {
    std::string_view line;
    int code;
  };
  constexpr Meaning kBeforeAnswer[] = {
      {"ERROR: Create operation request JSON", ERR_REQUEST_BUILD},
      {"ERROR: LUMO_Send error", ERR_REQUEST_SEND},
      {"ERROR: LUMO_Receive error", ERR_NO_RESPONSE},
      {"ERROR: No data received", ERR_NO_RESPONSE},
  };
  constexpr Meaning kAboutAnswer[] = {
      {"ERROR: HTTP status 400", ERR_SERVER_REJECTED},
      {"ERROR: HTTP status 500", ERR_SERVER_FAILURE},
      {"ERROR: JSON Parser Error", ERR_JSON_SYNTAX},
      {"ERROR: no root element in json response", ERR_RESPONSE_STRUCTURE},
      {"ERROR: root element is", ERR_RESPONSE_STRUCTURE},
      {"ERROR: No parts in transaction", ERR_RESPONSE_TYPE},
      {"ERROR: Response is not full", ERR_RESPONSE_CONTENT},
  };
  const auto find = [&](const Meaning *begin, const Meaning *end) {
    const Meaning *found =
        std::find_if(begin, end, [line](const Meaning &row) { return StartsWith(line, row.line); });
    if (found == end || exchange_.code) return;
    // Once the state is known, a line about the root element is about the answer's bill and decides nothing.
    if (found->code != ERR_RESPONSE_STRUCTURE || exchange_.state.empty()) exchange_.code = found->code;
  };
  if (parses_) {
    find(std::begin(kAboutAnswer), std::end(kAboutAnswer));
  } else {
    find(std::begin(kBeforeAnswer), std::end(kBeforeAnswer));
    if (!exchange_.sent && TakeAttempt(line.substr(line.find(' ') + 1))) return;
  }
  if (StartsWith(line, "ERROR: Organizer fee is greater")) exchange_.offline = Offline::kRefused;
  // A confirmation that no server heard goes into the journals; an append leaves this line.
  if (exchange_.code == ERR_CONNECT && exchange_.operation == "PAYMENT_CONFIRM" && !exchange_.replayed &&
      !after_bom_ && StartsWith(line, "ERROR: SetFilePointer function failed")) {
    exchange_.offline = Offline::kRecorded;
  }
  if (!IsNoise(line)) Add(exchange_.problems, line);
}

// Why a server could not be reached. True when the line tells it.
bool TraceReader::TakeAttempt(std::string_view line) {
  std::vector<Attempt> &attempts = exchange_.attempts;
  const bool no_address = StartsWith(line, "ParseAddress res");
  if (no_address) attempts.push_back({"", "no usable address"});
  if (attempts.empty() || attempts.size() > kAttempts) return false;
  std::string &problem = attempts.back().problem;
  bool no_sockets = false;
  if (Take(line, "Connection Failed ")) {
    problem = "error " + std::string(line);
    if (line == "10061") problem = "refused";
    if (line == "10060") problem = "no connection in time";
    if (line == "10051" || line == "10065") problem = "unreachable";
  } else if (line == "incorrect IP address") {
    problem = "no dotted address";
  } else if (StartsWith(line, "WSAStartup failed") || StartsWith(line, "socket failed")) {
    no_sockets = line[0] == 'W';
    problem = line;
  } else if (!no_address) {
    return false;
  }
  if (attempts.size() == kAttempts) exchange_.code = no_sockets ? kNoSockets : int{ERR_CONNECT};
  return true;
}

// The head, an empty line, the document and an empty line.
void TraceReader::TakeRequest(std::string_view line) {
  if (!exchange_.request.empty()) return;
  if (in_head_) {
    in_head_ = !line.empty();
    if (in_head_) Append(exchange_.head, std::string(line) + '\n');
    return;
  }
  exchange_.request = line;
  if (exchange_.operation.empty()) exchange_.operation = Member(line, "type");
  if (exchange_.operation != kLastNumber) exchange_.rrn = Member(line, "requestId");
  exchange_.time = Member(line, "requestDate");
}

// An answer comes in pieces of 500 bytes, each with a line end behind it that is not its own.
void TraceReader::TakeAnswer(std::string_view line) {
  if (piece_ == kPieceBytes) {
    piece_ = 0;
  } else if (!exchange_.answer.empty()) {
    Append(exchange_.answer, "\n");
    ++piece_;
  }
  Append(exchange_.answer, line);
  piece_ += line.size();
}

}  // namespace reg
