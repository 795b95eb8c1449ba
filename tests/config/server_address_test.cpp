// config/server_address_test.cpp: an address taken apart.
#include "config/server_address.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

struct Case {
  const char *name;
  const char *address;
  int result;
  const char *host;
  int port;
  const char *path;
};

const Case kCases[] = {
    {"Whole", "http://10.0.0.5:8080/loyalty/ws", 0, "10.0.0.5", 8080, "/loyalty/ws"},
    {"LosesTheLastSlash", "http://10.0.0.5:8080/loyalty/ws/", 0, "10.0.0.5", 8080, "/loyalty/ws"},
    {"LosesTheLastBackslash", "http://10.0.0.5:8080/loyalty\\", 0, "10.0.0.5", 8080, "/loyalty"},
    {"LosesOneSeparatorOnly", "http://10.0.0.5:8080/loyalty//", 0, "10.0.0.5", 8080, "/loyalty/"},
    {"KeepsABareSlash", "http://10.0.0.5:80/", 0, "10.0.0.5", 80, "/"},
    {"TwoSlashesBecomeOne", "http://10.0.0.5:80//", 0, "10.0.0.5", 80, "/"},
    {"HostIsNotJudged", "http://shop:80/a", 0, "shop", 80, "/a"},
    {"EmptyHost", "http://:80/a", 0, "", 80, "/a"},
    {"EmptyPort", "http://10.0.0.5:/a", 0, "10.0.0.5", 0, "/a"},
    {"PortOfLettersIsZero", "http://10.0.0.5:x1/a", 0, "10.0.0.5", 0, "/a"},
    {"PortTakesLeadingDigits", "http://10.0.0.5:80x/a", 0, "10.0.0.5", 80, "/a"},
    {"PortIsNotBoundTo16Bits", "http://10.0.0.5:70000/a", 0, "10.0.0.5", 70000, "/a"},
    {"HugePortIsClamped", "http://10.0.0.5:99999999999/a", 0, "10.0.0.5", 2147483647, "/a"},
    {"NegativePort", "http://10.0.0.5:-1/a", 0, "10.0.0.5", -1, "/a"},
    {"NineteenCharactersOfPortCount", "http://10.0.0.5:0000000000000000001/a", 0, "10.0.0.5", 1, "/a"},
    {"TheTwentiethDoesNot", "http://10.0.0.5:00000000000000000012/a", 0, "10.0.0.5", 1, "/a"},
    {"SecondColonBelongsToThePort", "http://10.0.0.5:80:90/a", 0, "10.0.0.5", 80, "/a"},
    {"SlashBeforeTheColonBelongsToTheHost", "http://a/b:80/c", 0, "a/b", 80, "/c"},
    {"NoScheme", "10.0.0.5:8080/a", -504, "", 0, ""},
    {"OtherScheme", "https://10.0.0.5:8080/a", -504, "", 0, ""},
    {"UpperCaseScheme", "HTTP://10.0.0.5:8080/a", -504, "", 0, ""},
    {"BlankInFront", " http://10.0.0.5:8080/a", -504, "", 0, ""},
    {"SchemeAlone", "http://", -504, "", 0, ""},
    {"NoPort", "http://10.0.0.5/", -504, "", 0, ""},
    {"NoPath", "http://10.0.0.5:80", -504, "", 0, ""},
    {"Empty", "", -504, "", 0, ""},
    {"Null", nullptr, -504, "", 0, ""},
};

class ServerAddress : public testing::TestWithParam<Case> {};

TEST_P(ServerAddress, IsSplit) {
  const Case &row = GetParam();
  // Exactly the room that the contract asks for, so that one byte too many is seen.
  const size_t size = (row.address != nullptr ? std::string(row.address).size() : 0) + 1;
  std::vector<char> host(size, '?');
  std::vector<char> path(size, '?');
  int32_t port = 77;
  EXPECT_EQ(lumo::ParseAddress(row.address, host.data(), &port, path.data()), row.result);
  EXPECT_STREQ(host.data(), row.host);
  EXPECT_EQ(port, row.port);
  EXPECT_STREQ(path.data(), row.path);
}

INSTANTIATE_TEST_SUITE_P(Forms, ServerAddress, testing::ValuesIn(kCases),
                         [](const auto &row) { return std::string(row.param.name); });

}  // namespace
