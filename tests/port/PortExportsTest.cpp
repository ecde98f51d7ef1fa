// The CAN_Prt* exports as a host calls them: the frame, mode gating,
// reservation, and the records the port fills byte for byte.
#include "port/SimuPort.h"
#include "support/BusFixture.h"

#include <cstring>
#include <functional>
#include <vector>

using namespace bus_test;
using PortExports = BusTest;

// Disconnected comes before the mode; each operation has the mode it needs.
TEST_F(PortExports, ModeGatesEachOperationAfterTheConnection) {
  start(ecu("7E0", "7E8", ScenarioFile().event("10", {"50"}), "engine"));
  CAN_MesPhysPort measures;
  CAN_ParamPort params = {};
  CAN_BaudSearchPort search = {};
  search.candidateCount = 1;
  CAN_BaudFoundPort found;
  CAN_AssocEntry entry = {};
  CAN_AssocTable table = {1, &entry};
  AssocResult result;
  CAN_StatePort state;
  const CAN_FramePort frame = {0x7E0, 0, 0, 1, {0x10}, 0};
  const char some[4] = {};
  const std::vector<std::function<CAN_STATUS()>> calls = {
      [&] { return CAN_PrtGetMesPhys(port, &measures); },
      [&] { return CAN_PrtSetCanParam(port, &params); },
      [&] { return CAN_PrtGetCanParam(port, &params); },
      [&] { return CAN_PrtDetBaudRate(port, &search, &found); },
      [&] { return CAN_PrtLoadAssocTable(port, &table, &result); },
      [&] { return CAN_PrtSetVoie(port, 0, &detail); },
      [&] { return CAN_PrtSetHardFilt(port, some, &detail); },
      [&] { return CAN_PrtSetSoftFilt(port, some, &detail); },
      [&] { return CAN_PrtSetParamFlux(port, some, 0); },
      [&] { return CAN_PrtRegulationOn(port, 0, some); },
      [&] { return CAN_PrtRegulationOff(port, some); },
      [&] { return CAN_PrtPortGetState(port, &state); },
      [&] { return CAN_PrtSendTrame(port, &frame, &detail); },
      [&] { return queues::readStatus<CAN_EventPort>(port, 1); },
      [&] { return CAN_PrtSetSndCycl(port, some, 0, &detail); },
  };
  // Per mode 0 to 3, then disconnected: the status of each call above.
  const std::vector<std::vector<CAN_STATUS>> expected = {
      {4, 4, 4, 4, 1, 4, 4, 4, 4, 4, 4, 0, 4, 3, 0}, {4, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 4, 3, 0},
      {4, 4, 4, 4, 1, 4, 4, 4, 4, 4, 4, 0, 0, 0, 0}, {0, 4, 4, 4, 1, 4, 4, 4, 4, 4, 4, 0, 4, 3, 0},
      {7, 7, 7, 7, 7, 7, 7, 7, 7, 7, 7, 7, 7, 7, 0},
  };
  for (uint32_t mode = 0; mode < expected.size(); ++mode) {
    if (mode < 4)
      ASSERT_EQ(CAN_DevSetMode(device, mode, &detail), E_SUCCESS);
    else
      simuPort().setDeviceConnected(false);
    for (size_t i = 0; i < calls.size(); ++i)
      EXPECT_EQ(calls[i](), expected[mode][i]) << "call " << i << " in mode " << mode;
  }
}

TEST_F(PortExports, ReservationMatchesTheLowByteOnceAndEnumerationDescribesThePort) {
  start("");
  CAN_PRT_HANDLE handle = &handle;
  EXPECT_EQ(CAN_PrtReservation(device, 96, &handle), E_ALREADY_RESERVED);
  EXPECT_EQ(handle, nullptr);
  EXPECT_EQ(CAN_DevFree(device), E_INVALID) << "the port is reserved";
  CAN_EnumList list = {};
  ASSERT_EQ(CAN_PrtEnumerate(device, &list), E_SUCCESS);
  const auto *entry = static_cast<CAN_EnumPort *>(list.records);
  EXPECT_EQ(
      std::vector<int>({int(list.count), entry->resultByte, entry->portNumber, entry->reserved}),
      std::vector<int>({1, 0, 96, 1}));
  EXPECT_EQ(CAN_PrtEnumerate(device, &list), E_NULL_POINTER) << "the list holds items";
  free(list.records);

  EXPECT_EQ(CAN_PrtFree(port), E_SUCCESS);
  EXPECT_EQ(CAN_PrtFree(port), E_SUCCESS) << "never fails";
  EXPECT_EQ(CAN_PrtReservation(device, 97, &handle), E_NOT_FOUND);
  EXPECT_EQ(CAN_PrtReservation(device, 0x160, &handle), E_SUCCESS);
  EXPECT_EQ(handle, port);
  SimuDriver::instance()->device->setConnected(false);
  handle = &handle;
  EXPECT_EQ(CAN_PrtReservation(device, 97, &handle), E_DISCONNECTED) << "before the number";
  EXPECT_EQ(handle, &handle) << "untouched";
  list = {};
  EXPECT_EQ(CAN_PrtEnumerate(device, &list), E_DISCONNECTED);
}

