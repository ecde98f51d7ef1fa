// The session report's counts after a scripted session, read back as JSON
// the way a CI script reads them.
#include "core/SessionReport.h"
#include "ChannelFixture.h"
#include "files/Json.h"
#include "platform/CodePage.h"

#include <filesystem>
#include <string>

using namespace channel_test;
using SessionReportTest = ChannelTest;

namespace {

JsonValue readJson(const std::string &path) { return parseJson(readFile(path)); }

const JsonValue *ecuNamed(const JsonValue &report, const std::string &idTx) {
  for (const JsonValue &ecu : report["ecus"].items)
    if (ecu["idTx"].text == idTx)
      return &ecu;
  return nullptr;
}

} // namespace

TEST_F(SessionReportTest, CountsWhatTheSessionMet) {
  const std::string reportPath = dir.file("report.json");
  SessionReport::openNamed(toWideString(reportPath.c_str()), L"the test");
  startWith(ecu("7E0", "7E8",
                ScenarioFile()
                    .event("22F190", {"62F19041"})
                    .event("1003", {"5003"})
                    .event("2E*", {"7F2E31"}),
                "engine", "10") +
                ecu("710", "77A", ScenarioFile().event("OPENDIALOG", {"FALSE"}), "gateway", "01"),
            {{0x10, 0x7E0, 0x7E8}, {0x01, 0x710, 0x77A}});
  CAN_CHN_HANDLE channel = openChannel(CHN_ONE_TO_ONE, 0x10);
  for (const char *request : {"22F190", "22F190", "2EF19001", "2201", "2201", "3101"})
    ASSERT_EQ(send(channel, request), E_SUCCESS) << request;
  CAN_CHN_HANDLE refused = create(CHN_ONE_TO_ONE);
  ASSERT_EQ(configure(refused, 0x01), E_SUCCESS);
  EXPECT_EQ(CAN_ChnOpenSession(refused), E_INVALID);
  uint8_t armedDetail = 0;
  setNextCANStatus("CAN_DevSetMode", E_BUSOFF, 5);
  EXPECT_EQ(CAN_DevSetMode(device, 1, &armedDetail), E_BUSOFF);
  setNextCANStatus("CAN_PrtRxMsg", PRT_TYPE_FRAME, 0);
  CAN_DrvEnd();

  const JsonValue report = readJson(reportPath);
  EXPECT_EQ(report["format"].text, "cansimu-report");
  EXPECT_TRUE(report["ended"].boolean);
  const JsonValue *engine = ecuNamed(report, "7e0");
  ASSERT_NE(engine, nullptr);
  EXPECT_EQ((*engine)["scenario"].text, dir.file("engine.xml"));
  // Hits, unscripted requests and answer counts are read back by the
  // command-line report tests and the Python session's; here, what only
  // this session meets.
  EXPECT_EQ((*engine)["negativeAnswers"].count(), 4u);

  const JsonValue *gateway = ecuNamed(report, "710");
  ASSERT_NE(gateway, nullptr);
  EXPECT_EQ((*gateway)["dialogRefusals"].count(), 1u);
  EXPECT_TRUE((*gateway)["entries"].items.empty()) << "OPENDIALOG is no request entry";

  ASSERT_EQ(report["armedStatuses"].items.size(), 1u);
  const JsonValue &armed = report["armedStatuses"].items[0];
  EXPECT_EQ(armed["export"].text, "CAN_DevSetMode");
  EXPECT_EQ(armed["status"].count(), E_BUSOFF);
  EXPECT_EQ(armed["detail"].count(), 5u);
  ASSERT_EQ(report["injectedEvents"].items.size(), 1u);
  EXPECT_EQ(report["injectedEvents"].items[0]["export"].text, "CAN_PrtRxMsg");
  EXPECT_EQ(report["injectedEvents"].items[0]["type"].count(), PRT_TYPE_FRAME);
}

// A folder that vanishes: the host sees nothing of it, the failure is
// logged once, and the report is written again once the folder is back.
TEST_F(SessionReportTest, AFailedWriteIsLoggedOnceAndTheHostSeesNothing) {
  const std::string folder = dir.file("reports");
  const std::string reportPath = folder + "/report.json";
  SessionReport::openNamed(toWideString(reportPath.c_str()), L"the test");
  startWith(ecu("7E0", "7E8", ScenarioFile().event("22F190", {"62F19041"}), "engine", "10"),
            {{0x10, 0x7E0, 0x7E8}});
  CAN_CHN_HANDLE channel = openChannel(CHN_ONE_TO_ONE, 0x10);
  ASSERT_EQ(send(channel, "22F190"), E_SUCCESS);
  SessionReport::flush();
  ASSERT_EQ(send(channel, "22F190"), E_SUCCESS);
  SessionReport::flush();
  EXPECT_EQ(log.count("Session report: writing <" + reportPath + "> failed"), 1u);
  EXPECT_EQ(resultHex(*nextEvent(channel)), "62F19041");
  std::filesystem::create_directory(folder);
  CAN_DrvEnd();
  const JsonValue report = readJson(reportPath);
  EXPECT_EQ(report["ecus"].items.at(0)["entries"].items.at(0)["hits"].count(), 2u);
}
