// register/trace_reader.h: the exchanges with a server that a trace tells of. The trace is fed in pieces of
// any size and may be of any length; of it only the exchange that is being read is kept. It may begin and end
// anywhere, hold bytes of anything, and lines of a process that was killed.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace reg {

struct Attempt {
  std::string server;   // "10.0.0.5:8080"; empty without a usable address
  std::string problem;  // empty: it was reached
};

// What the terminal did about a server that could not be reached.
enum class Offline { kNo, kCompleted, kRecorded, kRefused };

struct Exchange {
  uint64_t number = 0;    // in the trace, from 1
  std::string operation;  // "PAYMENT"; empty when the trace does not tell
  std::string call;       // of the register: "PaymentProc(5000, BILL.JSN)"
  bool replayed = false;
  std::string rrn;
  std::string time;  // of the request, UTC
  std::vector<Attempt> attempts;
  bool sent = false;
  std::string head;     // of the request, in lines
  std::string request;  // the document
  std::string answer;   // what came of it
  std::string state;
  std::string stateCode;
  std::optional<int> code;  // of the exchange: 0, -405…; none when the trace does not tell how it ended
  Offline offline = Offline::kNo;
  std::string fatal;                  // the library's last line when it ended the register
  std::vector<std::string> problems;  // the other lines that tell of trouble
  std::string slip;                   // of a payment
  std::vector<std::string> cards;     // numbers of cards outside of request and answer

  const Attempt *Reached() const;  // null: none
};

class TraceReader {
 public:
  using Sink = std::function<void(const Exchange &)>;
  explicit TraceReader(Sink sink) : sink_(std::move(sink)) {}

  void Feed(std::string_view bytes);
  // Nothing more comes for a while: hands out an exchange that has come to its end, though lines about
  // it could follow.
  void Settle();
  // Nothing more will be fed: hands out what is left.
  void Finish();
  // The trace begins anew; the numbers go on.
  void Restart();

 private:
  enum class Part { kLines, kRequest, kAnswer, kSlip };

  void TakeLine(std::string_view line);
  bool TakeContext(std::string_view line);
  void TakeExchange(std::string_view line);
  void TakeError(std::string_view line);
  bool TakeAttempt(std::string_view line);
  void TakeRequest(std::string_view line);
  void TakeAnswer(std::string_view line);
  void Open(std::string_view operation);
  void StartAnew();
  void Close();

  Sink sink_;
  std::string rest_;    // of a line whose end has not come yet
  bool skips_ = false;  // the rest of a line that is too long
  Part part_ = Part::kLines;
  bool in_head_ = false;  // of the request
  size_t piece_ = 0;      // bytes of the answer's piece
  bool parses_ = false;   // the answer was taken
  bool after_bom_ = false;
  bool has_number_ = true;
  bool open_ = false;
  uint64_t count_ = 0;
  Exchange next_;  // what is known before the exchange begins
  Exchange exchange_;
};

}  // namespace reg
