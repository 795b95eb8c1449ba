// updater/update_package_test.cpp: the reader of an update package.
#include "updater/update_package.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <string>

#include "foundation/memory.h"
#include "json/lumojson.h"
#include "support/folder.h"

namespace {

constexpr char kMissing[] = "Значение не задано";

class UpdatePackage : public testing::Test {
 protected:
  UpdatePackage() : reader(lumo::JsonReaderCreate()) {}
  ~UpdatePackage() override {
    Release();
    lumo::JsonReaderDestroy(reader);
  }

  // Reads the package; what was traced and printed is kept without the JSON reader's part.
  int Load(const std::string &json) {
    EXPECT_EQ(lumo::ParseJsonText(reader, json.c_str()), 0);
    folder.ClearTrace();
    testing::internal::CaptureStdout();
    const int result = lumo::LoadGetUpdatePackReponse(&response, lumo::JsonReaderRoot(reader));
    std::fflush(stdout);
    console = testing::internal::GetCapturedStdout();
    trace = folder.Trace();
    return result;
  }
  void Release() {
    if (response == nullptr) return;
    response->destroy(response);
    lumo::MemFree(response, LUMO_HERE);
    response = nullptr;
  }

  test::Folder folder;
  lumo::JsonReader *reader;
  lumo::UpdateResponse *response = nullptr;
  std::string console;
  std::string trace;
};

TEST_F(UpdatePackage, ReadsAWholeResponse) {
  EXPECT_EQ(
      Load("{\"UpdatePack\":{\"response\":{\"Response\":{\"responseState\":\"SUCCESS\",\"responseStateCode\":"
           "\"OK\",\"message\":\"done\"}},\"files\":[1,2]}}"),
      -402);
  ASSERT_NE(response, nullptr);
  EXPECT_STREQ(response->responseState, "SUCCESS");
  EXPECT_STREQ(response->responseStateCode, "OK");
  EXPECT_STREQ(response->message, "done");
  EXPECT_EQ(trace,
            "LoadGetUpdatePackReponse\n responseState = \"SUCCESS\"\n responseStateCode = \"OK\"\n"
            " message = \"done\"\n");
  EXPECT_EQ(console, "!1! 0  response\n!2! 1  files\n");
}

TEST_F(UpdatePackage, FillsMissingTexts) {
  EXPECT_EQ(Load("{\"UpdatePack\":{\"response\":{\"Response\":{\"responseState\":\"ERROR\"}}}}"), -402);
  ASSERT_NE(response, nullptr);
  EXPECT_STREQ(response->responseState, "ERROR");
  EXPECT_STREQ(response->responseStateCode, kMissing);
  EXPECT_STREQ(response->message, kMissing);
}

TEST_F(UpdatePackage, AnEmptyResponseHasAllTextsMissing) {
  EXPECT_EQ(Load("{\"UpdatePack\":{\"response\":{}}}"), -402);
  ASSERT_NE(response, nullptr);
  EXPECT_STREQ(response->responseState, kMissing);
  EXPECT_STREQ(response->responseStateCode, kMissing);
  EXPECT_STREQ(response->message, kMissing);
}

TEST_F(UpdatePackage, TakesTextsOnlyAndIgnoresOtherKeys) {
  EXPECT_EQ(
      Load(
          "{\"UpdatePack\":{\"response\":{\"Response\":{\"responseState\":5,\"messag\":\"x\",\"other\":\"y\","
          "\"message\":\"m\"}}}}"),
      -402);
  EXPECT_STREQ(response->responseState, kMissing);
  EXPECT_STREQ(response->message, "m");
  EXPECT_EQ(trace, "LoadGetUpdatePackReponse\n message = \"m\"\n");
}

TEST_F(UpdatePackage, TheLastOfTwoTextsStays) {
  EXPECT_EQ(Load("{\"UpdatePack\":{\"response\":{\"Response\":{\"message\":\"1\"},\"Response\":{\"message\":"
                 "\"2\"}}}}"),
            -402);
  EXPECT_STREQ(response->message, "2");
  EXPECT_EQ(trace, "LoadGetUpdatePackReponse\n message = \"1\"\n message = \"2\"\n");
}

TEST_F(UpdatePackage, ASecondResponseReplacesTheFirst) {
  EXPECT_EQ(Load("{\"UpdatePack\":{\"response\":{\"Response\":{\"message\":\"1\"}},\"response\":{}}}"), -402);
  EXPECT_STREQ(response->message, kMissing);
  EXPECT_EQ(console, "!1! 0  response\n!1! 1  response\n");
}

TEST_F(UpdatePackage, WarnsOfAnUnknownTagWithoutALineEnd) {
  EXPECT_EQ(Load("{\"UpdatePack\":{\"files\":[],\"fil\":1,\"Response\":{}}}"), -402);
  EXPECT_EQ(response, nullptr);
  EXPECT_EQ(trace, "LoadGetUpdatePackReponse\nWARNING: UNKNOWN TAG: filWARNING: UNKNOWN TAG: Response");
  EXPECT_EQ(console, "!2! 0  files\n!3! 1  fil\n!3! 2  Response\n");
}

TEST_F(UpdatePackage, RefusesAnotherTopLevelKey) {
  EXPECT_EQ(Load("{\"updatePack\":{\"response\":{}}}"), -402);
  EXPECT_EQ(trace, "LoadGetUpdatePackReponse\nERROR: Expected \"UpdatePack\" found \"updatePack\"\n");
  EXPECT_EQ(response, nullptr);
  EXPECT_EQ(console, "");
}

TEST_F(UpdatePackage, RefusesALeadingPartAndALongerKey) {
  EXPECT_EQ(Load("{\"Update\":{}}"), -402);
  EXPECT_EQ(trace, "LoadGetUpdatePackReponse\nERROR: Expected \"UpdatePack\" found \"Update\"\n");
  EXPECT_EQ(Load("{\"UpdatePacks\":{}}"), -402);
  EXPECT_EQ(trace, "LoadGetUpdatePackReponse\nERROR: Expected \"UpdatePack\" found \"UpdatePacks\"\n");
}

TEST_F(UpdatePackage, KeepsWhatStoodBeforeAWrongKey) {
  EXPECT_EQ(Load("{\"UpdatePack\":{\"response\":{}},\"other\":1,\"UpdatePack\":{\"files\":1}}"), -402);
  ASSERT_NE(response, nullptr);
  EXPECT_STREQ(response->message, kMissing);
  EXPECT_EQ(trace, "LoadGetUpdatePackReponse\nERROR: Expected \"UpdatePack\" found \"other\"\n");
  EXPECT_EQ(console, "!1! 0  response\n");
}

TEST_F(UpdatePackage, RefusesAPackThatIsNoObject) {
  EXPECT_EQ(Load("{\"UpdatePack\":[],\"UpdatePack\":{\"files\":1}}"), -402);
  EXPECT_EQ(trace, "LoadGetUpdatePackReponse\nERROR: Expected JSON_OBJECT_BEGIN found 1\n");
  EXPECT_EQ(console, "");
}

TEST_F(UpdatePackage, AWrongKeyInTheResponseLeavesTheTextsEmpty) {
  EXPECT_EQ(
      Load("{\"UpdatePack\":{\"response\":{\"Response\":{\"message\":\"m\"},\"response\":{}},\"files\":1}}"),
      -402);
  ASSERT_NE(response, nullptr);
  EXPECT_STREQ(response->message, "m");
  EXPECT_EQ(response->responseState, nullptr);
  EXPECT_EQ(trace,
            "LoadGetUpdatePackReponse\n message = \"m\"\nERROR: Expected \"Response\"  found \"response\"\n");
  EXPECT_EQ(console, "!1! 0  response\n!2! 1  files\n");
}

TEST_F(UpdatePackage, AResponseThatIsNoObjectDoesNotStopTheWalk) {
  EXPECT_EQ(Load("{\"UpdatePack\":{\"response\":{\"Response\":\"x\",\"Response\":{\"message\":\"m\"}}}}"),
            -402);
  EXPECT_STREQ(response->message, "m");
  EXPECT_STREQ(response->responseState, kMissing);
  EXPECT_EQ(trace, "LoadGetUpdatePackReponse\nERROR: Expected JSON_OBJECT_BEGIN found 7\n message = \"m\"\n");
}

TEST_F(UpdatePackage, APackThatIsNoDocument) {
  for (const char *json : {"[]", "[{\"UpdatePack\":{}}]", "{}", "5"}) {
    SCOPED_TRACE(json);
    EXPECT_EQ(Load(json), -402);
    EXPECT_EQ(response, nullptr);
    EXPECT_EQ(trace, "LoadGetUpdatePackReponse\n");
    EXPECT_EQ(console, "");
  }
}

TEST_F(UpdatePackage, DestroyingTwiceIsHarmless) {
  Load("{\"UpdatePack\":{\"response\":{}}}");
  response->destroy(response);
  EXPECT_EQ(response->message, nullptr);
  folder.ClearTrace();
  response->destroy(response);
  EXPECT_EQ(folder.Trace(), "");
}

TEST_F(UpdatePackage, AFileListFreesItsEntriesThroughThemselves) {  // the leak checker is the judge
  lumo::UpdateFileList list = {lumo::DestroyUpdateFileList, nullptr, 2};
  list.files = static_cast<lumo::UpdateFile *>(lumo::MemCalloc(2, sizeof(lumo::UpdateFile), LUMO_HERE));
  for (int i = 0; i < 2; ++i) {
    list.files[i].destroy = lumo::DestroyUpdateFile;
    list.files[i].name = lumo::MemCopyText("name", LUMO_HERE);
    list.files[i].path = lumo::MemCopyText("path", LUMO_HERE);
  }
  list.destroy(&list);
  EXPECT_EQ(list.files, nullptr);
  EXPECT_EQ(list.count, 0);
  list.destroy(&list);
  EXPECT_EQ(folder.Trace(), "");
}

}  // namespace
