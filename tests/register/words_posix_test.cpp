// register/words_posix_test.cpp: words that are no UTF-8. On Windows the system's own are UTF-16.
#include "register/till.h"

namespace {

using testing::HasSubstr;

class Bytes : public test::Till {};

TEST_F(Bytes, ThatAreNoTextAreRefused) {
  Configure();
  const auto before = Files();
  for (const Words &words :
       {Words{"balance", "--card", "1\xFF"}, Words{"balance", "--card", "1", "--cashier", "\xC3"},
        Words{"confirm", "\x80"}, Words{"configure", "--header", "a\xFFz"},
        Words{"configure", "--server", "http://10.0.0.5:80/\xFF"}, Words{"shift", "open", "\xED\xA0\x80"},
        Words{"bill", "5", "\xFF.JSN"}, Words{"journal", "--shift", "\xFF"},
        Words{"queue", "drop", "1", "--rrn", "\xFF"}, Words{"--tag", "\xFF", "status"}}) {
    const test::Outcome run = Run(words);
    EXPECT_EQ(run.status, 2) << words[0];
    EXPECT_THAT(run.err, HasSubstr("it is not UTF-8: ")) << words[0];
    EXPECT_EQ(run.out, "") << words[0];
  }
  const test::Outcome typed = Run({"interactive"}, "card \xFF\nquit\n");
  EXPECT_EQ(typed.status, 2);
  EXPECT_THAT(typed.err, HasSubstr("it is not UTF-8: ?"));
  EXPECT_EQ(Facts({"balance", "--card", "\xFF"}, 2)["error"], "--card: it is not UTF-8: ?");
  EXPECT_EQ(Files(), before);
}

TEST_F(Bytes, MayNameAFile) {
  Configure();
  Run({"balance", "--card", test::kRichCard});
  const std::filesystem::path copy = fresh.path() / "trace \xFF";
  std::filesystem::copy_file(folder / "TRACE.TXT", copy);
  const test::Outcome run = Run({"trace", copy.string()});
  EXPECT_EQ(run.status, 0) << run.err;
  EXPECT_THAT(run.out, HasSubstr("BALANCE"));
  std::filesystem::rename(folder, fresh.path() / "folder \xFF");
  folder = fresh.path() / "folder \xFF";
  library = folder / library.filename();
  EXPECT_EQ(Facts({"status"})["folder"], (fresh.path() / "folder \xEF\xBF\xBD").string());
}

}  // namespace
