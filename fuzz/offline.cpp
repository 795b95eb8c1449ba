// fuzz/offline.cpp: any bytes as OFFLINE, to the requests of a replay, which the server takes or refuses.
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

// The whole lines of the bytes.
std::string WholeLines(const std::string &bytes) {
  const size_t end = bytes.rfind('\n');
  return end == std::string::npos ? "" : bytes.substr(0, end + 1);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  fuzz::Input input(data, size);
  const bool refuses = input.Take() % 2 != 0;
  const std::string bytes = input.Rest();
  fuzz::EmptyFolder();
  fuzz::WriteFile("CONFIG", kConfig);
  lumo::LoadConfig();
  fuzz::WriteFile("OFFLINE", bytes);
  fuzz::AnswerWith(refuses ? kRefused : kTaken, 500);
  fuzz::TakeSent();
  const int sent = lumo::OfflinePaymentsProcess();
  const std::string lines = WholeLines(bytes);
  const auto records = std::count(lines.begin(), lines.end(), '\n');
  const std::string left = fuzz::ReadFile("OFFLINE");
  const auto kept = std::count(left.begin(), left.end(), '\n');
  fuzz::Promise(sent >= 0 && sent <= records, "no more sent than there are");
  fuzz::Promise(static_cast<size_t>(sent) <= fuzz::TakeSent().size(), "one request for each that was sent");
  fuzz::Promise(!refuses || sent == 0, "a refusal is no success");
  // Either every record that was not taken is kept, or the journal was left alone.
  fuzz::Promise(left == bytes || kept == records - sent, "nothing lost");
  fuzz::Promise(sent != 0 || lines == WholeLines(left), "the bytes of what is kept");
  lumo::ReleaseSettings();
  return 0;
}
