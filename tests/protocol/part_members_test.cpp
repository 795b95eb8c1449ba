// protocol/part_members_test.cpp: a list of members in which a field does not fit does not compile.
#include "protocol/part_members.h"

#include <gtest/gtest.h>

#include <type_traits>

namespace {

struct SampleBlock {
  const char *text;
  char date[lumo::kDateBytes];
  char shortDate[lumo::kDateBytes - 1];
  int32_t number;
  uint32_t size;
  bool flag;
  lumo::AccountType account;
  lumo::PaymentConfirmBlock *blocks;
};

struct OtherSampleBlock {
  int32_t number;
};

template <typename Field>
constexpr bool kFitsAMember =
    std::is_constructible_v<lumo::Member<SampleBlock>, const char *, const char *, Field>;

static_assert(kFitsAMember<decltype(&SampleBlock::text)> && kFitsAMember<decltype(&SampleBlock::date)> &&
              kFitsAMember<decltype(&SampleBlock::number)> && kFitsAMember<decltype(&SampleBlock::flag)> &&
              kFitsAMember<decltype(&SampleBlock::account)>);
static_assert(!kFitsAMember<decltype(&SampleBlock::shortDate)> &&
              !kFitsAMember<decltype(&SampleBlock::size)> && !kFitsAMember<decltype(&SampleBlock::blocks)>);
static_assert(!kFitsAMember<decltype(&OtherSampleBlock::number)>, "a field of another block");
static_assert(!kFitsAMember<size_t> && !kFitsAMember<int> && !kFitsAMember<std::nullptr_t>,
              "an offset, or nothing");

// A list that is one row short cannot be filled up.
static_assert(!std::is_default_constructible_v<lumo::Member<SampleBlock>>);

TEST(PartMembers, FieldsLieInTheBlockTheyAreAskedFor) {
  SampleBlock blocks[2] = {};
  const lumo::Member<SampleBlock> members[] = {{"n", "n", &SampleBlock::number},
                                               {"a", "a", &SampleBlock::account}};
  EXPECT_EQ(members[0].kind, lumo::MemberKind::kNumber);
  EXPECT_EQ(lumo::FieldOf(&blocks[0], members[0]).number, &blocks[0].number);
  EXPECT_EQ(lumo::FieldOf(&blocks[1], members[0]).number, &blocks[1].number);
  EXPECT_EQ(members[1].kind, lumo::MemberKind::kAccountType);
  EXPECT_EQ(lumo::FieldOf(&blocks[1], members[1]).accountType, &blocks[1].account);
}

}  // namespace
