// engine/reports_posix_test.cpp: a report whose check is passed over, as under a debugger that goes on.
#include <gtest/gtest.h>
#include <signal.h>

#include <string>

#include "engine/reports.h"
#include "support/shop.h"

namespace {

using ReportsUnderADebugger = test::Shop;

TEST_F(ReportsUnderADebugger, AnActivationOfUnknownTypeHasNoBlock) {
  OpenShop();
  folder.Write("LOG",
               "{\"request\":{\"type\":\"ACTIVATION\",\"requestId\":\"A\",\"requestDate\":\"2\"},"
               "\"activation\":{\"activationType\":\"OTHER\"},\"activationResult\":{\"activationSum\":5}}\n");
  signal(SIGTRAP, SIG_IGN);
  testing::internal::CaptureStderr();
  EXPECT_EQ(lumo::GenerateReport("1", "3"), 0);
  signal(SIGTRAP, SIG_DFL);
  EXPECT_NE(testing::internal::GetCapturedStderr().find("DEBUGCHK failed in file transaction"),
            std::string::npos);
}

}  // namespace
