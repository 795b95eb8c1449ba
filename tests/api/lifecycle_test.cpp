// api/lifecycle_test.cpp: start, end, and the messages for the cashier.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <iterator>
#include <set>
#include <string>

#include "api/context.h"
#include "config/lumoconfig.h"
#include "config/lumostate.h"
#include "journal/logger.h"
#include "lumo.h"
#include "record/transaction.h"
#include "support/folder.h"
#include "support/result_codes.h"

namespace {

const std::string kBom = "\xEF\xBB\xBF";  // spares the reader's seek and the line it leaves

class Lifecycle : public testing::Test {
 protected:
  ~Lifecycle() override {
    lumo::TransactionFree(lumo::current_transaction);
    lumo::current_transaction = nullptr;
    lumo::ReleaseState();
    lumo::ReleaseSettings();
  }
  void MakeDirectory(const std::string &name) {
    std::filesystem::create_directory(std::filesystem::u8path(folder.path() + name));
  }

  test::Folder folder;
};

TEST_F(Lifecycle, StartsWithADelivery) {
  folder.Write("CONFIG.JSN", kBom + "{\"timeout\":5}");
  folder.Write("STATE", kBom + "{\"update\":1}");
  EXPECT_EQ(LUMOInit(), 0);
  EXPECT_EQ(lumo::Settings().timeout, 5);
  EXPECT_EQ(getNeedUpdate(), 1);
  EXPECT_TRUE(folder.Exists("CONFIG"));
  EXPECT_EQ(folder.Trace(),
            "LUMOInit()\nLoadNewConfig\nparseJsonFile [CONFIG.JSN]\nByte Order Mark skipping\nTimeout [5]\n"
            "LoadState\nparseJsonFile [STATE]\nByte Order Mark skipping\n");
}

TEST_F(Lifecycle, StartsWithConfigAlone) {
  folder.Write("CONFIG", kBom + "{\"timeout\":5}");
  folder.Write("STATE", kBom + "{}");
  EXPECT_EQ(LUMOInit(), 0);
  EXPECT_EQ(lumo::Settings().timeout, 5);
  EXPECT_EQ(folder.Trace(),
            "LUMOInit()\nLoadNewConfig\nparseJsonFile [CONFIG.JSN]\n"
            "ERROR: CreateFile function failed with error 2\nERROR: parserJsonFile error [-307]\n"
            "LoadConfig\nparseJsonFile [CONFIG]\nByte Order Mark skipping\nTimeout [5]\n"
            "LoadState\nparseJsonFile [STATE]\nByte Order Mark skipping\n");
}

TEST_F(Lifecycle, ADamagedDeliveryGivesWayToConfig) {
  folder.Write("CONFIG.JSN", "{\"timeout\":5,\"logSize\":7,}");
  folder.Write("CONFIG", "{\"timeout\":6}");
  EXPECT_EQ(LUMOInit(), 0);
  EXPECT_EQ(lumo::Settings().timeout, 6);
  EXPECT_EQ(lumo::Settings().logSize, 0) << "nothing of the damaged file stays";
  EXPECT_TRUE(folder.Exists("CONFIG.JSN"));
}

TEST_F(Lifecycle, WithoutSettingsItFailsBeforeTheState) {
  EXPECT_EQ(LUMOInit(), -111);
  EXPECT_FALSE(folder.Exists("STATE"));
  EXPECT_EQ(folder.Trace(),
            "LUMOInit()\nLoadNewConfig\nparseJsonFile [CONFIG.JSN]\n"
            "ERROR: CreateFile function failed with error 2\nERROR: parserJsonFile error [-307]\n"
            "LoadConfig\nparseJsonFile [CONFIG]\n"
            "ERROR: CreateFile function failed with error 2\nERROR: parserJsonFile error [-307]\n");
}

TEST_F(Lifecycle, TheLoadersOwnCodesAreNotPassedOn) {
  folder.Write("CONFIG.JSN", "{,}");
  folder.Write("CONFIG", "{,}");
  EXPECT_EQ(LUMOInit(), -111);
}

TEST_F(Lifecycle, AStateThatCannotBeMade) {
  folder.Write("CONFIG", "{}");
  MakeDirectory("STATE");
  EXPECT_EQ(LUMOInit(), -108);
}

TEST_F(Lifecycle, AStateThatIsNone) {
  folder.Write("CONFIG", "{}");
  folder.Write("STATE", "[]");
  EXPECT_EQ(LUMOInit(), -108);
}

TEST_F(Lifecycle, AMissingStateIsMade) {
  folder.Write("CONFIG", "{}");
  EXPECT_EQ(LUMOInit(), 0);
  EXPECT_EQ(folder.Read("STATE"), "{}");
}

TEST_F(Lifecycle, HandsTheLogSizeToTheJournal) {
  folder.Write("CONFIG", "{\"logSize\":3}");
  ASSERT_EQ(LUMOInit(), 0);
  for (const char *record : {"a", "b", "c"}) ASSERT_EQ(lumo::AppendLogRecord(record), 0);
  EXPECT_EQ(folder.Read("LOG"), "b\nc\n");
}

TEST_F(Lifecycle, ForgetsAnOpenTransactionWithoutFreeingIt) {
  folder.Write("CONFIG", "{\"receiptFooter\":\"Foot\"}");
  ASSERT_EQ(LUMOInit(), 0);
  ASSERT_EQ(CreateTransaction("1", "2"), 0);
  lumo::Transaction *open = lumo::current_transaction;
  const char *footer = getReceiptFooterPtr();
  ASSERT_EQ(LUMOInit(), 0);
  EXPECT_EQ(lumo::current_transaction, nullptr);
  EXPECT_STREQ(footer, "Foot\n");
  EXPECT_EQ(CreateTransaction("1", "2"), 0);
  lumo::TransactionFree(open);
}

TEST_F(Lifecycle, AFailedStartKeepsTheOpenTransaction) {
  folder.Write("CONFIG", "{}");
  ASSERT_EQ(LUMOInit(), 0);
  ASSERT_EQ(CreateTransaction("1", "2"), 0);
  const lumo::Transaction *open = lumo::current_transaction;
  folder.Remove("CONFIG");
  EXPECT_EQ(LUMOInit(), -111);
  EXPECT_EQ(lumo::current_transaction, open);
}

TEST_F(Lifecycle, ASecondStartReadsEverythingAnew) {
  folder.Write("CONFIG", "{\"terminalId\":\"1\"}");
  ASSERT_EQ(LUMOInit(), 0);
  const char *terminal = getTerminalId();
  folder.Write("CONFIG", "{\"terminalId\":\"2\"}");
  folder.Write("STATE", "{\"update\":1}");
  EXPECT_EQ(LUMOInit(), 0);
  EXPECT_STREQ(getTerminalId(), "2");
  EXPECT_STREQ(terminal, "1");
  EXPECT_EQ(getNeedUpdate(), 1);
}

// ---- The trace file's name ----

TEST_F(Lifecycle, ANameTagsTheTraceFileAndNothingElse) {
  folder.Write("CONFIG", "{}");
  EXPECT_EQ(LUMOInitExt("K2"), 0);
  EXPECT_FALSE(folder.Exists("TRACE.TXT"));
  EXPECT_THAT(folder.Trace("TRACE_K2.TXT"), testing::StartsWith("LUMOInit()\nLoadNewConfig\n"));
  EXPECT_TRUE(folder.Exists("STATE"));
}

TEST_F(Lifecycle, ANameMayBeAnyText) {
  EXPECT_EQ(LUMOInitExt("Касса №1"), -111);
  EXPECT_TRUE(folder.Exists("TRACE_Касса №1.TXT"));
}

TEST_F(Lifecycle, NullAndEmptyNamesMeanThePlainTraceFile) {
  LUMOInitExt("K2");
  EXPECT_EQ(LUMOInitExt(nullptr), -111);
  EXPECT_THAT(folder.Trace(), testing::StartsWith("LUMOInit()\n"));
  LUMOInitExt("K2");
  folder.ClearTrace();
  EXPECT_EQ(LUMOInitExt(""), -111);
  EXPECT_THAT(folder.Trace(), testing::StartsWith("LUMOInit()\n"));
}

TEST_F(Lifecycle, LumoInitKeepsTheNameGivenLast) {
  LUMOInitExt("K2");
  LUMOInit();
  EXPECT_FALSE(folder.Exists("TRACE.TXT"));
}

TEST_F(Lifecycle, ANameThatDoesNotFitMeansThePlainTraceFile) {
  LUMOInitExt("K2");
  const std::string long_name(259, 'x');
  EXPECT_EQ(LUMOInitExt(long_name.c_str()), -111);
  EXPECT_THAT(folder.Trace(), testing::StartsWith("LUMOInit()\n"));
}

TEST_F(Lifecycle, CleaningOnlyTraces) {
  folder.Write("CONFIG", "{\"terminalId\":\"1\"}");
  ASSERT_EQ(LUMOInit(), 0);
  ASSERT_EQ(CreateTransaction("1", "2"), 0);
  folder.ClearTrace();
  EXPECT_EQ(LUMOClean(), 0);
  EXPECT_EQ(folder.Trace(), "LUMOClean()\n");
  EXPECT_STREQ(getTerminalId(), "1");
  EXPECT_EQ(CreateTransaction("1", "2"), -112);
  EXPECT_EQ(CloseTransaction(), 0);
  EXPECT_EQ(OpenShift("1"), 0);
}

TEST_F(Lifecycle, CleaningBeforeAStart) {
  EXPECT_EQ(LUMOClean(), 0);
}

// ---- Messages ----

TEST_F(Lifecycle, EveryCodeHasItsMessageAndNoLine) {
  EXPECT_EQ(std::size(test::kResultCodes), 41U);
  for (const test::ResultCode &row : test::kResultCodes) {
    EXPECT_STREQ(GetErrorMessage(row.code), row.message) << row.code;
  }
  EXPECT_EQ(folder.Trace(), "");
}

TEST_F(Lifecycle, EveryOtherCodeIsUnknown) {
  std::set<int> known;
  for (const test::ResultCode &row : test::kResultCodes) known.insert(row.code);
  int unknown = 0;
  for (int code = -720; code <= 20; ++code) {
    if (known.count(code) != 0) continue;
    EXPECT_EQ(GetErrorMessage(code), "Неизвестная ошибка " + std::to_string(code));
    ++unknown;
  }
  EXPECT_EQ(unknown, 700);
}

TEST_F(Lifecycle, AnUnknownCodeIsTracedZeroIncluded) {
  EXPECT_STREQ(GetErrorMessage(0), "Неизвестная ошибка 0");
  EXPECT_STREQ(GetErrorMessage(5), "Неизвестная ошибка 5");
  EXPECT_STREQ(GetErrorMessage(-2147483647 - 1), "Неизвестная ошибка -2147483648");
  EXPECT_EQ(folder.Trace(),
            "WARNING: Unknown error code 0\nWARNING: Unknown error code 5\n"
            "WARNING: Unknown error code -2147483648\n");
}

TEST_F(Lifecycle, UnknownCodesShareOneText) {
  const char *first = GetErrorMessage(-12345);
  const char *known = GetErrorMessage(-410);
  EXPECT_STREQ(first, "Неизвестная ошибка -12345");
  const char *second = GetErrorMessage(7);
  EXPECT_EQ(first, second);
  EXPECT_STREQ(second, "Неизвестная ошибка 7");
  EXPECT_STREQ(known, "Ошибка при отправке запроса");
}

}  // namespace
