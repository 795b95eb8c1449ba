// engine/payment_stack_test.cpp: payments, and the confirmations that find them by their RRN.
#include "engine/payment_stack.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdio>
#include <random>
#include <string>
#include <vector>

#include "support/folder.h"

namespace {

using lumo::PaymentStackItem;

class PaymentStack : public testing::Test {
 protected:
  ~PaymentStack() override { lumo::PaymentStackFree(&stack); }

  void Push(const char *rrn, int32_t state = -1) {
    lumo::PaymentStackPush(&stack, rrn, 0, 0, 0, static_cast<lumo::PaymentState>(state));
  }
  void Answer(const char *rrn, int32_t state) {
    lumo::PaymentStackAnswer(&stack, rrn, static_cast<lumo::PaymentState>(state));
  }
  std::vector<int32_t> PopStates() {
    std::vector<int32_t> states;
    PaymentStackItem item;
    while (lumo::PaymentStackPop(&stack, &item)) states.push_back(item.state);
    return states;
  }

  test::Folder folder;
  lumo::PaymentStack stack = {};
};

using States = std::vector<int32_t>;

TEST_F(PaymentStack, GivesThePaymentsBackNewestFirst) {
  lumo::PaymentStackPush(&stack, "A", 1, 2, 3, lumo::PAYMENT_UNANSWERED);
  lumo::PaymentStackPush(&stack, "B", 4, 5, 6, lumo::PAYMENT_CONFIRMED);
  PaymentStackItem item;
  ASSERT_TRUE(lumo::PaymentStackPop(&stack, &item));
  EXPECT_STREQ(item.rrn, "B");
  EXPECT_EQ((States{item.earned, item.spent, item.discount, item.state}), (States{4, 5, 6, 1}));
  ASSERT_TRUE(lumo::PaymentStackPop(&stack, &item));
  EXPECT_STREQ(item.rrn, "A");
  EXPECT_EQ((States{item.earned, item.spent, item.discount, item.state}), (States{1, 2, 3, -1}));
  EXPECT_FALSE(lumo::PaymentStackPop(&stack, &item));
}

TEST_F(PaymentStack, AnAnswerHoldsForEveryPaymentOfItsRrn) {
  Push("A");
  Push("B");
  Push("A", 1);
  Answer("A", 0);
  EXPECT_EQ(PopStates(), (States{0, -1, 0}));
}

TEST_F(PaymentStack, ALaterAnswerOverridesAnEarlierOne) {
  Push("A");
  Answer("A", 0);
  Answer("A", 1);
  EXPECT_EQ(PopStates(), (States{1}));
}

TEST_F(PaymentStack, AnAnswerDoesNotHoldForLaterPayments) {
  Answer("A", 1);
  Push("A");
  Answer("A", 0);
  Push("A");
  Push("A", 1);
  EXPECT_EQ(PopStates(), (States{1, -1, 0}));
}

TEST_F(PaymentStack, OnlyTheFirst20BytesAreCompared) {
  Push("12345678901234567890A");
  Push("1234567890123456789");
  Answer("12345678901234567890B", 1);
  EXPECT_EQ(PopStates(), (States{-1, 1}));
}

TEST_F(PaymentStack, ANullRrnIsTheEmptyText) {
  Push(nullptr);
  Push("");
  Push("A");
  Answer(nullptr, 1);
  EXPECT_EQ(PopStates(), (States{-1, 1, 1}));
}

TEST_F(PaymentStack, AnswersWithoutPaymentsTakeNoMemory) {
  for (int i = 0; i < 1000; ++i) Answer(std::to_string(i).c_str(), 1);
  EXPECT_EQ(stack.bucketCount, 0U);
  Push("A");
  const uint32_t bucket_count = stack.bucketCount;
  for (int i = 0; i < 1000; ++i) Answer(std::to_string(i).c_str(), 1);
  EXPECT_EQ(stack.answers, 1U);
  EXPECT_EQ(stack.bucketCount, bucket_count);
}

TEST_F(PaymentStack, FreeingAFilledStackLeavesAnEmptyOne) {
  Push("A");
  Push("B");
  lumo::PaymentStackFree(&stack);
  EXPECT_EQ(PopStates(), States());
  Push("C");
  EXPECT_EQ(PopStates(), (States{-1}));
}

// The comparisons that it takes to look every RRN up once.
uint64_t LookupSteps(const lumo::PaymentStack &stack) {
  uint64_t steps = 0;
  for (uint32_t i = 0; i < stack.bucketCount; ++i) {
    uint64_t length = 0;
    for (const lumo::PaymentAnswer *answer = stack.buckets[i].first; answer != nullptr;
         answer = answer->next) {
      steps += ++length;
    }
  }
  return steps;
}

uint64_t StepsOfAShift(uint32_t payments, const char *format) {
  lumo::PaymentStack stack = {};
  for (uint32_t i = 0; i < payments; ++i) {
    char rrn[40];
    std::snprintf(rrn, sizeof rrn, "TERM0%06u%05u", 121205 + i / 5000, i % 5000);
    if (format != nullptr) std::snprintf(rrn, sizeof rrn, "%s", format);
    lumo::PaymentStackPush(&stack, rrn, 0, 0, 0, lumo::PAYMENT_UNANSWERED);
    lumo::PaymentStackAnswer(&stack, rrn, lumo::PAYMENT_CONFIRMED);
  }
  const uint64_t steps = LookupSteps(stack);
  EXPECT_LE(stack.answers, stack.bucketCount);
  EXPECT_LE(stack.bucketCount, 2 * payments + 64);
  lumo::PaymentStackFree(&stack);
  return steps;
}

TEST_F(PaymentStack, AConfirmationCostsTheSameHoweverManyPaymentsThereAre) {
  for (const uint32_t payments : {1000U, 10000U, 100000U}) {
    EXPECT_LE(StepsOfAShift(payments, nullptr), 2 * payments) << payments;
  }
}

TEST_F(PaymentStack, AConfirmationOfManyPaymentsOfOneRrnCostsTheSameToo) {
  for (const uint32_t payments : {1000U, 10000U, 100000U}) {
    EXPECT_EQ(StepsOfAShift(payments, "TERM012120500008"), 1U) << payments;
  }
}

TEST_F(PaymentStack, AgreesWithAWalkOverAllPayments) {
  std::mt19937 random(20121205);
  const auto pick = [&random](uint32_t limit) { return static_cast<uint32_t>(random() % limit); };
  struct Known {
    std::string rrn;
    int32_t state;
  };
  for (int round = 0; round < 5000; ++round) {
    std::vector<Known> payments;
    const uint32_t names = 1 + pick(round % 50 == 0 ? 500 : 6);
    const uint32_t steps = pick(round % 50 == 0 ? 2000 : 30);
    for (uint32_t step = 0; step < steps; ++step) {
      const uint32_t name = pick(names);
      const std::string rrn = name == 0 ? "" : std::to_string(name);
      const auto state = static_cast<int32_t>(pick(2));
      if (pick(2) == 0) {
        Push(rrn.c_str(), state == 0 ? -1 : 1);
        payments.insert(payments.begin(), Known{rrn, state == 0 ? -1 : 1});
      } else {
        Answer(rrn.c_str(), state);
        for (Known &payment : payments) {
          if (payment.rrn == rrn) payment.state = state;
        }
      }
    }
    States expected;
    for (const Known &payment : payments) expected.push_back(payment.state);
    ASSERT_EQ(PopStates(), expected) << "round " << round;
    lumo::PaymentStackFree(&stack);
  }
  EXPECT_EQ(folder.Trace(), "");
}

}  // namespace
