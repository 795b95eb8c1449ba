// fuzz/offline.cpp: any bytes as OFFLINE, to the requests of a replay, each of which is taken, refused or
// stays without an answer.
#include <algorithm>

#include "config/lumoconfig.h"
#include "engine/offline_replay.h"
#include "network.h"
#include "target.h"

namespace {

constexpr char kConfig[] = R"({"serverAddr":"http://127.0.0.1:1/ws"})";
constexpr char kTaken[] =
    R"({"putPaymentConfirmResponse":{"response":{"requestState":"SUCCESS","requestStateCode":"OK"}}})";
constexpr char kRefused[] =
    R"({"putPaymentConfirmResponse":{"response":{"requestState":"ERROR","requestStateCode":"LOCKED_CARD"}}})";

constexpr const char *kAnswers[] = {kTaken, kRefused, "", "no document"};

// The records: what stands in front of a line feed.
std::vector<std::string> Lines(const std::string &bytes) {
  std::vector<std::string> lines;
  size_t start = 0;
  for (size_t end; (end = bytes.find('\n', start)) != std::string::npos; start = end + 1) {
    lines.push_back(bytes.substr(start, end - start));
  }
  return lines;
}

// Whether all of the lines are among the others, in the same order.
bool AreAmong(const std::vector<std::string> &lines, const std::vector<std::string> &others) {
  auto at = others.begin();
  for (const std::string &line : lines) {
    at = std::find(at, others.end(), line);
    if (at == others.end()) return false;
    ++at;
  }
  return true;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  fuzz::Input input(data, size);
  std::vector<std::string> answers;
  for (unsigned choices = input.Take(), i = 0; i < 4; ++i, choices /= 4) {
    answers.emplace_back(kAnswers[choices % 4]);
  }
  const bool takes_any = std::count(answers.begin(), answers.end(), kTaken) != 0;
  const std::string bytes = input.Rest();
  fuzz::EmptyFolder();
  fuzz::WriteFile("CONFIG", kConfig);
  lumo::LoadConfig();
  fuzz::WriteFile("OFFLINE", bytes);
  fuzz::AnswerInTurn(answers);
  fuzz::TakeSent();
  const int sent = lumo::OfflinePaymentsProcess();
  const std::vector<std::string> records = Lines(bytes);
  const std::string left = fuzz::ReadFile("OFFLINE");
  const std::vector<std::string> kept = Lines(left);
  fuzz::Promise(sent >= 0 && static_cast<size_t>(sent) <= records.size(), "no more sent than there are");
  fuzz::Promise(static_cast<size_t>(sent) <= fuzz::TakeSent().size(), "one request for each that was sent");
  fuzz::Promise(takes_any || sent == 0, "a refusal is no success");
  if (static_cast<size_t>(sent) == records.size()) {
    fuzz::Promise(left == bytes, "a journal left alone where all was sent");
  } else {
    fuzz::Promise(kept.size() == records.size() - static_cast<size_t>(sent), "nothing lost, nothing twice");
    fuzz::Promise(AreAmong(kept, records), "the bytes and the order of what is kept");
  }
  lumo::ReleaseSettings();
  return 0;
}
