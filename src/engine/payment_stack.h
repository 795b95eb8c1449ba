// engine/payment_stack.h: the payments of a report, newest first, and what became of each. A payment and a
// confirmation cost the same however many payments there are; memory is taken for payments alone.
#pragma once

#include <cstdint>

namespace lumo {

constexpr uint32_t kStackRrnBytes = 20;  // of an RRN; what follows is not compared

enum PaymentState : int32_t { PAYMENT_UNANSWERED = -1, PAYMENT_CANCELED = 0, PAYMENT_CONFIRMED = 1 };

// What was last said about an RRN. It holds for the payments made before it was said, not for later ones.
struct PaymentAnswer {
  char rrn[kStackRrnBytes];  // zero-filled; without a terminating zero when all are used
  PaymentState state;
  uint32_t payments;    // on the stack when it was said; 0 when nothing was
  PaymentAnswer *next;  // of the same bucket
};

struct PaymentBucket {
  PaymentAnswer *first;
};

struct PaymentStackItem {
  char rrn[kStackRrnBytes];
  int32_t earned;
  int32_t spent;
  int32_t discount;
  PaymentState state;
  uint32_t number;  // from 0, the oldest
  const PaymentAnswer *answer;
  PaymentStackItem *next;  // the older one
};

struct PaymentStack {
  PaymentStackItem *newest;
  uint32_t payments;
  PaymentBucket *buckets;  // by RRN; never more answers than buckets
  uint32_t bucketCount;    // 0 or a power of two
  uint32_t answers;
};

// All take a null RRN as the empty text. A stack begins zero-filled.
void PaymentStackPush(PaymentStack *stack, const char *rrn, int32_t earned, int32_t spent, int32_t discount,
                      PaymentState state);

// Gives every payment with this RRN so far the state; a later call overrides an earlier one.
void PaymentStackAnswer(PaymentStack *stack, const char *rrn, PaymentState state);

// Takes the newest payment off, its state settled. False when none is left.
bool PaymentStackPop(PaymentStack *stack, PaymentStackItem *out_item);

void PaymentStackFree(PaymentStack *stack);

}  // namespace lumo
