// Files a tester may hand the library that the other tests do not: a
// directory, text that is not UTF-8, 64 KB attribute values, a file deleted
// while the host runs. (Empty, binary, truncated, 20 MB and deeply nested
// files, and firmware images of every wrong size, are covered with the
// readers they concern.) Each gives its documented outcome and nothing else.
#include "support/BusFixture.h"

#include <cstdio>
#include <filesystem>
#include <string>

using namespace bus_test;
using BadFiles = BusTest;

namespace {
const std::string kLong(64 * 1024, '7');
// What the ECU on `canId` answers a raw frame 10, as hex; "silent" for nothing.
std::string frameAnswer(CAN_PRT_HANDLE port, uint32_t canId) {
  const CAN_FramePort frame = {canId, 0, 0, 1, {0x10}, 0};
  uint8_t detail = 0;
  EXPECT_EQ(CAN_PrtSendTrame(port, &frame, &detail), E_SUCCESS);
  const PortEvent event = queues::take<CAN_EventPort>(port, 1);
  return event ? frameHex(*event) : "silent";
}
} // namespace

// A directory, or a file that is not UTF-8, reads as no configuration; a file
// deleted after it was read leaves the simulation as it was.
TEST_F(BadFiles, AConfigurationThatCannotBeReadLeavesTheDriverAsItWas) {
  std::filesystem::create_directory(dir.file("folder"));
  ASSERT_EQ(CAN_DrvInit(dir.file("folder").c_str()), E_SUCCESS);
  CAN_DEV_HANDLE handle = nullptr;
  EXPECT_EQ(CAN_DevReservation(kSerial, &handle), E_NOT_FOUND);
  CAN_DrvEnd();

  // Bytes that are no UTF-8 inside a text: read and converted, not refused.
  save("<A b='\xFF\xFE'>\xC3\x28\xA0\xA1</A>");
  ASSERT_EQ(CAN_DrvInit(configPath.c_str()), E_SUCCESS);
  CAN_EnumList list = {};
  ASSERT_EQ(CAN_DevEnumerate(&list), E_SUCCESS);
  EXPECT_STREQ(static_cast<CAN_EnumDev *>(list.records)->name, kSerial);
  free(list.records);
  CAN_DrvEnd();

  start("<VOLTAGES VBatt='1.5'/>");
  const size_t logged = log.lines().size();
  std::remove(configPath.c_str());
  pollDriver();
  CAN_TensionDev tension = {};
  EXPECT_EQ(CAN_DevGetTension(device, &tension), E_SUCCESS);
  EXPECT_FLOAT_EQ(tension.batteryVoltage, 1.5f);
  EXPECT_EQ(log.lines().size(), logged) << "a file gone is no change, and not logged";
}

// 64 KB values: a serial number cut inside its record, an identifier that
// clamps, a voltage beyond a float, a scenario path that is logged whole.
TEST_F(BadFiles, AttributesOf64KilobytesAreReadAndClampedWithoutOverrun) {
  start("<VOLTAGES VBatt='" + kLong + "'/>" + "<UCE targetAddress='" + kLong + "' idRx='" + kLong +
            "' idTx='" + kLong + "' scenario='" + kLong + "'/>",
        2);
  CAN_TensionDev tension = {};
  ASSERT_EQ(CAN_DevGetTension(device, &tension), E_SUCCESS);
  EXPECT_GT(tension.batteryVoltage, 3e38f) << "read as infinite";
  EXPECT_EQ(log.count("beyond a 32-bit float"), 1u);
  EXPECT_EQ(log.count("The file <" + kLong + "> is unreachable"), 1u);
  EXPECT_EQ(simuPort().ecusInTableOrder().size(), 1u);
  EXPECT_EQ(frameAnswer(port, 0x7FFFFFFF), "silent") << "no scenario, no answer";
}

// Scenario files the ECU reads as empty answer every request negatively; a
// deleted one keeps answering from what was read.
TEST_F(BadFiles, ScenariosThatCannotBeReadLeaveTheirEcuAnsweringNegatively) {
  std::filesystem::create_directory(dir.file("folder.xml"));
  writeFile(dir.file("latin.xml"), "<S>\xE9\xE8<EVENEMENT><REQUETE><T>10</T></REQUETE>"
                                   "<REPONSE><TRAME>\xFF</TRAME></REPONSE></EVENEMENT></S>");
  const ScenarioFile known = ScenarioFile().event("10", {"5001" + kLong});
  start("<UCE scenario='" + dir.file("folder.xml") + "' targetAddress='1' idRx='1' idTx='11'/>" +
            "<UCE scenario='" + dir.file("latin.xml") + "' targetAddress='1' idRx='2' idTx='12'/>" +
            ecu("13", "3", known, "known"),
        2);
  EXPECT_EQ(frameAnswer(port, 0x11), "7F1080");
  EXPECT_NE(frameAnswer(port, 0x12), "silent") << "its entry is read and answers";
  std::remove(dir.file("known.xml").c_str());
  EXPECT_EQ(frameAnswer(port, 0x13), "5001777777777777") << "cut to 8 bytes";
  EXPECT_EQ(log.count("Frame longer than expected!"), 1u);
}
