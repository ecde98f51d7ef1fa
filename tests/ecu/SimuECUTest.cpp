#include "ecu/SimuECU.h"
#include "platform/CodePage.h"
#include "support/LogCapture.h"
#include "support/ScenarioFile.h"
#include "support/TempDir.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>

namespace {

ACE_WString wide(const std::string &text) { return toWideString(text.c_str()); }
const char kNoAnswer[] = "<none>";

class SimuECUTest : public ::testing::Test {
protected:
  TempDir dir;
  std::string file = dir.file("ecu.xml");

  std::unique_ptr<SimuECU> ecuOn(const std::string &xml, const std::string &code = "80") {
    writeFile(file, xml);
    setModificationTime(file, 1000000);
    return std::make_unique<SimuECU>(0x7E8, 0x7E0, wide(file), wide(code));
  }
  // The ECU's answer, or kNoAnswer when getResponse returns false.
  static std::string answer(SimuECU &ecu, const std::string &request, bool answerUnknown = true) {
    ACE_WString response(L"untouched");
    const bool answered = ecu.getResponse(wide(request), response, answerUnknown);
    const std::string text = toAnsi(response.c_str()).get();
    if (answered)
      return text;
    EXPECT_EQ(text, "untouched") << "no answer leaves the response alone";
    return kNoAnswer;
  }
  void edit(const ScenarioFile &scenario) {
    const long long before = modificationTime(file);
    scenario.writeTo(file);
    setModificationTime(file, before + 10);
  }
};

} // namespace

TEST_F(SimuECUTest, Construction_OnAnUnreachableFileLeavesAnEcuSilentForGood) {
  LogCapture log;
  SimuECU ecu(1, 2, wide(file), L"80");
  EXPECT_FALSE(ecu.hasScenario());
  EXPECT_EQ(log.count("is unreachable"), 1u);
  ScenarioFile().event("1003", {"5003"}).writeTo(file);
  EXPECT_FALSE(ecu.isDialogOpen());
  EXPECT_EQ(answer(ecu, "1003"), kNoAnswer);
  EXPECT_EQ(answer(ecu, "2201"), kNoAnswer) << "not even a negative response";
  EXPECT_EQ(log.lines().size(), 1u);
}

TEST_F(SimuECUTest, GetResponse_AnswersUnknownRequestsWithTheNegativeCodeOnlyWhenAsked) {
  auto ecu = ecuOn(ScenarioFile().event("1003", {"5003"}).xml());
  EXPECT_EQ(answer(*ecu, "1003"), "5003");
  EXPECT_TRUE(ecu->isDialogOpen()) << "no OPENDIALOG entry: open";
  EXPECT_EQ(answer(*ecu, "2201"), "7F2280");
  EXPECT_EQ(answer(*ecu, "2201", false), kNoAnswer);
  EXPECT_EQ(answer(*ecu, "1003", false), "5003");

  ecu = ecuOn(ScenarioFile().event("1003", {"5003"}).xml(), "31");
  EXPECT_EQ(answer(*ecu, "3101FF00"), "7F3131");
  EXPECT_EQ(answer(*ecu, ""), "31") << "an empty request gets the code alone";
  EXPECT_EQ(answer(*ecu, "3"), "31");

  ecu = ecuOn("not a scenario", "11");
  EXPECT_TRUE(ecu->hasScenario());
  EXPECT_TRUE(ecu->isDialogOpen());
  EXPECT_EQ(answer(*ecu, "1003"), "7F1011");
  EXPECT_EQ(answer(*ecu, "1003", false), kNoAnswer);
}

TEST_F(SimuECUTest, Dialog_OnlyTheExactTextFalseClosesItUntilTheFileIsEdited) {
  for (const char *text : {"false", "False", "FALSE ", "", "0"})
    EXPECT_TRUE(ecuOn(ScenarioFile().dialog({text}).xml())->isDialogOpen()) << "'" << text << "'";
  auto ecu = ecuOn(ScenarioFile().dialog({"FALSE"}).event("1003", {"5003"}).xml());
  EXPECT_FALSE(ecu->isDialogOpen());
  EXPECT_EQ(answer(*ecu, "1003"), kNoAnswer);
  EXPECT_EQ(answer(*ecu, "2201"), kNoAnswer);
  edit(ScenarioFile().dialog({"TRUE"}).event("1003", {"5003"}));
  EXPECT_TRUE(ecu->isDialogOpen());
  EXPECT_EQ(answer(*ecu, "1003"), "5003");
  edit(ScenarioFile().dialog({"FALSE"}));
  EXPECT_FALSE(ecu->isDialogOpen());
  edit(ScenarioFile().event("1003", {"5003"}));
  EXPECT_TRUE(ecu->isDialogOpen()) << "entry removed";
}

TEST_F(SimuECUTest, GetResponse_AdvancesTheDialogRotationFirstThenLooksUpTheRequest) {
  auto ecu = ecuOn(ScenarioFile().dialog({"TRUE", "FALSE"}).event("1003", {"5003"}).xml());
  EXPECT_EQ(answer(*ecu, "1003"), "5003");
  EXPECT_EQ(answer(*ecu, "1003"), kNoAnswer);
  EXPECT_EQ(answer(*ecu, "1003"), "5003");
  EXPECT_FALSE(ecu->isDialogOpen()) << "a dialog check advances the same rotation";
  EXPECT_EQ(answer(*ecu, "1003"), "5003");
  // One pattern matches both look-ups: the dialog check takes one text, the
  // request the next.
  ecu = ecuOn(ScenarioFile().event("OP*", {"T1", "T2", "T3"}).xml());
  EXPECT_EQ(answer(*ecu, "OPXX"), "T2");
  EXPECT_EQ(answer(*ecu, "OPXX"), "T1");
  EXPECT_EQ(answer(*ecu, "OPXX"), "T3");
}
