// end_to_end/register.h: a register at work: its shop, the server that answers it and their documents.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "end_to_end/shop.h"

namespace test {

constexpr char kCard[] = "9000000001";
constexpr char kCashier[] = "7";

// The ids that follow the shop's STATE.
constexpr char kFirstRrn[] = "1234512120500008";
constexpr char kSecondRrn[] = "1234512120500009";
constexpr char kThirdRrn[] = "1234512120500010";

// The "request" part of this shop's requests and records.
std::string RequestPart(const std::string &type, const std::string &rrn = kFirstRrn, bool is_offline = false,
                        const std::string &shift_id = "");

// The whole request document; `part` may be empty.
std::string Request(const std::string &name, const std::string &type, const std::string &part,
                    const std::string &rrn = kFirstRrn);

// A line of a journal.
std::string Record(const std::string &type, const std::string &part, const std::string &rrn = kFirstRrn,
                   bool is_offline = false, const std::string &shift_id = "");

// What the server says: success, with this request's id; or a refusal.
std::string Success(const std::string &name, const std::string &part = "",
                    const std::string &rrn = kFirstRrn);
std::string Refusal(const std::string &name, const std::string &state_code,
                    const std::string &rrn = kFirstRrn);

std::string State(const std::string &rrn = kFirstRrn, int offline = 0, int update = 0);

// What the library allocates meanwhile is going to be forgotten, as it promises: no leak.
class Forgetting {
 public:
  Forgetting();
  ~Forgetting();
  Forgetting(const Forgetting &) = delete;
  Forgetting &operator=(const Forgetting &) = delete;
};

class Register : public testing::Test {
 protected:
  // Starts the shop with a server that gives these answers, one to each exchange, and creates a transaction.
  void Open(const std::vector<Answer> &answers, const std::string &more = "");
  void Open(const std::vector<std::string> &answers, const std::string &more = "");
  // The same with nobody at the server's address.
  void OpenAlone(const std::string &more = "");

  std::string Post(const std::string &method, const std::string &document) const {
    return test::Post(*server, method, document);
  }
  std::string Body() { return shop.getReceiptBodyPtr(); }

  Shop shop;
  std::unique_ptr<ScriptedServer> server;
  std::string address;  // the server's, or the one where nobody is
};

}  // namespace test
