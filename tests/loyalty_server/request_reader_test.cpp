// loyalty_server/request_reader_test.cpp: the request in the bytes of a connection.
#include "loyalty_server/request_reader.h"

#include <gmock/gmock.h>

namespace {

using loyalty::RequestReader;
using Status = RequestReader::Status;

constexpr size_t kMost = 1000;

TEST(RequestReader, TakesATerminalsRequestInPiecesOfEverySize) {
  const std::string request =
      "POST /loyalty/ws/payment\nHost: 127.0.0.1:8080\nContent-Type: application/json-soap;charset=UTF-8\n"
      "Content-Length: 7\n\n{\"a\":1}\n";
  const size_t end_of_body = request.size() - 1;
  for (size_t size = 1; size <= request.size(); ++size) {
    RequestReader reader(kMost);
    Status status = Status::kMore;
    for (size_t i = 0; i < request.size(); i += size) {
      status = reader.Feed(std::string_view(request).substr(i, size));
      EXPECT_EQ(status, i + size >= end_of_body ? Status::kComplete : Status::kMore) << size << " at " << i;
    }
    EXPECT_EQ(reader.path(), "/loyalty/ws/payment");
    EXPECT_EQ(reader.method(), "payment");
    EXPECT_EQ(reader.body(), "{\"a\":1}");
  }
}

TEST(RequestReader, TakesForeignHeadsToo) {
  struct Row {
    const char *bytes;
    const char *method;
    const char *body;
  };
  const Row rows[] = {
      {"POST /ws/rrn HTTP/1.1\r\nHost: x\r\nContent-Length: 2\r\n\r\n{}", "rrn", "{}"},
      {"POST rrn\ncontent-length:\t2 \n\n{}", "rrn", "{}"},
      {"POST /\nCONTENT-LENGTH: 0\n\n", "", ""},
      {"POST /ws//ad\nContent-Length: 1\n\n\n", "ad", "\n"},
  };
  for (const Row &row : rows) {
    RequestReader reader(kMost);
    EXPECT_EQ(reader.Feed(row.bytes), Status::kComplete) << row.bytes;
    EXPECT_EQ(reader.method(), row.method);
    EXPECT_EQ(reader.body(), row.body);
  }
}

TEST(RequestReader, RefusesWhatIsNoRequest) {
  struct Row {
    std::string bytes;
    int status;
  };
  const Row rows[] = {
      {"GET / HTTP/1.1\n", 405},
      {"\n", 400},
      {"{\"a\":1}\n", 400},
      {"post /ws/rrn\n", 405},
      {"POST \n", 400},
      {std::string("\x16\x03\x01\x02\x00\x01\n", 7), 400},
      {"POST /rrn\n\n", 411},
      {"POST /rrn\nnonsense\n", 400},
      {"POST /rrn\nContent-Length: \n", 400},
      {"POST /rrn\nContent-Length: -1\n", 400},
      {"POST /rrn\nContent-Length: 0x10\n", 400},
      {"POST /rrn\nContent-Length: 2\nContent-Length: 2\n", 400},
      {"POST /rrn\nContent-Length: 1001\n", 413},
      {"POST /rrn\nContent-Length: 99999999999999999999999999999999\n", 413},
      {"POST /" + std::string(20000, 'a'), 431},
  };
  for (const Row &row : rows) {
    RequestReader reader(kMost);
    EXPECT_EQ(reader.Feed(row.bytes), Status::kBad) << row.bytes.substr(0, 60);
    EXPECT_EQ(reader.http_status(), row.status) << row.bytes.substr(0, 60);
    EXPECT_FALSE(reader.complaint().empty());
    EXPECT_EQ(reader.Feed("POST /rrn\nContent-Length: 0\n\n"), Status::kBad);
  }
}

TEST(RequestReader, AHeadWithoutEndIsRefusedHoweverItIsCut) {
  for (const size_t size : {1u, 7u, 4096u}) {
    RequestReader reader(kMost);
    const std::string piece = std::string(size - 1, 'a') + (size == 7 ? "\n" : "a");
    Status status = reader.Feed("POST /rrn\nX: ");
    size_t fed = 0;
    while (status == Status::kMore && fed < 100000) {
      status = reader.Feed(size == 7 ? "X: 1\nX: " : piece);
      fed += size;
    }
    EXPECT_EQ(status, Status::kBad);
    EXPECT_EQ(reader.http_status(), 431);
    EXPECT_LT(fed, 30000u);
  }
}

TEST(RequestReader, TheLongestBodyIsTaken) {
  RequestReader reader(kMost);
  EXPECT_EQ(reader.Feed("POST /rrn\nContent-Length: 1000\n\n"), Status::kMore);
  EXPECT_EQ(reader.Feed(std::string(999, 'x')), Status::kMore);
  EXPECT_EQ(reader.Feed("yz"), Status::kComplete);
  EXPECT_EQ(reader.body().size(), 1000u);
  EXPECT_EQ(reader.body().back(), 'y');
}

}  // namespace
