// loyalty_server/page_posix_test.cpp: the page and the calls behind it, over HTTP.
#include <gmock/gmock.h>

#include <atomic>
#include <memory>
#include <thread>

#include "loyalty_server/bench.h"
#include "loyalty_server/client.h"
#include "loyalty_server/page.h"
#include "loyalty_server/page_files.h"

namespace {

using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

class ThePage : public testing::Test {
 protected:
  std::string Host() const { return "127.0.0.1:" + std::to_string(page->port()); }
  std::string Call(const std::string &method, const std::string &path, const std::string &body = "",
                   const std::string &host = "") {
    bench::Client client(page->port());
    client.Send(Text(method, path, body, host.empty() ? Host() : host));
    return client.ReceiveAll();
  }
  static std::string Text(const std::string &method, const std::string &path, const std::string &body,
                          const std::string &host) {
    return method + " " + path + " HTTP/1.1\r\nHost: " + host +
           "\r\nContent-Length: " + std::to_string(body.size()) +
           "\r\nContent-Type: application/json\r\n\r\n" + body;
  }
  static std::string Body(const std::string &answer) { return answer.substr(answer.find("\r\n\r\n") + 4); }

  loyalty::Server server{bench::MakeProgramme()};
  std::unique_ptr<loyalty::Page> page = std::make_unique<loyalty::Page>(&server, "127.0.0.1", 0);
};

TEST_F(ThePage, IsServedWithItsFiles) {
  EXPECT_EQ(page->address(), "http://" + Host() + "/");
  struct Row {
    const char *path;
    const char *type;
    const char *content;
  };
  for (const Row &row : {Row{"/", "text/html; charset=utf-8", loyalty::kPageHtml},
                         Row{"/page.css", "text/css; charset=utf-8", loyalty::kPageCss},
                         Row{"/page.js", "text/javascript; charset=utf-8", loyalty::kPageJs}}) {
    const std::string answer = Call("GET", row.path);
    EXPECT_THAT(answer, StartsWith("HTTP/1.1 200 OK\r\n")) << row.path;
    EXPECT_THAT(answer, HasSubstr(std::string("Content-Type: ") + row.type + "\r\n"));
    EXPECT_THAT(answer, HasSubstr("default-src 'none'"));
    EXPECT_EQ(Body(answer), row.content);
  }
  EXPECT_THAT(Call("GET", "/other"), StartsWith("HTTP/1.1 404 "));
}

TEST_F(ThePage, NamesNoResourceFromElsewhere) {
  EXPECT_THAT(loyalty::kPageHtml, HasSubstr("<script src=\"/page.js\""));
  for (const char *content : {loyalty::kPageHtml, loyalty::kPageCss}) {
    EXPECT_THAT(content, Not(HasSubstr("//")));
    EXPECT_THAT(content, Not(HasSubstr("@import")));
    EXPECT_THAT(content, Not(HasSubstr("url(")));
  }
}

TEST_F(ThePage, TakesCalls) {
  EXPECT_EQ(Body(Call("PUT", "/api/fault", R"({"fault":"http 500"})")),
            "{\"fault\":\"http 500\",\"step\":1,\"steps\":1}\n");
  const std::string balance = bench::Document(*loyalty::FindOperation("balance"), bench::Head());
  EXPECT_THAT(bench::Exchange(server.port(), "balance", balance), HasSubstr("HTTP Status 500"));
  const std::string answer = Call("GET", "/api/exchanges?after=0");
  EXPECT_THAT(answer, StartsWith("HTTP/1.1 200 OK\r\n"));
  EXPECT_THAT(answer, HasSubstr("Content-Type: application/json\r\n"));
  EXPECT_THAT(answer, HasSubstr("\"fault\":\"http 500\""));
  EXPECT_EQ(Body(Call("GET", "/api/exchanges?after=1")), "{\"exchanges\":[]}\n");
  EXPECT_THAT(Call("GET", "/api/cards/1%30%30"), HasSubstr("\"number\":\"100\""));
  EXPECT_THAT(Call("GET", "/api/cards/999"), StartsWith("HTTP/1.1 404 "));
  EXPECT_THAT(Call("PUT", "/api/fault", "{}"), StartsWith("HTTP/1.1 400 "));
  for (const char *method : {"POST", "DELETE", "PATCH"}) {
    EXPECT_THAT(Call(method, "/api/fault", R"({"fault":"off"})"), StartsWith("HTTP/1.1 405 ")) << method;
  }
  EXPECT_EQ(loyalty::FaultText(server.fault()), "http 500");
}

// A page from elsewhere may let its own name point to this machine; the name gives it away.
TEST_F(ThePage, IsServedUnderItsOwnNameOnly) {
  const std::string port = ":" + std::to_string(page->port());
  EXPECT_THAT(Call("GET", "/api/state", "", "localhost" + port), StartsWith("HTTP/1.1 200 "));
  for (const char *name : {"evil.example", "127.0.0.1.evil.example", ""}) {
    EXPECT_THAT(Call("GET", "/api/state", "", name + port), StartsWith("HTTP/1.1 403 ")) << name;
    EXPECT_THAT(Call("PUT", "/api/fault", R"({"fault":"refuse"})", name + port), StartsWith("HTTP/1.1 403 "));
  }
  EXPECT_EQ(loyalty::FaultText(server.fault()), "off");
  page.reset();
  page = std::make_unique<loyalty::Page>(&server, "0.0.0.0", 0);
  EXPECT_EQ(page->address(), "http://0.0.0.0:" + std::to_string(page->port()) + "/");
  EXPECT_THAT(Call("GET", "/api/state", "", "bench.shop.example:80"), StartsWith("HTTP/1.1 200 "))
      << "who opens it to other machines knows by what name they come";
}

TEST_F(ThePage, ManyThatWaitHoldUpNobody) {
  const std::string path = "/api/state?after=" + std::to_string(server.revision()) + "&wait=60";
  std::vector<std::unique_ptr<bench::Client>> waiting;
  for (int i = 0; i < 40; ++i) {
    waiting.push_back(std::make_unique<bench::Client>(page->port()));
    waiting.back()->Send(Text("GET", path, "", Host()));
    EXPECT_THAT(Call("GET", "/api/ad"), HasSubstr("Скидки"));
  }
  server.WakeWaiting();
  for (const auto &client : waiting) EXPECT_THAT(client->ReceiveAll(), HasSubstr("\"revision\""));
}

TEST_F(ThePage, EndsWhileSomebodyWaits) {
  bench::Client waiting(page->port());
  waiting.Send(Text("GET", "/api/exchanges?wait=60", "", Host()));
  bench::Client silent(page->port());
  EXPECT_THAT(Call("GET", "/api/ad"), HasSubstr("Скидки"));
  const auto start = std::chrono::steady_clock::now();
  page.reset();
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(30));
}

