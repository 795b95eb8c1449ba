// support/fatal.h: statements that end the process as a fatal error does.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "support/folder.h"

namespace test {

// True for the exit status -1, of which a POSIX system keeps the low eight bits.
bool EndedAsFatal(int status);

// From an exit handler, prints the folder's trace in brackets on the error stream. The process that ends is a
// child of the test, and where children are not forked its folder is another one.
void PrintTraceAtExit(const Folder &folder);

}  // namespace test

// The statement ends the process with status -1, after the exit handlers have run, and leaves exactly `trace`
// in the trace of `folder`.
#define EXPECT_FATAL(folder, statement, trace) \
  EXPECT_EXIT(                                 \
      {                                        \
        test::PrintTraceAtExit(folder);        \
        statement;                             \
      },                                       \
      test::EndedAsFatal, testing::HasSubstr("[" + std::string(trace) + "]"))
