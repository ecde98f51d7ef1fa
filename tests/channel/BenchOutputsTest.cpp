// The files a bench names for a host that cannot set variables: found next
// to the bench, and passed over when a variable already named one.
#include "ChannelFixture.h"
#include "core/BusTrace.h"
#include "platform/CodePage.h"

#include <filesystem>
#include <string>

using namespace channel_test;
using BenchOutputsTest = ChannelTest;

// Relative paths count from the bench's folder, whatever the working
// directory; the text around a path is trimmed.
TEST_F(BenchOutputsTest, TheBenchNamesTheFilesNextToIt) {
  startWith(ecu("7E0", "7E8", ScenarioFile().event("3E00", {"7E00"}), "engine", "10") +
                "<TRACEFILE> bus.log </TRACEFILE><REPORTFILE>report.json</REPORTFILE>"
                "<LOGFILE>cansimu.log</LOGFILE>",
            {{0x10, 0x7E0, 0x7E8}});
  ASSERT_EQ(send(openChannel(CHN_ONE_TO_ONE, 0x10), "3E00"), E_SUCCESS);
  CAN_DrvEnd();
  EXPECT_NE(readFile(dir.file("bus.log")).find("can0 7E8#027E00\n"), std::string::npos);
  EXPECT_NE(readFile(dir.file("report.json")).find("\"pattern\": \"3E00\", \"hits\": 1"),
            std::string::npos);
  EXPECT_NE(readFile(dir.file("cansimu.log")).find("Answer source: ECU 7e0/7e8"),
            std::string::npos);
}

TEST_F(BenchOutputsTest, AFileTheVariableNamedWins) {
  const std::string variableTrace = dir.file("variable.log");
  BusTrace::openNamed(toWideString(variableTrace.c_str()), L"CANSIMU_TRACE");
  startWith(ecu("7E0", "7E8", ScenarioFile().event("3E00", {"7E00"}), "engine", "10") +
                "<TRACEFILE>bus.log</TRACEFILE>",
            {{0x10, 0x7E0, 0x7E8}});
  ASSERT_EQ(send(openChannel(CHN_ONE_TO_ONE, 0x10), "3E00"), E_SUCCESS);
  CAN_DrvEnd();
  EXPECT_NE(readFile(variableTrace).find("can0 7E8#027E00\n"), std::string::npos);
  EXPECT_FALSE(std::filesystem::exists(dir.file("bus.log")));
}