// Its requests have no end: each byte would buy it some more seconds.
TEST_F(ThePage, EndsWhileSomebodySendsOnAndOn) {
  bench::Client trickling(page->port());
  trickling.Send("GET / HTTP/1.1\r\nX: ");
  std::atomic<bool> is_over{false};
  std::thread sender([&] {
    try {
      for (int i = 0; i < 400 && !is_over; ++i) {
        trickling.Send("x");
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
      }
    } catch (const std::system_error &) {  // the page is gone
    }
  });
  EXPECT_THAT(Call("GET", "/api/ad"), HasSubstr("Скидки"));
  const auto start = std::chrono::steady_clock::now();
  page.reset();
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(30));
  is_over = true;
  sender.join();
}

TEST_F(ThePage, NamesTheAddressThatItCannotHave) {
  const auto complaint = [this](const std::string &address, uint16_t port) -> std::string {
    try {
      const loyalty::Page other(&server, address, port);
    } catch (const std::system_error &error) {
      return error.what();
    }
    return "none";
  };
  EXPECT_EQ(complaint("127.0.0.1", page->port()), "cannot listen on " + Host() + ": Address already in use");
  EXPECT_THAT(complaint("no address", 8081), StartsWith("cannot listen on no address:8081: "));
}

}  // namespace
