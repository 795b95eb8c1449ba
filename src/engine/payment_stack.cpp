#include "engine/payment_stack.h"

#include <cstring>

#include "foundation/format.h"
#include "foundation/memory.h"

namespace lumo {
namespace {

constexpr uint32_t kFirstBucketCount = 64;

void CopyRrn(char (&target)[kStackRrnBytes], const char *rrn) {
  std::memset(target, 0, sizeof target);
  const char *text = TextOrEmpty(rrn);
  for (uint32_t i = 0; i < kStackRrnBytes && text[i] != 0; ++i) target[i] = text[i];
}

// FNV-1a.
uint32_t HashRrn(const char (&rrn)[kStackRrnBytes]) {
  uint32_t hash = 2166136261U;
  for (const char byte : rrn) hash = (hash ^ static_cast<uint8_t>(byte)) * 16777619U;
  return hash;
}

// The place in its bucket that holds the answer of `rrn` or, when there is none yet, the null that would.
PaymentAnswer **FindPlace(const PaymentStack &stack, const char (&rrn)[kStackRrnBytes]) {
  PaymentAnswer **place = &stack.buckets[HashRrn(rrn) & (stack.bucketCount - 1)].first;
  while (*place != nullptr && std::memcmp((*place)->rrn, rrn, kStackRrnBytes) != 0) place = &(*place)->next;
  return place;
}

void GrowBuckets(PaymentStack *stack) {
  const uint32_t count = stack->bucketCount == 0 ? kFirstBucketCount : stack->bucketCount * 2;
  auto *buckets = static_cast<PaymentBucket *>(MemCalloc(count, sizeof(PaymentBucket), LUMO_HERE));
  for (uint32_t i = 0; i < stack->bucketCount; ++i) {
    for (PaymentAnswer *answer = stack->buckets[i].first; answer != nullptr;) {
      PaymentAnswer *next = answer->next;
      PaymentBucket &bucket = buckets[HashRrn(answer->rrn) & (count - 1)];
      answer->next = bucket.first;
      bucket.first = answer;
      answer = next;
    }
  }
  MemFreeIfAny(stack->buckets);
  stack->buckets = buckets;
  stack->bucketCount = count;
}

PaymentAnswer *FindOrAddAnswer(PaymentStack *stack, const char (&rrn)[kStackRrnBytes]) {
  if (stack->answers == stack->bucketCount) GrowBuckets(stack);
  PaymentAnswer **place = FindPlace(*stack, rrn);
  if (*place == nullptr) {
    *place = static_cast<PaymentAnswer *>(MemCalloc(1, sizeof(PaymentAnswer), LUMO_HERE));
    std::memcpy((*place)->rrn, rrn, kStackRrnBytes);
    ++stack->answers;
  }
  return *place;
}

}  // namespace

void PaymentStackPush(PaymentStack *stack, const char *rrn, int32_t earned, int32_t spent, int32_t discount,
                      PaymentState state) {
  auto *item = static_cast<PaymentStackItem *>(MemCalloc(1, sizeof(PaymentStackItem), LUMO_HERE));
  CopyRrn(item->rrn, rrn);
  item->earned = earned;
  item->spent = spent;
  item->discount = discount;
  item->state = state;
  item->number = stack->payments;
  item->answer = FindOrAddAnswer(stack, item->rrn);
  item->next = stack->newest;
  stack->newest = item;
  ++stack->payments;
}

void PaymentStackAnswer(PaymentStack *stack, const char *rrn, PaymentState state) {
  if (stack->bucketCount == 0) return;
  char key[kStackRrnBytes];
  CopyRrn(key, rrn);
  PaymentAnswer *answer = *FindPlace(*stack, key);
  if (answer != nullptr) {
    answer->state = state;
    answer->payments = stack->payments;
  }
}

bool PaymentStackPop(PaymentStack *stack, PaymentStackItem *out_item) {
  PaymentStackItem *item = stack->newest;
  if (item == nullptr) return false;
  if (item->number < item->answer->payments) item->state = item->answer->state;
  *out_item = *item;
  stack->newest = item->next;
  MemFree(item, LUMO_HERE);
  return true;
}

void PaymentStackFree(PaymentStack *stack) {
  PaymentStackItem item;
  while (PaymentStackPop(stack, &item)) {
  }
  for (uint32_t i = 0; i < stack->bucketCount; ++i) {
    for (PaymentAnswer *answer = stack->buckets[i].first; answer != nullptr;) {
      PaymentAnswer *next = answer->next;
      MemFree(answer, LUMO_HERE);
      answer = next;
    }
  }
  MemFreeIfAny(stack->buckets);
  *stack = PaymentStack{};
}

}  // namespace lumo
