// api/report_calls_test.cpp: the reports as the register calls them.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "lumo.h"
#include "support/folder.h"

namespace {

constexpr char kDeposit[] =
    "{\"request\":{\"ver\":\"1.0\",\"type\":\"DEPOSIT\",\"requestId\":\"1234512120500009\","
    "\"terminalId\":\"12345\",\"requestDate\":\"2012-12-05T10:05:00Z\",\"employeeId\":\"7\",\"cardNum\":"
    "\"1\","
    "\"isOffline\":false,\"shiftId\":\"42\"},\"deposit\":{\"amount\":50000}}\n";

TEST(ReportCalls, BoundsOutOfOrderLeaveNoTraceAndNoReport) {
  const test::Folder folder;
  EXPECT_EQ(GenerateSummaryReport("b", "a"), -701);
  EXPECT_EQ(GenerateReport("a", "a"), -701);
  EXPECT_EQ(GenerateReport(nullptr, nullptr), -701);
  EXPECT_EQ(GenerateSummaryReport("a", nullptr), -701);
  EXPECT_EQ(GetReportPtr(), nullptr);
  EXPECT_EQ(folder.Trace(), "");
}

TEST(ReportCalls, SummaryAndDetailedReportAreDifferentReports) {
  const test::Folder folder;
  folder.Write("LOG", kDeposit);
  const int summary = GenerateSummaryReport(nullptr, "2013");
  ASSERT_NE(GetReportPtr(), nullptr);
  EXPECT_STREQ(GetReportPtr(), "ДЕПОЗИТЫ:\nКол-во: 1\nСумма бнс:        500.00\n\n-----------------------\n");
  EXPECT_EQ(summary, static_cast<int>(std::strlen(GetReportPtr())));
  const int detailed = GenerateReport("2012", "2013");
  EXPECT_STREQ(GetReportPtr(),
               "ДЕПОЗИТ\n    1234512120500009\n2012-12-05T10:05:00Z\nЗачислено бнс:    500.00\n"
               "------------------------\n");
  EXPECT_EQ(detailed, static_cast<int>(std::strlen(GetReportPtr())));
}

TEST(ReportCalls, ARefusedReportKeepsThePreviousOne) {
  const test::Folder folder;
  folder.Write("LOG", kDeposit);
  const int length = GenerateSummaryReport("2012", "2013");
  EXPECT_EQ(GenerateReport("b", "a"), -701);
  EXPECT_EQ(static_cast<int>(std::strlen(GetReportPtr())), length);
}

TEST(ReportCalls, NothingToReportIsAnEmptyReport) {
  const test::Folder folder;
  EXPECT_EQ(GenerateReport("2012", "2013"), 0);
  EXPECT_STREQ(GetReportPtr(), "");
}

}  // namespace
