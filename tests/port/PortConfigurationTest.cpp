// The port's share of the configuration: the ECU entries, and what a re-read
// adds or keeps.
#include "ecu/SimuECU.h"
#include "port/SimuPort.h"
#include "support/BusFixture.h"

#include <clocale>
#include <string>
#include <vector>

using namespace bus_test;
using PortConfiguration = BusTest;

namespace {
std::vector<ACE_UINT32> tableIds(const SimuPort &port) {
  std::vector<ACE_UINT32> ids;
  for (const SimuECU *ecu : port.ecusInTableOrder())
    ids.push_back(ecu->idTx);
  return ids;
}
} // namespace

// Unusable UCE elements are skipped silently; a missing scenario file still
// gives an ECU. A re-read adds the ECUs again, to the free set only where the
// identifier is known, each with the negative code of its own read.
TEST_F(PortConfiguration, EveryUsableUceBecomesAnEcuAndReReadsAddThemAgain) {
  const ScenarioFile empty;
  const std::string units =
      ecu("7E0", "7E8", empty, "engine") + ecu("0x7E0", "7F8", empty, "second") +
      "<UCE scenario='' idRx='7E9' idTx='7E1'/>" + "<UCE targetAddress='10' idRx='7E9' idTx=''/>" +
      "<UCE targetAddress='10' idTx='7E1'/>" +
      "<UCE scenario='missing.xml' targetAddress='1' "
      "idRx='7EA' idTx=' 7e2'/>";
  start(units + "<NEGATIVE_RESPONSE>31</NEGATIVE_RESPONSE>", 2);
  EXPECT_EQ(simuPort().freeEcuCount(), 3u);
  EXPECT_EQ(tableIds(simuPort()), (std::vector<ACE_UINT32>{0x7E0, 0x7E2}));
  const SimuECU *first = simuPort().ecusInTableOrder()[0];
  EXPECT_EQ(first->idRx, 0x7E8u) << "the first ECU bound keeps the identifier";
  EXPECT_EQ(log.count("is unreachable"), 1u) << "only the missing file, not the empty path";

  edit(units + ecu("7E3", "7EB", empty, "third"));
  EXPECT_EQ(simuPort().freeEcuCount(), 7u);
  EXPECT_EQ(tableIds(simuPort()), (std::vector<ACE_UINT32>{0x7E0, 0x7E2, 0x7E3}));
  EXPECT_EQ(simuPort().ecusInTableOrder()[0], first);
  CAN_FramePort frame = {0x7E0, 0, 0, 1, {0x10}, 0};
  ASSERT_EQ(CAN_PrtSendTrame(port, &frame, &detail), E_SUCCESS);
  frame.canId = 0x7E3;
  ASSERT_EQ(CAN_PrtSendTrame(port, &frame, &detail), E_SUCCESS);
  EXPECT_EQ(frameHex(*nextEvent()), "7F1031") << "created by the first read";
  EXPECT_EQ(frameHex(*nextEvent()), "7F1080") << "created without NEGATIVE_RESPONSE";
}

// Values read with "." whatever the host's locale, by the device and the
// port alike; a re-read without the elements keeps them.
TEST_F(PortConfiguration, VoltagesReadTheSameUnderACommaLocaleAndSurviveAReRead) {
  const char *commaLocales[] = {"fr_FR.UTF-8", "de_DE.UTF-8", "French_France.1252", "French"};
  const std::string previous = std::setlocale(LC_NUMERIC, nullptr);
  const char *chosen = nullptr;
  for (const char *name : commaLocales)
    if (chosen == nullptr && std::setlocale(LC_NUMERIC, name) != nullptr)
      chosen = name;
  start("<VOLTAGES VBatt='12.5' APCKelmora='7.25'/><CANMESPHYS CanHmin='2.5' CanLmax='x'/>", 3);
  edit("<CANMESPHYS CanHmin='' CanHmax='3.75'/>");
  CAN_TensionDev tension = {};
  CAN_MesPhysPort measures = {};
  ASSERT_EQ(CAN_DevGetTension(device, &tension), E_SUCCESS);
  ASSERT_EQ(CAN_PrtGetMesPhys(port, &measures), E_SUCCESS);
  std::setlocale(LC_NUMERIC, previous.c_str());
  EXPECT_FLOAT_EQ(tension.batteryVoltage, 12.5f);
  EXPECT_FLOAT_EQ(tension.apcKelmora, 7.25f);
  EXPECT_FLOAT_EQ(measures.batteryVoltage, 12.5f);
  EXPECT_FLOAT_EQ(measures.canHmin, 2.5f);
  EXPECT_FLOAT_EQ(measures.canHmax, 3.75f);
  EXPECT_FLOAT_EQ(measures.canLmax, 0.0f);
  if (chosen == nullptr)
    GTEST_SKIP() << "no locale with a decimal comma is installed";
}
