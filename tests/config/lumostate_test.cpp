// config/lumostate_test.cpp: STATE, and the shift that lives in it.
#include "config/lumostate.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "support/folder.h"
#include "support/test_clock.h"

namespace {

using testing::HasSubstr;

const std::string kStateBom = "\xEF\xBB\xBF";  // spares the reader's seek and the line it leaves

class State : public testing::Test {
 protected:
  State() { test::SetClock(2012, 12, 5, 10, 0, 0); }
  ~State() override {
    lumo::ReleaseState();
    lumo::CopyRequestId();
    test::ReleaseClock();
  }

  int Load(const std::string &bytes) {
    folder.Write("STATE", kStateBom + bytes);
    folder.ClearTrace();
    return lumo::LoadState();
  }
  // What a load of these bytes traces after the reader's own lines.
  std::string StateLines(const std::string &bytes) {
    Load(bytes);
    const std::string head = "LoadState\nparseJsonFile [STATE]\nByte Order Mark skipping\n";
    const std::string trace = folder.Trace();
    EXPECT_EQ(trace.substr(0, head.size()), head);
    return trace.size() > head.size() ? trace.substr(head.size()) : "";
  }
  // STATE can be neither read nor written.
  void BlockState() {
    folder.Remove("STATE");
    std::filesystem::create_directory(std::filesystem::u8path(folder.path() + "STATE"));
  }

