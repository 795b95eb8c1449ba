// foundation/md5_test.cpp: digests. The expected ones are those of RFC 1321, the others come from md5sum.
#include "foundation/md5.h"

#include <gtest/gtest.h>

#include <string>

namespace {

struct DigestCase {
  std::string text;
  const char *digest;
};

const DigestCase kDigestCases[] = {
    {"", "d41d8cd98f00b204e9800998ecf8427e"},
    {"a", "0cc175b9c0f1b6a831c399e269772661"},
    {"abc", "900150983cd24fb0d6963f7d28e17f72"},
    {"message digest", "f96b697d7cb7938d525a2f31aaf161d0"},
    {"abcdefghijklmnopqrstuvwxyz", "c3fcd3d76192e4007dfb496cca67e13b"},
    {"ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789", "d174ab98d277d9f5a5611c2c9f419d9f"},
    {"12345678901234567890123456789012345678901234567890123456789012345678901234567890",
     "57edf4a22be3c955ac49da2e2107b67a"},
    {"Привет", "8a669e9418750c81ab90ae159a8ec410"},
    // Around the ends of the first blocks, where the padding takes one block more or two.
    {std::string(54, 'a'), "eced9e0b81ef2bba605cbc5e2e76a1d0"},
    {std::string(55, 'a'), "ef1772b6dff9a122358552954ad0df65"},
    {std::string(56, 'a'), "3b0c8ac703f828b04c6c197006d17218"},
    {std::string(57, 'a'), "652b906d60af96844ebd21b674f35e93"},
    {std::string(63, 'a'), "b06521f39153d618550606be297466d5"},
    {std::string(64, 'a'), "014842d480b571495a4a0363793f7367"},
    {std::string(65, 'a'), "c743a45e0d2e6a95cb859adae0248435"},
    {std::string(119, 'a'), "8a7bd0732ed6a28ce75f6dabc90e1613"},
    {std::string(120, 'a'), "5f61c0ccad4cac44c75ff505e1f1e537"},
    {std::string(121, 'a'), "f6acfca2d47c87f2b14ca038234d3614"},
    {std::string(128, 'a'), "e510683b3f5ffe4093d021808bc6ff70"},
    {std::string(1000000, 'a'), "7707d6ae4e027c70eea2a935c2296f21"},
};

TEST(Md5Hex, GivesTheDigestInLowerCase) {
  for (const DigestCase &row : kDigestCases) {
    EXPECT_STREQ(lumo::Md5Hex(row.text.c_str()), row.digest) << row.text.size() << " bytes";
  }
}

TEST(Md5Hex, TakesANullTextAsTheEmptyOne) {
  EXPECT_STREQ(lumo::Md5Hex(nullptr), "d41d8cd98f00b204e9800998ecf8427e");
}

TEST(Md5Hex, OverwritesItsBuffer) {
  const char *digest = lumo::Md5Hex("a");
  EXPECT_EQ(lumo::Md5Hex("abc"), digest);
  EXPECT_STREQ(digest, "900150983cd24fb0d6963f7d28e17f72");
}

TEST(DoubleMd5Hex, IsTheDigestOfTheFirstTextAndTheDigestOfTheOthers) {
  EXPECT_STREQ(lumo::DoubleMd5Hex("user", "salt", "pass"), "1749ba6bcd909564c44265728e30028d");
  EXPECT_STREQ(lumo::DoubleMd5Hex("user", "saltp", "ass"), "1749ba6bcd909564c44265728e30028d");
  EXPECT_STREQ(lumo::DoubleMd5Hex("", "", ""), "74be16979710d4c4e7c6647856088456");
}

TEST(DoubleMd5Hex, TakesNullTextsAsEmptyOnes) {
  EXPECT_STREQ(lumo::DoubleMd5Hex(nullptr, nullptr, nullptr), "74be16979710d4c4e7c6647856088456");
}

TEST(DoubleMd5Hex, HasABufferOfItsOwn) {
  const char *digest = lumo::DoubleMd5Hex("user", "salt", "pass");
  lumo::Md5Hex("a");
  EXPECT_STREQ(digest, "1749ba6bcd909564c44265728e30028d");
}

}  // namespace
