#include "server_probe.h"

#include <asio.hpp>
#include <chrono>
#include <nlohmann/json.hpp>
#include <optional>

#include "lumo.h"

namespace reg {
namespace {

using Json = nlohmann::ordered_json;

constexpr size_t kPieceBytes = 500;  // an answer ends at the first piece shorter than this
constexpr size_t kLargestAnswer = size_t{4} << 20;

std::string Request(const ServerAddress &address, const TerminalSettings &settings, const std::string &now) {
  const Json document = {{"getLastRrnRequest",
                          {{"request",
                            {{"ver", settings.Text("protocolVersion")},
                             {"type", "LAST_RRN"},
                             {"requestId", "0000000000000000"},
                             {"terminalId", settings.Text("terminalId")},
                             {"requestDate", now},
                             {"employeeId", ""},
                             {"cardNum", ""},
                             {"isOffline", false},
                             {"shiftId", ""}}}}}};
  const std::string text = document.dump();
  return "POST " + address.path + "/rrn\nHost: " + address.host + ":" + std::to_string(address.port) +
         "\nContent-Type: application/json-soap;charset=UTF-8\nContent-Length: " +
         std::to_string(text.size()) + "\n\n" + text + "\n";
}

// A connection each of whose steps may take so long.
class Connection {
 public:
  explicit Connection(int seconds) : wait_(seconds) {}

  std::optional<std::string> Connect(const ServerAddress &address) {
    asio::error_code error;
    const auto host = asio::ip::make_address_v4(address.host, error);
    return error ? error.message() : Run([&](const auto &done) {
      socket_.async_connect({host, static_cast<uint16_t>(address.port)},
                            [done](const asio::error_code &result) { done(result, 0); });
    });
  }
  std::optional<std::string> Send(const std::string &bytes) {
    return Run([&](const auto &done) { asio::async_write(socket_, asio::buffer(bytes), done); });
  }
  // No bytes: the end.
  std::optional<std::string> Receive(std::string *piece) {
    piece->resize(kPieceBytes);
    auto problem = Run([&](const auto &done) { socket_.async_read_some(asio::buffer(*piece), done); });
    piece->resize(count_);
    return problem;
  }

 private:
  // Why the step failed.
  template <typename Start>
  std::optional<std::string> Run(Start start) {
    asio::error_code outcome = asio::error::timed_out;
    count_ = 0;
    bool ended = false;
    context_.restart();
    start([&](const asio::error_code &error, size_t count) {
      outcome = error == asio::error::eof ? asio::error_code() : error;
      count_ = count;
      ended = true;
    });
    context_.run_for(wait_);
    if (!ended) {
      asio::error_code ignored;
      socket_.close(ignored);
      context_.restart();
      context_.run();  // the step's own end, which now comes at once
      return "nothing within " + std::to_string(wait_.count()) + " s";
    }
    if (outcome) return outcome.message();
    return std::nullopt;
  }

  asio::io_context context_;
  asio::ip::tcp::socket socket_{context_};
  std::chrono::seconds wait_;
  size_t count_ = 0;
};

std::string Member(const Json &object, const char *name) {
  const auto found = object.find(name);
  return found != object.end() && found->is_string() ? found->get<std::string>() : "";
}

void Fail(ServerAnswer *answer, int code, const std::string &problem) {
  answer->code = code;
  answer->problem = problem;
}

void ReadAnswer(const std::string &text, ServerAnswer *answer) {
  for (const char *status : {"400", "500"}) {
    if (text.find(std::string("HTTP Status ") + status) != std::string::npos) {
      return Fail(answer, *status == '4' ? ERR_SERVER_REJECTED : ERR_SERVER_FAILURE,
                  std::string("it says HTTP Status ") + status);
    }
  }
  const Json json = Json::parse(text, nullptr, false);
  if (json.is_discarded()) {
    if (text.compare(0, 5, "HTTP/") == 0) {
      return Fail(answer, ERR_JSON_SYNTAX, "it answers as a web server, with a head");
    }
    if (text[text.find_first_not_of(" \t\r\n") == std::string::npos ? 0
                                                                    : text.find_first_not_of(" \t\r\n")] ==
        '{') {
      return Fail(answer, ERR_RESPONSE_STRUCTURE, "its answer is cut off, or no JSON");
    }
    return Fail(answer, ERR_JSON_SYNTAX, "its answer is no JSON");
  }
  if (!json.is_object() || json.empty() || !json.front().is_object()) {
    return Fail(answer, ERR_RESPONSE_STRUCTURE, "its answer is none of this protocol");
  }
  if (json.begin().key() != "getLastRrnResponse") {
    return Fail(answer, ERR_RESPONSE_TYPE, "it answers another question: " + json.begin().key());
  }
  const Json &parts = json.front();
  if (!parts.contains("response") || !parts["response"].is_object()) {
    return Fail(answer, ERR_RESPONSE_CONTENT, "its answer has no response");
  }
  const Json &response = parts["response"];
  answer->state = Member(response, "requestState");
  answer->stateCode = Member(response, "requestStateCode");
  answer->message = Member(response, "message");
  answer->date = Member(response, "responseDate");
  if (answer->state != "SUCCESS") {
    return Fail(answer, ERR_SERVER_ERROR, "it refuses: " + answer->state + " " + answer->stateCode);
  }
  if (!parts.contains("rrn") || !parts["rrn"].is_object()) {
    return Fail(answer, ERR_RESPONSE_CONTENT, "its answer has no rrn");
  }
  answer->lastNumber = Member(parts["rrn"], "rrNumber");
}

}  // namespace

ServerAnswer AskServer(const ServerAddress &address, const TerminalSettings &settings, const std::string &now,
                       int seconds) {
  ServerAnswer answer;
  const auto start = std::chrono::steady_clock::now();
  Connection connection(seconds);
  if (const auto problem = connection.Connect(address)) {
    Fail(&answer, ERR_CONNECT, "no connection: " + *problem);
    return answer;
  }
  if (const auto problem = connection.Send(Request(address, settings, now))) {
    Fail(&answer, ERR_REQUEST_SEND, "the request cannot be sent: " + *problem);
    return answer;
  }
  std::string text;
  std::string piece(kPieceBytes, '\0');
  while (piece.size() == kPieceBytes && text.size() <= kLargestAnswer) {
    if (const auto problem = connection.Receive(&piece)) {
      Fail(&answer, ERR_NO_RESPONSE, "no answer: " + *problem);
      return answer;
    }
    text += piece;
  }
  answer.milliseconds = static_cast<int>(
      std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() - start)
          .count());
  if (text.empty() || text.size() > kLargestAnswer) {
    Fail(&answer, ERR_NO_RESPONSE,
         text.empty() ? "no answer: it ends the connection" : "its answer has no end");
  } else {
    ReadAnswer(text, &answer);
  }
  return answer;
}

}  // namespace reg
