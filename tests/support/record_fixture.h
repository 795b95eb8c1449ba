// support/record_fixture.h: one record in a folder of its own, and JSON texts as the loaders take them.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "json/lumojson.h"
#include "record/transaction.h"
#include "support/folder.h"

// A JSON text as a tree.
class Document {
 public:
  explicit Document(const std::string &text) : reader_(lumo::JsonReaderCreate()) {
    EXPECT_EQ(lumo::ParseJsonText(reader_, text.c_str()), 0) << text;
  }
  ~Document() { lumo::JsonReaderDestroy(reader_); }
  Document(const Document &) = delete;
  Document &operator=(const Document &) = delete;

  const lumo::JsonNode *root() const { return lumo::JsonReaderRoot(reader_); }

 private:
  lumo::JsonReader *reader_;
};

// A fresh record, with nothing in the trace yet.
class ProtocolTest : public ::testing::Test {
 protected:
  ProtocolTest() : record(lumo::TransactionCreate()) { folder.ClearTrace(); }
  ~ProtocolTest() override { lumo::TransactionFree(record); }

  // The trace since the last call.
  std::string TakeTrace() {
    std::string trace = folder.Trace();
    folder.ClearTrace();
    return trace;
  }

  void Store(const char **field, const std::string &text) {
    lumo::TransactionCopyText(record, field, text.c_str());
  }

  test::Folder folder;
  lumo::Transaction *record;
};

// How an exit with status -1 looks to the parent process.
#ifdef _WIN32
constexpr int kExitMinusOne = -1;
#else
constexpr int kExitMinusOne = 255;
#endif
