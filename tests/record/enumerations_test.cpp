// record/enumerations_test.cpp: the protocol's vocabularies, value to text and back.
#include "record/enumerations.h"

#include <iterator>
#include <ostream>
#include <string>
#include <vector>

#include "support/record_fixture.h"
#include "support/state_codes.h"

namespace {

template <auto kFrom>
int32_t From(const char *text) {
  return kFrom(text);
}
template <typename Enumeration, const char *(*kTo)(Enumeration)>
const char *To(int32_t value) {
  return kTo(static_cast<Enumeration>(value));
}

struct Vocabulary {
  const char *name;
  int32_t (*from)(const char *text);
  const char *(*to)(int32_t value);
  std::vector<const char *> texts;
};

std::ostream &operator<<(std::ostream &out, const Vocabulary &vocabulary) {
  return out << vocabulary.name;
}

// The words as the protocol has them, written out by hand.
const Vocabulary kVocabularies[] = {
    {"ActivationType",
     From<lumo::ActivationTypeFromString>,
     To<lumo::ActivationType, lumo::ActivationTypeToString>,
     {"SIMPLE_ACTIVATION", "GIFT_CARD", "REFER_A_FRIEND"}},
    {"RequestType",
     From<lumo::RequestTypeFromString>,
     To<lumo::RequestType, lumo::RequestTypeToString>,
     {"ACTIVATION", "PAYMENT", "PAYMENT_AND_CONFIRM", "PAYMENT_CONFIRM", "BALANCE", "CASHBACK", "LINK",
      "EXCHANGE", "DEPOSIT", "AD", "LAST_RRN"}},
    {"RequestState",
     From<lumo::RequestStateFromString>,
     To<lumo::RequestState, lumo::RequestStateToString>,
     {"OK", "SUCCESS", "PROCESSED", "ERROR", "CANCELED"}},
    {"RequestStateCode",
     From<lumo::RequestStateCodeFromString>,
     To<lumo::RequestStateCode, lumo::RequestStateCodeToString>,
     {std::begin(test::kStateCodes), std::end(test::kStateCodes)}},
    {"AccountType",
     From<lumo::AccountTypeFromString>,
     To<lumo::AccountType, lumo::AccountTypeToString>,
     {"GLOBAL", "LOCAL", "DISCOUNT"}},
    {"CashBackType",
     From<lumo::CashBackTypeFromString>,
     To<lumo::CashBackType, lumo::CashBackTypeToString>,
     {"FULL", "SEQ"}},
};

class Enumeration : public ::testing::TestWithParam<Vocabulary> {
 protected:
  int32_t Unknown() const { return static_cast<int32_t>(GetParam().texts.size()); }
  std::string ErrorLine(const std::string &text) const {
    return std::string("ERROR: Unknown enumiratoin for ") + GetParam().name + " [" + text + "]\n";
  }

  test::Folder folder;
};

TEST_P(Enumeration, ValueIsThePlaceInTheTable) {
  for (int32_t value = 0; value < Unknown(); ++value) {
    const char *text = GetParam().texts[static_cast<size_t>(value)];
    EXPECT_STREQ(GetParam().to(value), text);
    EXPECT_EQ(GetParam().from(text), value) << text;
  }
  EXPECT_EQ(folder.Trace(), "");
}

TEST_P(Enumeration, AnyOtherTextIsUnknownAndTraced) {
  const std::string first = GetParam().texts[0];
  for (const std::string &text :
       {std::string(), first + "X", first.substr(1), first.substr(0, first.size() - 1), " " + first,
        std::string(5000, 'A'), std::string("%s%n")}) {
    folder.ClearTrace();
    EXPECT_EQ(GetParam().from(text.c_str()), Unknown());
    EXPECT_EQ(folder.Trace(), ErrorLine(text));
  }
}

TEST_P(Enumeration, LowerCaseIsUnknown) {
  std::string text = GetParam().texts[1];
  for (char &letter : text) {
    if (letter >= 'A' && letter <= 'Z') letter = static_cast<char>(letter + ('a' - 'A'));
  }
  EXPECT_EQ(GetParam().from(text.c_str()), Unknown());
  EXPECT_EQ(folder.Trace(), ErrorLine(text));
}

TEST_P(Enumeration, NullTextIsUnknownAndTraced) {
  EXPECT_EQ(GetParam().from(nullptr), Unknown());
  EXPECT_EQ(folder.Trace(), ErrorLine("(null)"));
}

TEST_P(Enumeration, ValueOutsideTheTableGivesTheEmptyText) {
  for (const int32_t value : {-1, Unknown() + 1, INT32_MIN, INT32_MAX}) {
    EXPECT_STREQ(GetParam().to(value), "") << value;
  }
  EXPECT_EQ(folder.Trace(), "");
}

INSTANTIATE_TEST_SUITE_P(Protocol, Enumeration, ::testing::ValuesIn(kVocabularies),
                         [](const auto &test_case) { return std::string(test_case.param.name); });

TEST(RequestStateCode, UnknownValueAloneIsTracedAndNull) {
  test::Folder folder;
  EXPECT_STREQ(lumo::RequestStateCodeToString(lumo::STATE_CODE_SMS_AUTH_FAILED), "SMS_AUTH_FAILED");
  EXPECT_EQ(folder.Trace(), "");
  EXPECT_EQ(lumo::RequestStateCodeToString(lumo::STATE_CODE_UNKNOWN), nullptr);
  EXPECT_EQ(folder.Trace(), "ERROR: Unsupported Request State Code\n");
}

TEST(OtherEnumerations, UnknownValueGivesTheEmptyText) {
  test::Folder folder;
  EXPECT_STREQ(lumo::ActivationTypeToString(lumo::ACTIVATION_UNKNOWN), "");
  EXPECT_STREQ(lumo::RequestTypeToString(lumo::REQUEST_UNKNOWN), "");
  EXPECT_STREQ(lumo::RequestStateToString(lumo::STATE_UNKNOWN), "");
  EXPECT_STREQ(lumo::AccountTypeToString(lumo::ACCOUNT_UNKNOWN), "");
  EXPECT_STREQ(lumo::CashBackTypeToString(lumo::CASHBACK_UNKNOWN), "");
  EXPECT_EQ(folder.Trace(), "");
}

TEST(FindActivationType, FindsWithoutTracing) {
  test::Folder folder;
  EXPECT_EQ(lumo::FindActivationType("SIMPLE_ACTIVATION"), 0);
  EXPECT_EQ(lumo::FindActivationType("GIFT_CARD"), 1);
  EXPECT_EQ(lumo::FindActivationType("REFER_A_FRIEND"), 2);
  EXPECT_EQ(lumo::FindActivationType("gift_card"), 3);
  EXPECT_EQ(lumo::FindActivationType(nullptr), 3);
  EXPECT_EQ(folder.Trace(), "");
}

}  // namespace
