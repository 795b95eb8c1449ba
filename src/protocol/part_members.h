// protocol/part_members.h: the members of each part: the key in documents, the name in the trace and the
// field in the record. A part is read and written by the same list.
#pragma once

#include <cstddef>
#include <cstdint>

#include "record/transaction.h"

namespace lumo {

// What a member holds; it follows from the type of its field.
enum class MemberKind : uint8_t {
  kText,
  kDate,
  kNumber,
  kFlag,
  kActivationType,
  kRequestType,
  kRequestState,
  kRequestStateCode,
  kAccountType,
  kCashBackType,
  kWrittenFlag,  // true for a number other than 0; never read
};

struct MemberName {
  const char *key;
  const char *label;  // in the trace, when it is read
  MemberKind kind;
  bool isOptional;  // a text that is not written as long as it is null
};

template <typename Block>
struct Member : MemberName {
  union {
    const char *Block::*text;
    char (Block::*date)[kDateBytes];
    int32_t Block::*number;
    bool Block::*flag;
    ActivationType Block::*activationType;
    RequestType Block::*requestType;
    RequestState Block::*requestState;
    RequestStateCode Block::*requestStateCode;
    AccountType Block::*accountType;
    CashBackType Block::*cashBackType;
  };

  constexpr Member(const char *name, const char *traced, const char *Block::*field)
      : MemberName{name, traced, MemberKind::kText, false}, text(field) {}
  constexpr Member(const char *name, const char *traced, char (Block::*field)[kDateBytes])
      : MemberName{name, traced, MemberKind::kDate, false}, date(field) {}
  constexpr Member(const char *name, const char *traced, int32_t Block::*field)
      : MemberName{name, traced, MemberKind::kNumber, false}, number(field) {}
  constexpr Member(const char *name, const char *traced, bool Block::*field)
      : MemberName{name, traced, MemberKind::kFlag, false}, flag(field) {}
  constexpr Member(const char *name, const char *traced, ActivationType Block::*field)
      : MemberName{name, traced, MemberKind::kActivationType, false}, activationType(field) {}
  constexpr Member(const char *name, const char *traced, RequestType Block::*field)
      : MemberName{name, traced, MemberKind::kRequestType, false}, requestType(field) {}
  constexpr Member(const char *name, const char *traced, RequestState Block::*field)
      : MemberName{name, traced, MemberKind::kRequestState, false}, requestState(field) {}
  constexpr Member(const char *name, const char *traced, RequestStateCode Block::*field)
      : MemberName{name, traced, MemberKind::kRequestStateCode, false}, requestStateCode(field) {}
  constexpr Member(const char *name, const char *traced, AccountType Block::*field)
      : MemberName{name, traced, MemberKind::kAccountType, false}, accountType(field) {}
  constexpr Member(const char *name, const char *traced, CashBackType Block::*field)
      : MemberName{name, traced, MemberKind::kCashBackType, false}, cashBackType(field) {}

  static constexpr Member Optional(const char *name, const char *traced, const char *Block::*field) {
    Member member(name, traced, field);
    member.isOptional = true;
    return member;
  }
  static constexpr Member WrittenFlag(const char *name, int32_t Block::*field) {
    Member member(name, nullptr, field);
    member.kind = MemberKind::kWrittenFlag;
    return member;
  }
};

// A member's field in one block; the member's kind tells which pointer it is.
union MemberField {
  const char **text;
  char (*date)[kDateBytes];
  int32_t *number;
  bool *flag;
  ActivationType *activationType;
  RequestType *requestType;
  RequestState *requestState;
  RequestStateCode *requestStateCode;
  AccountType *accountType;
  CashBackType *cashBackType;
};

template <typename Block>
MemberField FieldOf(Block *block, const Member<Block> &member) {
  MemberField field;
  switch (member.kind) {
    case MemberKind::kDate:
      field.date = &(block->*member.date);
      break;
    case MemberKind::kNumber:
    case MemberKind::kWrittenFlag:
      field.number = &(block->*member.number);
      break;
    case MemberKind::kFlag:
      field.flag = &(block->*member.flag);
      break;
    case MemberKind::kActivationType:
      field.activationType = &(block->*member.activationType);
      break;
    case MemberKind::kRequestType:
      field.requestType = &(block->*member.requestType);
      break;
    case MemberKind::kRequestState:
      field.requestState = &(block->*member.requestState);
      break;
    case MemberKind::kRequestStateCode:
      field.requestStateCode = &(block->*member.requestStateCode);
      break;
    case MemberKind::kAccountType:
      field.accountType = &(block->*member.accountType);
      break;
    case MemberKind::kCashBackType:
      field.cashBackType = &(block->*member.cashBackType);
      break;
    default:
      field.text = &(block->*member.text);
      break;
  }
  return field;
}

// In each list a key looks for its name among the members of its value's kind from the first to the last,
// which matters where one key begins like another. Members are written in the order of the list.
extern const Member<RequestBlock> kRequestMembers[9];
extern const Member<ResponseBlock> kResponseMembers[8];
extern const Member<BillBlock> kBillMembers[6];
extern const Member<Good> kGoodMembers[5];
extern const Member<Bonus> kBonusMembers[4];
extern const Member<PaymentConfirmBlock> kPaymentConfirmMembers[2];
extern const Member<BalanceAccount> kAccountMembers[3];
extern const Member<CashBackBlock> kCashBackMembers[2];
extern const Member<CashBackGood> kCashBackGoodMembers[3];
extern const Member<Transaction> kCashBackResultMembers[1];
extern const Member<Transaction> kLinkedCardMembers[1];
extern const Member<ActivationBlock> kActivationMembers[4];
extern const Member<ActivationResultBlock> kActivationResultMembers[6];
extern const Member<Transaction> kDepositMembers[1];
extern const Member<Transaction> kCardExchangeMembers[1];
extern const Member<Transaction> kLastRrnMembers[1];
extern const Member<Transaction> kAdvertisingMembers[1];

}  // namespace lumo