  test::Folder folder;
};

TEST_F(State, EveryMemberIsLoaded) {
  EXPECT_EQ(
      StateLines("{\"reqId\":\"1234512120500007\",\"shiftId\":\"42\","
                 "\"shiftOpenDate\":\"2012-12-04T08:00:00Z\",\"shiftCloseDate\":\"2012-12-03T20:00:00Z\","
                 "\"offline\":1,\"shiftState\":1,\"update\":1}"),
      "");
  EXPECT_STREQ(lumo::CopyRequestId(), "1234512120500007");
  EXPECT_STREQ(lumo::RequestId(), "1234512120500007");
  EXPECT_EQ(lumo::GetNeedUpdate(), 1);
  EXPECT_STREQ(lumo::GetShiftId(), "42");
  EXPECT_STREQ(lumo::GetShiftOpenDate(), "2012-12-04T08:00:00Z");
  EXPECT_STREQ(lumo::GetShiftCloseDate(), "2012-12-03T20:00:00Z");
  EXPECT_EQ(lumo::GetOfflineState(), 1);
  EXPECT_EQ(lumo::GetShiftState(), 1);
}

TEST_F(State, AbsentMembersAreEmpty) {
  EXPECT_EQ(Load("{}"), 0);
  EXPECT_EQ(lumo::CopyRequestId(), nullptr);
  EXPECT_EQ(lumo::RequestId(), nullptr);
  EXPECT_EQ(lumo::GetNeedUpdate(), 0);
  EXPECT_EQ(lumo::GetShiftId(), nullptr);
  EXPECT_STREQ(lumo::GetShiftOpenDate(), "");
  EXPECT_STREQ(lumo::GetShiftCloseDate(), "");
  EXPECT_EQ(lumo::GetOfflineState(), 0);
  EXPECT_EQ(lumo::GetShiftState(), 0);
}

TEST_F(State, EveryLoadBeginsWithAnEmptyState) {
  ASSERT_EQ(Load("{\"reqId\":\"1\",\"shiftId\":\"42\",\"shiftOpenDate\":\"d\",\"offline\":1,\"update\":1}"),
            0);
  ASSERT_EQ(Load("{}"), 0);
  EXPECT_EQ(lumo::RequestId(), nullptr);
  EXPECT_EQ(lumo::GetShiftId(), nullptr);
  EXPECT_STREQ(lumo::GetShiftOpenDate(), "");
  EXPECT_EQ(lumo::GetOfflineState(), 0);
  EXPECT_EQ(lumo::GetNeedUpdate(), 0);
}

TEST_F(State, AMissingFileIsMade) {
  EXPECT_EQ(lumo::LoadState(), 0);
  EXPECT_EQ(folder.Read("STATE"), "{}");
  EXPECT_EQ(folder.Trace(),
            "LoadState\nparseJsonFile [STATE]\nERROR: CreateFile function failed with error 2\n");
}

TEST_F(State, ADamagedFileGivesWayToAnEmptyOne) {
  EXPECT_EQ(Load("{\"shiftId\":\"42\",\"shiftState\":1,}"), 0);
  EXPECT_EQ(folder.Read("STATE"), "{}");
  EXPECT_EQ(lumo::GetShiftId(), nullptr);
  EXPECT_EQ(lumo::GetShiftState(), 0);
}

TEST_F(State, AFileWithAByteTooManyIsDamaged) {
  for (const char *text : {"{\"shiftState\":1}/", "{\"shiftState\":1}#", "{\"shiftState\":1}}"}) {
    EXPECT_EQ(Load(text), 0) << text;
    EXPECT_EQ(folder.Read("STATE"), "{}") << text;
    EXPECT_EQ(lumo::GetShiftState(), 0) << text;
  }
}

TEST_F(State, AFileThatCannotBeMade) {
  BlockState();
  EXPECT_EQ(lumo::LoadState(), -109);
}

TEST_F(State, AnEmptyFileIsRefused) {
  folder.Write("STATE", "");
  EXPECT_EQ(lumo::LoadState(), -108);
  EXPECT_EQ(folder.Trace(), "LoadState\nparseJsonFile [STATE]\nERROR: State json root is NULL!\n");
  EXPECT_EQ(folder.Read("STATE"), "");
}

TEST_F(State, ANumberAloneIsRefused) {
  EXPECT_EQ(Load("5"), -108);
  EXPECT_THAT(folder.Trace(), HasSubstr("ERROR: State json root is NULL!\n"));
}

TEST_F(State, AnArrayIsRefused) {
  EXPECT_EQ(Load("[1]"), -108);
  EXPECT_THAT(folder.Trace(), HasSubstr("ERROR: State json structure error!\n"));
}

struct StateLine {
  const char *name;
  const char *member;
  const char *trace;
};

class StateMember : public State, public testing::WithParamInterface<StateLine> {};

TEST_P(StateMember, Traces) {
  EXPECT_EQ(StateLines(std::string("{") + GetParam().member + "}"), GetParam().trace);
}

const StateLine kLines[] = {
    {"OfflineTrue", "\"offline\":true", "WARNING: Wrong JSON type for offlineState [9]\n"},
    {"OfflineFalse", "\"offline\":false", "WARNING: Wrong JSON type for offlineState [10]\n"},
    {"OfflineText", "\"offline\":\"1\"", "WARNING: Wrong JSON type for offlineState [7]\n"},
    {"OfflineFraction", "\"offline\":1.0", "WARNING: Wrong JSON type for offlineState [6]\n"},
    {"ShiftStateNull", "\"shiftState\":null", "WARNING: Wrong JSON type for shiftState [11]\n"},
    {"ShiftStateArray", "\"shiftState\":[1]", "WARNING: Wrong JSON type for shiftState [1]\n"},
    {"UpdateObject", "\"update\":{\"offline\":1}", "WARNING: Wrong JSON type for needUpdate [2]\n"},
    {"UIsTheUpdate", "\"u\":true", "WARNING: Wrong JSON type for needUpdate [9]\n"},
    {"OIsOffline", "\"o\":true", "WARNING: Wrong JSON type for offlineState [9]\n"},
    {"ShiftSIsTheShiftState", "\"shiftS\":true", "WARNING: Wrong JSON type for shiftState [9]\n"},
    {"ALongerKey", "\"offlineX\":1", "WARNING: Unsupported state element [offlineX]\n"},
    {"ALongKeyIsCut", "\"01234567890123456789012345678901234567890\":1",
     "WARNING: Unsupported state element [0123456789012345678901234567890123456789]\n"},
};
INSTANTIATE_TEST_SUITE_P(Lines, StateMember, testing::ValuesIn(kLines),
                         [](const auto &row) { return std::string(row.param.name); });

TEST_F(State, AFlagOfAnotherTypeIsOff) {
  ASSERT_EQ(Load("{\"offline\":true,\"shiftState\":\"1\",\"update\":1.5}"), 0);
  EXPECT_EQ(lumo::GetNeedUpdate(), 0);
  EXPECT_EQ(lumo::GetOfflineState(), 0);
  EXPECT_EQ(lumo::GetShiftState(), 0);
}

TEST_F(State, AFlagIsClampedTo32Bits) {
  ASSERT_EQ(Load("{\"update\":99999999999}"), 0);
  EXPECT_EQ(lumo::GetNeedUpdate(), 2147483647);
}

TEST_F(State, ALeadingPartOfANameTakesTheFirstSuchName) {
  ASSERT_EQ(Load("{\"shift\":\"42\",\"\":\"7\"}"), 0);
  EXPECT_STREQ(lumo::RequestId(), "7");
  EXPECT_STREQ(lumo::GetShiftId(), "42");
}

TEST_F(State, ShiftOIsTheOpenDateAndShiftCTheCloseDate) {
  ASSERT_EQ(Load("{\"shiftO\":\"a\",\"shiftC\":\"b\"}"), 0);
  EXPECT_STREQ(lumo::GetShiftOpenDate(), "a");
  EXPECT_STREQ(lumo::GetShiftCloseDate(), "b");
}

TEST_F(State, AnEmptyShiftIdIsNone) {
  ASSERT_EQ(Load("{\"shiftId\":\"42\",\"shiftId\":\"\"}"), 0);
  EXPECT_EQ(lumo::GetShiftId(), nullptr);
}

TEST_F(State, AnEmptyRequestIdIsAnEmptyText) {
  ASSERT_EQ(Load("{\"reqId\":\"\"}"), 0);
  EXPECT_STREQ(lumo::CopyRequestId(), "");
}

TEST_F(State, AnEmptyDateClearsTheField) {
  ASSERT_EQ(Load("{\"shiftOpenDate\":\"a\",\"shiftOpenDate\":\"\"}"), 0);
  EXPECT_STREQ(lumo::GetShiftOpenDate(), "");
}

TEST_F(State, ALongDateIsCutTo29Bytes) {
  ASSERT_EQ(Load("{\"shiftOpenDate\":\"0123456789012345678901234567890\",\"shiftCloseDate\":"
                 "\"01234567890123456789012345678\"}"),
            0);
  EXPECT_STREQ(lumo::GetShiftOpenDate(), "01234567890123456789012345678");
  EXPECT_STREQ(lumo::GetShiftCloseDate(), "01234567890123456789012345678");
}

TEST_F(State, AnObjectReadsAsTheEmptyText) {
  ASSERT_EQ(Load("{\"reqId\":{\"a\":1},\"shiftId\":[1],\"shiftOpenDate\":{}}"), 0);
  EXPECT_STREQ(lumo::RequestId(), "");
  EXPECT_EQ(lumo::GetShiftId(), nullptr);
  EXPECT_STREQ(lumo::GetShiftOpenDate(), "");
}

TEST_F(State, ANumberReadsAsItsText) {
  ASSERT_EQ(Load("{\"shiftId\":42}"), 0);
  EXPECT_STREQ(lumo::GetShiftId(), "42");
}

TEST_F(State, ManyReloadsKeepMemoryFlat) {  // the leak checker is the judge
  ASSERT_EQ(Load("{\"reqId\":\"1\",\"shiftId\":\"42\"}"), 0);
  for (int i = 0; i < 20; ++i) {
    EXPECT_STREQ(lumo::GetShiftId(), "42");
    lumo::CopyRequestId();
    lumo::SetRequestId("1");
    lumo::SetShiftId("42");
  }
}

// ---- Saving ----

TEST_F(State, SavesItsMembersInOrder) {
  ASSERT_EQ(
      Load("{\"update\":3,\"shiftState\":2,\"offline\":1,\"shiftCloseDate\":\"c\",\"shiftOpenDate\":\"o\","
           "\"shiftId\":\"4\\\"2\",\"reqId\":\"7\"}"),
      0);
  folder.ClearTrace();
  EXPECT_EQ(lumo::SaveState(), 0);
  EXPECT_EQ(folder.Read("STATE"),
            "{\"reqId\":\"7\",\"shiftId\":\"4\\\"2\",\"shiftOpenDate\":\"o\",\"shiftCloseDate\":\"c\","
            "\"offline\":1,\"shiftState\":2,\"update\":3}");
  EXPECT_EQ(folder.Trace(), "SaveState\n");
}

TEST_F(State, SavesTheNumbersAloneWhenNothingIsSet) {
  ASSERT_EQ(Load("{}"), 0);
  EXPECT_EQ(lumo::SaveState(), 0);
  EXPECT_EQ(folder.Read("STATE"), "{\"offline\":0,\"shiftState\":0,\"update\":0}");
}

TEST_F(State, CannotBeSaved) {
  BlockState();
  EXPECT_EQ(lumo::SaveState(), -110);
  EXPECT_THAT(folder.Trace(),
              testing::StartsWith("SaveState\nERROR: CreateFile function failed with error "));
  EXPECT_THAT(folder.Trace(), testing::EndsWith("\nWARNING: SaveState: Cant open file!\n"));
}

TEST_F(State, EverySetterReportsAStateThatCannotBeSaved) {
  BlockState();
  EXPECT_EQ(lumo::SetShiftId("1"), -110);
  EXPECT_EQ(lumo::SetShiftState(1), -110);
  EXPECT_EQ(lumo::SetShiftOpenDate("1"), -110);
  EXPECT_EQ(lumo::SetShiftCloseDate("1"), -110);
  EXPECT_EQ(lumo::SetOfflineState(1), -110);
  EXPECT_EQ(lumo::SetNeedUpdate(1), -110);
  EXPECT_EQ(lumo::SetRequestId("1"), -110);
}

TEST_F(State, EverySetterSavesAtOnce) {
  ASSERT_EQ(Load("{}"), 0);
  folder.ClearTrace();
  EXPECT_EQ(lumo::SetShiftId("42"), 0);
  EXPECT_EQ(folder.Read("STATE"), "{\"shiftId\":\"42\",\"offline\":0,\"shiftState\":0,\"update\":0}");
  EXPECT_EQ(lumo::SetShiftState(1), 0);
  EXPECT_EQ(folder.Read("STATE"), "{\"shiftId\":\"42\",\"offline\":0,\"shiftState\":1,\"update\":0}");
  EXPECT_EQ(lumo::SetShiftOpenDate("o"), 0);
  EXPECT_EQ(lumo::SetShiftCloseDate("c"), 0);
  EXPECT_EQ(
      folder.Read("STATE"),
      "{\"shiftId\":\"42\",\"shiftOpenDate\":\"o\",\"shiftCloseDate\":\"c\",\"offline\":0,\"shiftState\":1,"
      "\"update\":0}");
  EXPECT_EQ(lumo::SetOfflineState(5), 0);
  EXPECT_EQ(lumo::SetNeedUpdate(-6), 0);
  EXPECT_EQ(lumo::SetRequestId("7"), 0);
  EXPECT_EQ(
      folder.Read("STATE"),
      "{\"reqId\":\"7\",\"shiftId\":\"42\",\"shiftOpenDate\":\"o\",\"shiftCloseDate\":\"c\",\"offline\":5,"
      "\"shiftState\":1,\"update\":-6}");
  EXPECT_EQ(folder.Trace(), "SaveState\nSaveState\nSaveState\nSaveState\nSaveState\nSaveState\nSaveState\n");
}

TEST_F(State, ANullRequestIdIsIgnored) {
  ASSERT_EQ(Load("{\"reqId\":\"7\"}"), 0);
  folder.ClearTrace();
  EXPECT_EQ(lumo::SetRequestId(nullptr), 0);
  EXPECT_STREQ(lumo::RequestId(), "7");
  EXPECT_EQ(folder.Trace(), "");
}

TEST_F(State, AnEmptyRequestIdIsStored) {
  ASSERT_EQ(Load("{\"reqId\":\"7\"}"), 0);
  EXPECT_EQ(lumo::SetRequestId(""), 0);
  EXPECT_EQ(folder.Read("STATE"), "{\"reqId\":\"\",\"offline\":0,\"shiftState\":0,\"update\":0}");
}

TEST_F(State, TheCopyOfTheRequestIdOutlivesChangesAndReloads) {
  ASSERT_EQ(Load("{\"reqId\":\"7\"}"), 0);
  const char *copy = lumo::CopyRequestId();
  lumo::SetRequestId("8");
  lumo::LoadState();
  EXPECT_STREQ(copy, "7");
  EXPECT_STREQ(lumo::CopyRequestId(), "8");
}

TEST_F(State, SettersTakeTheirOwnText) {
  ASSERT_EQ(Load("{\"reqId\":\"7\",\"shiftId\":\"42\",\"shiftOpenDate\":\"o\"}"), 0);
  EXPECT_EQ(lumo::SetShiftId(lumo::GetShiftId()), 0);
  EXPECT_EQ(lumo::SetShiftOpenDate(lumo::GetShiftOpenDate()), 0);
  EXPECT_EQ(lumo::SetRequestId(lumo::RequestId()), 0);
  EXPECT_EQ(folder.Read("STATE"),
            "{\"reqId\":\"7\",\"shiftId\":\"42\",\"shiftOpenDate\":\"o\",\"offline\":0,\"shiftState\":0,"
            "\"update\":0}");
}

TEST_F(State, SettersTakeNull) {
  ASSERT_EQ(Load("{\"shiftId\":\"42\",\"shiftOpenDate\":\"o\",\"shiftCloseDate\":\"c\"}"), 0);
  EXPECT_EQ(lumo::SetShiftId(nullptr), 0);
  EXPECT_EQ(lumo::SetShiftOpenDate(nullptr), 0);
  EXPECT_EQ(lumo::SetShiftCloseDate(nullptr), 0);
  EXPECT_EQ(folder.Read("STATE"), "{\"offline\":0,\"shiftState\":0,\"update\":0}");
}

TEST_F(State, TheFileIsTheAuthority) {
  ASSERT_EQ(Load("{\"shiftState\":0,\"offline\":0,\"shiftId\":\"1\",\"update\":0}"), 0);
  folder.Write("STATE",
               "{\"shiftState\":1,\"offline\":1,\"shiftId\":\"2\",\"update\":1,\"shiftOpenDate\":\"o\"}");
  EXPECT_EQ(lumo::GetNeedUpdate(), 0) << "as held in memory";
  EXPECT_EQ(lumo::GetShiftState(), 1);
  folder.Write("STATE", "{\"offline\":1}");
  EXPECT_EQ(lumo::GetOfflineState(), 1);
  folder.Write("STATE", "{\"shiftId\":\"3\"}");
  EXPECT_STREQ(lumo::GetShiftId(), "3");
  folder.Write("STATE", "{\"shiftOpenDate\":\"p\"}");
  EXPECT_STREQ(lumo::GetShiftOpenDate(), "p");
  folder.Write("STATE", "{\"shiftCloseDate\":\"q\",\"update\":1}");
  EXPECT_STREQ(lumo::GetShiftCloseDate(), "q");
  EXPECT_EQ(lumo::GetNeedUpdate(), 1);
}

TEST_F(State, InitStateEmptiesTheMemoryAndLeavesTheFile) {
  ASSERT_EQ(Load("{\"reqId\":\"7\",\"update\":1}"), 0);
  folder.ClearTrace();
  EXPECT_EQ(lumo::InitState(), 0);
  EXPECT_EQ(folder.Trace(), "InitState\n");
  EXPECT_EQ(lumo::RequestId(), nullptr);
  EXPECT_EQ(lumo::GetNeedUpdate(), 0);
  EXPECT_EQ(folder.Read("STATE"), kStateBom + "{\"reqId\":\"7\",\"update\":1}");
}

TEST_F(State, ReleaseStateEmptiesTheMemory) {
  ASSERT_EQ(Load("{\"reqId\":\"7\",\"shiftId\":\"1\",\"update\":1}"), 0);
  lumo::ReleaseState();
  EXPECT_EQ(lumo::RequestId(), nullptr);
  EXPECT_EQ(lumo::GetNeedUpdate(), 0);
}

// ---- Shifts ----

TEST_F(State, TheFirstShiftWithoutAnIdentifierHasAnEmptyOne) {
  EXPECT_EQ(lumo::OpenShift(nullptr), 0);
  EXPECT_EQ(folder.Read("STATE"),
            "{\"shiftId\":\"\",\"shiftOpenDate\":\"2012-12-05T10:00:00Z\",\"offline\":0,\"shiftState\":1,"
            "\"update\":0}");
}

TEST_F(State, OpeningAShiftLoadsOnceAndSavesThreeTimes) {
  folder.Write("STATE", kStateBom + "{}");
  EXPECT_EQ(lumo::OpenShift("42"), 0);
  EXPECT_EQ(folder.Trace(),
            "OpenShift \nLoadState\nparseJsonFile [STATE]\nByte Order Mark skipping\n"
            "SaveState\nSaveState\nSaveState\n");
  EXPECT_EQ(folder.Read("STATE"),
            "{\"shiftId\":\"42\",\"shiftOpenDate\":\"2012-12-05T10:00:00Z\",\"offline\":0,\"shiftState\":1,"
            "\"update\":0}");
}

TEST_F(State, ASecondOpeningIsRefused) {
  ASSERT_EQ(lumo::OpenShift("42"), 0);
  const std::string before = folder.Read("STATE");
  test::SetClock(2012, 12, 5, 11, 0, 0);
  EXPECT_EQ(lumo::OpenShift("43"), -601);
  EXPECT_EQ(folder.Read("STATE"), before);
  EXPECT_STREQ(lumo::GetShiftId(), "42");
}

TEST_F(State, AnyNonZeroShiftStateIsOpenForOpenShift) {
  ASSERT_EQ(Load("{\"shiftState\":2}"), 0);
  EXPECT_EQ(lumo::OpenShift("43"), -601);
}

TEST_F(State, AShiftWithoutAnIdentifierTakesThePreviousOpeningTime) {
  ASSERT_EQ(lumo::OpenShift("42"), 0);
  test::SetClock(2012, 12, 5, 20, 0, 0);
  ASSERT_EQ(lumo::CloseShift(false), 0);
  test::SetClock(2012, 12, 6, 8, 0, 0);
  EXPECT_EQ(lumo::OpenShift(nullptr), 0);
  EXPECT_EQ(folder.Read("STATE"),
            "{\"shiftId\":\"2012-12-05T10:00:00Z\",\"shiftOpenDate\":\"2012-12-06T08:00:00Z\","
            "\"shiftCloseDate\":\"2012-12-05T20:00:00Z\",\"offline\":0,\"shiftState\":1,\"update\":0}");
}

TEST_F(State, AnEmptyIdentifierIsGiven) {
  ASSERT_EQ(Load("{\"shiftOpenDate\":\"o\"}"), 0);
  EXPECT_EQ(lumo::OpenShift(""), 0);
  EXPECT_EQ(folder.Read("STATE"),
            "{\"shiftId\":\"\",\"shiftOpenDate\":\"2012-12-05T10:00:00Z\",\"offline\":0,\"shiftState\":1,"
            "\"update\":0}");
}

TEST_F(State, OpenShiftTakesTheRecordsOwnIdentifier) {
  ASSERT_EQ(Load("{\"shiftId\":\"42\"}"), 0);
  EXPECT_EQ(lumo::OpenShift(lumo::GetShiftId()), 0);
  EXPECT_STREQ(lumo::GetShiftId(), "42");
}

TEST_F(State, OpenShiftKeepsTheOtherMembers) {
  ASSERT_EQ(Load("{\"reqId\":\"7\",\"offline\":1,\"update\":1,\"shiftCloseDate\":\"c\"}"), 0);
  ASSERT_EQ(lumo::OpenShift("1"), 0);
  EXPECT_EQ(folder.Read("STATE"),
            "{\"reqId\":\"7\",\"shiftId\":\"1\",\"shiftOpenDate\":\"2012-12-05T10:00:00Z\","
            "\"shiftCloseDate\":\"c\","
            "\"offline\":1,\"shiftState\":1,\"update\":1}");
}

TEST_F(State, OpenShiftDoesNotReportAStateThatCannotBeSaved) {
  BlockState();
  EXPECT_EQ(lumo::OpenShift("42"), 0);
  EXPECT_EQ(lumo::GetShiftState(), 0);
}

TEST_F(State, ClosingAShiftSavesTwice) {
  ASSERT_EQ(Load("{\"shiftId\":\"42\",\"shiftOpenDate\":\"o\",\"shiftState\":1}"), 0);
  folder.ClearTrace();
  EXPECT_EQ(lumo::CloseShift(false), 0);
  EXPECT_EQ(folder.Trace(),
            "CloseShift\nLoadState\nparseJsonFile [STATE]\nByte Order Mark skipping\nSaveState\nSaveState\n");
  EXPECT_EQ(
      folder.Read("STATE"),
      "{\"shiftId\":\"42\",\"shiftOpenDate\":\"o\",\"shiftCloseDate\":\"2012-12-05T10:00:00Z\",\"offline\":0,"
      "\"shiftState\":0,\"update\":0}");
}

TEST_F(State, ClosingWithATransactionIsRefusedBeforeAnything) {
  ASSERT_EQ(Load("{\"shiftState\":1}"), 0);
  folder.ClearTrace();
  EXPECT_EQ(lumo::CloseShift(true), -603);
  EXPECT_EQ(folder.Trace(), "CloseShift\n");
  EXPECT_EQ(lumo::GetShiftState(), 1);
}

TEST_F(State, ClosingAClosedShiftWritesNothing) {
  ASSERT_EQ(Load("{\"shiftState\":0}"), 0);
  EXPECT_EQ(lumo::CloseShift(false), 0);
  EXPECT_EQ(folder.Read("STATE"), kStateBom + "{\"shiftState\":0}");
}

TEST_F(State, OnlyShiftStateOneIsOpenForCloseShift) {
  ASSERT_EQ(Load("{\"shiftState\":2}"), 0);
  EXPECT_EQ(lumo::CloseShift(false), 0);
  EXPECT_EQ(folder.Read("STATE"), kStateBom + "{\"shiftState\":2}");
}

}  // namespace