// The cursor moves only for calls that pass the state and request checks,
// wraps when a re-read shortens the script, and outlives the driver.
TEST_F(PortExports, DetectionPlaysTheScriptInTurnAndCopiesTheFirstCandidateOnSuccess) {
  const std::string script =
      "<DETBAUDRATE>E_SUCCESS</DETBAUDRATE><DETBAUDRATE>E_BUSOFF</DETBAUDRATE>";
  start(script);
  CAN_BaudSearchPort search = {};
  search.candidateCount = 1;
  for (int i = 0; i < 12; ++i)
    search.candidates[0].bytes[i] = static_cast<uint8_t>(0xA0 + i);
  CAN_BaudFoundPort found;
  std::memset(&found, 0xEE, sizeof found);
  EXPECT_EQ(CAN_PrtDetBaudRate(port, &search, &found), E_SUCCESS);
  EXPECT_EQ(found.resultByte + found.unused[0] * 256, 0xEE * 256) << "bytes 1 to 3 untouched";
  EXPECT_EQ(std::memcmp(&found.found, &search.candidates[0], 12), 0);
  std::memset(&found, 0xEE, sizeof found);
  EXPECT_EQ(CAN_PrtDetBaudRate(port, &search, &found), E_BUSOFF);
  EXPECT_EQ(found.resultByte, 0xEE) << "a failure writes nothing";
  search.candidateCount = 0;
  EXPECT_EQ(CAN_PrtDetBaudRate(port, &search, &found), E_NULL_POINTER);
  search.candidateCount = 1;
  ASSERT_EQ(CAN_DevSetMode(device, 2, &detail), E_SUCCESS);
  EXPECT_EQ(CAN_PrtDetBaudRate(port, &search, &found), E_INVALID);
  ASSERT_EQ(CAN_DevSetMode(device, 1, &detail), E_SUCCESS);
  EXPECT_EQ(CAN_PrtDetBaudRate(port, &search, &found), E_SUCCESS);

  CAN_DrvEnd();
  start(script);
  EXPECT_EQ(CAN_PrtDetBaudRate(port, &search, &found), E_BUSOFF) << "process-wide cursor";
  edit("<DETBAUDRATE>E_NOMEM</DETBAUDRATE>");
  EXPECT_EQ(CAN_PrtDetBaudRate(port, &search, &found), E_NOMEM) << "wrapped to the start";
  edit("<DETBAUDRATE>e_success</DETBAUDRATE>");
  EXPECT_EQ(CAN_PrtDetBaudRate(port, &search, &found), E_INVALID) << "case-sensitive";
  edit("");
  EXPECT_EQ(CAN_PrtDetBaudRate(port, &search, &found), E_INVALID) << "script kept";
}

// The held copy is replaced only by a table that loads; only `count` of the
// host's entries are read.
TEST_F(PortExports, AssociationTableIsCopiedAndKeptThroughEveryRefusal) {
  start("");
  CAN_AssocEntry entries[3] = {};
  entries[0] = {{}, 0x7A, {}, 0x7E0, 0x7E8, 0};
  entries[1] = {{}, 0x7A, {}, 0x7E1, 0x7E9, 0};
  entries[2] = {{}, 0x10, {}, 0x7E2, 0x7E8, 0};
  CAN_AssocTable table = {2, entries};
  AssocResult result = {0xEE, 0xEE};
  ASSERT_EQ(CAN_PrtLoadAssocTable(port, &table, &result), E_SUCCESS);
  EXPECT_EQ(result.errorCode, 0xEE) << "written only on a refusal";
  entries[0].ecuAddress = 0x55;
  const struct {
    uint32_t mode, count;
    CAN_AssocEntry *pointer;
    CAN_STATUS status;
    uint8_t error, zero;
  } refusals[] = {{2, 2, entries, E_BOARD_ERROR_1, 14, 0},
                  {1, 0, nullptr, E_BOARD_ERROR_1, 6, 0},
                  {1, 5, nullptr, E_NULL_POINTER, 0xEE, 0xEE},
                  {1, 0xFFFFFFFFu, entries, E_INVALID, 0xEE, 0xEE}};
  for (const auto &refusal : refusals) {
    ASSERT_EQ(CAN_DevSetMode(device, refusal.mode, &detail), E_SUCCESS);
    table = {refusal.count, refusal.pointer};
    result = {0xEE, 0xEE};
    EXPECT_EQ(CAN_PrtLoadAssocTable(port, &table, &result), refusal.status) << refusal.count;
    EXPECT_EQ(result.errorCode * 256 + result.zero, refusal.error * 256 + refusal.zero);
  }
  EXPECT_EQ(log.count("entry pointer is null"), 1u);
  EXPECT_EQ(log.count("no memory for a table of 4294967295 entries"), 1u);
  ACE_UINT8 address = 0;
  ACE_UINT32 idTx = 0;
  EXPECT_TRUE(simuPort().addressByIdRx(0x7E8, address) && address == 0x7A) << "the copy";
  EXPECT_TRUE(simuPort().idTxByAddress(0x7A, idTx) && idTx == 0x7E0) << "first entry first";
  EXPECT_FALSE(simuPort().idTxByAddress(0x10, idTx)) << "the third entry was never read";
}

TEST_F(PortExports, CanParametersComeBackAndNoOtherByteOfTheBlockIsTouched) {
  start("");
  CAN_ParamPort params;
  std::memset(&params, 0x11, sizeof params);
  params.param4 = 0x44444444;
  ASSERT_EQ(CAN_PrtSetCanParam(port, &params), E_SUCCESS);
  CAN_ParamPort back;
  std::memset(&back, 0xEE, sizeof back);
  ASSERT_EQ(CAN_PrtGetCanParam(port, &back), E_SUCCESS);
  CAN_ParamPort expected;
  std::memset(&expected, 0xEE, sizeof expected);
  expected.param1 = expected.param2 = expected.param3 = expected.param5 = 0x11;
  expected.param4 = 0x44444444;
  expected.param6 = 0x11111111;
  EXPECT_EQ(std::memcmp(&back, &expected, sizeof back), 0);
}
