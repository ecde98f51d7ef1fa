// The export frame over the whole interface, as a host meets it: every
// pointer argument refused with its family's code before the injection step,
// and every export with an injection step answered by an armed status, its
// detail where the export puts it (or nowhere), the operation not run.
#include "channel/SimuChannel.h"
#include "support/BusFixture.h"
#include "support/FirmwareImages.h"
#include "support/NullChecks.h"

#include <cstring>
#include <functional>
#include <sstream>
#include <string>
#include <utility>

using namespace bus_test;
using ExportTable = BusTest;

// A table row's export name and a call of that export with the arguments given.
#define CALL(function, ...) #function, [&] { return function(__VA_ARGS__); }

namespace {
const uint8_t kFill = 0xEE;

// Every record a call may write, filled with kFill before each call.
struct Records {
  void *handle;
  uint8_t detail;
  CAN_ModeDev mode;
  CAN_ConfigDev config;
  CAN_TensionDev tension;
  CAN_VersionDev version;
  CAN_TestDev test;
  DownloadResult download;
  CAN_MesPhysPort measures;
  CAN_ParamPort params;
  CAN_BaudFoundPort found;
  AssocResult assoc;
  CAN_StatePort state;
  CAN_EventDrv *driverEvent;
  uint32_t pending;
};
} // namespace

TEST_F(ExportTable, EachNullPointerGetsItsFamilysCodeBeforeTheInjectionStep) {
  start(ecu("7E0", "7E8", ScenarioFile(), "engine"));
  Records r = {};
  CAN_EnumList list = {};
  CAN_CHN_HANDLE channel = nullptr;
  ASSERT_EQ(CAN_ChnCreate(port, CHN_ONE_TO_ONE, 0, &channel), E_SUCCESS);
  CAN_BaudSearchPort search = {};
  CAN_AssocTable table = {};
  CAN_FramePort frame = {};
  CAN_ChnConfigRec chnConfig = {};
  CAN_DiagMsg request = {};
  CAN_EventDev *devEvent = nullptr;
  CAN_EventPort *prtEvent = nullptr;
  CAN_EventChn *chnEvent = nullptr;
  const void *some = &r;
  uint8_t *d = &r.detail;
  void *p = port;
  EXPECT_NULLS_REFUSED_UNARMED(21, CAN_DrvRxMsg, &r.driverEvent, &r.pending, 0u);
  EXPECT_NULLS_REFUSED(21, CAN_DevEnumerate, &list);
  EXPECT_NULLS_REFUSED(21, CAN_DevReservation, kSerial, &r.handle);
  EXPECT_NULLS_REFUSED(21, CAN_DevSetMode, device, 1u, d);
  EXPECT_NULLS_REFUSED(21, CAN_DevGetMode, device, &r.mode);
  EXPECT_NULLS_REFUSED(21, CAN_DevGetConfig, device, &r.config);
  EXPECT_NULLS_REFUSED(21, CAN_DevGetTension, device, &r.tension);
  EXPECT_NULLS_REFUSED(21, CAN_DevGetVersion, device, &r.version);
  EXPECT_NULLS_REFUSED(21, CAN_DevSetSleep, device);
  EXPECT_NULLS_REFUSED(21, CAN_DevSndGenericFrame, device, some);
  EXPECT_NULLS_REFUSED(21, CAN_DevAutoConfig, device);
  EXPECT_NULLS_REFUSED(21, CAN_DevAutoConfigRaz, device);
  EXPECT_NULLS_REFUSED(21, CAN_DevHC16Reset, device);
  EXPECT_NULLS_REFUSED(21, CAN_DevBoardTeleFirm, device, "f", &r.download);
  EXPECT_NULLS_REFUSED_UNARMED(21, CAN_DevFree, device);
  EXPECT_NULLS_REFUSED_UNARMED(21, CAN_DevEndFifo, device);
  EXPECT_NULLS_REFUSED_UNARMED(21, CAN_DevRxMsg, device, &devEvent, &r.pending, 0u);
  EXPECT_EQ(CAN_DevRunTest(nullptr, 0, nullptr), E_NULL_POINTER) << "the one mixed case";
  EXPECT_EQ(CAN_DevRunTest(device, 0, nullptr), E_INVALID);
  EXPECT_NULLS_REFUSED(21, CAN_PrtEnumerate, device, &list);
  EXPECT_NULLS_REFUSED(21, CAN_PrtReservation, device, 96u, &r.handle);
  EXPECT_NULLS_REFUSED(21, CAN_PrtGetMesPhys, p, &r.measures);
  EXPECT_NULLS_REFUSED(21, CAN_PrtSetVoie, p, 1u, d);
  EXPECT_NULLS_REFUSED(21, CAN_PrtSetCanParam, p, &r.params);
  EXPECT_NULLS_REFUSED(21, CAN_PrtGetCanParam, p, &r.params);
  EXPECT_NULLS_REFUSED(21, CAN_PrtDetBaudRate, p, &search, &r.found);
  EXPECT_NULLS_REFUSED(21, CAN_PrtSetHardFilt, p, some, d);
  EXPECT_NULLS_REFUSED(21, CAN_PrtSetSoftFilt, p, some, d);
  EXPECT_NULLS_REFUSED(21, CAN_PrtLoadAssocTable, p, &table, &r.assoc);
  EXPECT_NULLS_REFUSED(21, CAN_PrtSetParamFlux, p, some, 0u);
  EXPECT_NULLS_REFUSED(21, CAN_PrtRegulationOn, p, 0u, some);
  EXPECT_NULLS_REFUSED(21, CAN_PrtRegulationOff, p, some);
  EXPECT_NULLS_REFUSED(21, CAN_PrtPortGetState, p, &r.state);
  EXPECT_NULLS_REFUSED(21, CAN_PrtSetSndCycl, p, some, 0u, d);
  EXPECT_NULLS_REFUSED(21, CAN_PrtActSndCycl, p, 0u, d);
  EXPECT_NULLS_REFUSED(21, CAN_PrtUpdSndCycl, p, some, d);
  EXPECT_NULLS_REFUSED(21, CAN_PrtDActSndCycl, p, 0u, d);
  EXPECT_NULLS_REFUSED(21, CAN_PrtDelSndCycl, p, 0u, d);
  EXPECT_NULLS_REFUSED(21, CAN_PrtCtrlReinit, p, some);
  EXPECT_NULLS_REFUSED(21, CAN_PrtSendTrame, p, &frame, d);
  EXPECT_NULLS_REFUSED_UNARMED(21, CAN_PrtFree, p);
  EXPECT_NULLS_REFUSED_UNARMED(21, CAN_PrtEndFifo, p);
  EXPECT_NULLS_REFUSED_UNARMED(21, CAN_PrtRxMsg, p, &prtEvent, &r.pending, 0u);
  EXPECT_NULLS_REFUSED(4, CAN_ChnEnumerate, p, &list);
  EXPECT_NULLS_REFUSED(4, CAN_ChnCreate, p, 0u, 0u, &r.handle);
  EXPECT_NULLS_REFUSED(4, CAN_ChnFree, channel);
  EXPECT_NULLS_REFUSED(4, CAN_ChnConfig, channel, &chnConfig);
  EXPECT_NULLS_REFUSED(4, CAN_ChnOpenSession, channel);
  EXPECT_NULLS_REFUSED(4, CAN_ChnCloseSession, channel);
  EXPECT_NULLS_REFUSED(4, CAN_ChnSendDiag, channel, &request);
  EXPECT_NULLS_REFUSED_UNARMED(4, CAN_ChnEndFifo, channel);
  EXPECT_NULLS_REFUSED_UNARMED(4, CAN_ChnRxMsg, channel, &chnEvent, &r.pending, 0u);
  // The checks that are not about pointers come after them, still before
  // the injection step.
  setNextCANStatus("CAN_ChnSendDiag", 0, 0);
  EXPECT_EQ(CAN_ChnSendDiag(channel, &request), E_INVALID) << "request data null";
  const std::pair<const char *, CAN_STATUS> zeroTimeouts[] = {
      {"driver", CAN_DrvRxMsg(&r.driverEvent, &r.pending, 0)},
      {"device", CAN_DevRxMsg(device, &devEvent, &r.pending, 0)},
      {"port", CAN_PrtRxMsg(port, &prtEvent, &r.pending, 0)},
      {"channel", CAN_ChnRxMsg(channel, &chnEvent, &r.pending, 0)}};
  for (const auto &[level, status] : zeroTimeouts)
    EXPECT_EQ(status, E_INVALID) << level;
  for (auto release : {CAN_DrvFreeRxMsg(nullptr), CAN_DevFreeRxMsg(nullptr),
                       CAN_PrtFreeRxMsg(nullptr), CAN_ChnFreeRxMsg(nullptr)})
    EXPECT_EQ(release, E_SUCCESS);
  ACE_UINT32 status = 0;
  ACE_UINT8 armed = 0;
  EXPECT_TRUE(takeInjectedStatus("CAN_ChnSendDiag", status, armed));
}

// Each armed call must return the armed status, write the detail only where
// its family table says, and leave every record and every piece of state as
// it was. The calls are valid and would each change something if they ran.
TEST_F(ExportTable, AnArmedStatusAnswersAValidCallInsteadOfTheOperation) {
  const ScenarioFile answering = ScenarioFile().event("10", {"5001"}).event("3E", {"7E"});
  start(ecu("7E0", "7E8", answering, "engine") + "<DETBAUDRATE>E_SUCCESS</DETBAUDRATE>", 1);
  writeFile(dir.file("app.bin"), firmware::applicationImage("AB12", "A9.99", "01/01/26"));
  CAN_AssocEntry entry = {{}, 0x10, {}, 0x7E0, 0x7E8, 0};
  const CAN_AssocTable table = {1, &entry};
  AssocResult loaded;
  ASSERT_EQ(CAN_PrtLoadAssocTable(port, &table, &loaded), E_SUCCESS);
  CAN_CHN_HANDLE open = nullptr, spare = nullptr;
  ASSERT_EQ(CAN_ChnCreate(port, CHN_ONE_TO_ONE, 0, &open), E_SUCCESS);
  ASSERT_EQ(CAN_ChnCreate(port, CHN_ONE_TO_ONE, 0, &spare), E_SUCCESS);
  uint8_t start[] = {0x10, 0x03};
  CAN_ChnConfigRec chnConfig = {};
  chnConfig.ecuAddress = 0x10;
  chnConfig.startFrame = start;
  chnConfig.startFrameLength = 2;
  ASSERT_EQ(CAN_ChnConfig(open, &chnConfig), E_SUCCESS);
  ASSERT_EQ(CAN_ChnConfig(spare, &chnConfig), E_SUCCESS);
  ASSERT_EQ(CAN_ChnOpenSession(open), E_SUCCESS);
  chnConfig.echoWord = 7;
  CAN_BaudSearchPort search = {};
  search.candidateCount = 1;
  const CAN_AssocEntry other = {{}, 0x20, {}, 0x7E1, 0x7E9, 0};
  const CAN_AssocTable otherTable = {1, const_cast<CAN_AssocEntry *>(&other)};
  const CAN_FramePort frame = {0x7E0, 0, 0, 1, {0x10}, 0};
  uint8_t requestBytes[] = {0x3E};
  const CAN_DiagMsg request = {0, 1, requestBytes};
  const char frameBytes[4] = {};
  SimuDevice &box = *SimuDriver::instance()->device;

  // What the host could observe of the simulation between two calls.
  auto snapshot = [&] {
    std::ostringstream state;
    CAN_ParamPort params = {};
    simuPort().getCanParam(params, false);
    ACE_UINT8 address = 0;
    const bool mapped = simuPort().addressByIdRx(0x7E9, address);
    state << box.mode << box.reserved << simuPort().reserved << simuPort().mode << ' '
          << int(params.param1) << mapped << ' ' << box.events.pendingCount()
          << simuPort().events.pendingCount() << ' '
          << static_cast<SimuChannel *>(open)->events.pendingCount() << ' '
          << SimuDriver::instance()->events.pendingCount();
    CAN_EnumList channels = {};
    CAN_ChnEnumerate(port, &channels);
    for (uint32_t i = 0; i < channels.count; ++i) {
      const auto &info = static_cast<CAN_ChnInfo *>(channels.records)[i];
      state << ' ' << info.echoWord << info.sessionOpen;
    }
    free(channels.records);
    return state.str();
  };

  Records r;
  CAN_EnumList list = {};
  CAN_ParamPort params = {};
  params.param1 = 9;
  // name, call, where the detail goes (null: nowhere), the mode in which
  // the call would do its work.
  const struct {
    const char *name;
    std::function<CAN_STATUS()> call;
    uint8_t *detailAt;
    uint32_t mode = 1;
  } armed[] = {
      {CALL(CAN_DevEnumerate, &list), nullptr},
      {CALL(CAN_DevReservation, kSerial, &r.handle), nullptr},
      {CALL(CAN_DevSetMode, device, 2, &r.detail), &r.detail},
      {CALL(CAN_DevGetMode, device, &r.mode), nullptr},
      {CALL(CAN_DevGetConfig, device, &r.config), nullptr},
      {CALL(CAN_DevGetTension, device, &r.tension), nullptr},
      {CALL(CAN_DevGetVersion, device, &r.version), nullptr},
      {CALL(CAN_DevSetSleep, device), nullptr},
      {CALL(CAN_DevRunTest, device, 0, &r.test), &r.test.resultByte},
      {CALL(CAN_DevSndGenericFrame, device, frameBytes), nullptr},
      {CALL(CAN_DevAutoConfig, device), nullptr},
      {CALL(CAN_DevAutoConfigRaz, device), nullptr},
      {CALL(CAN_DevHC16Reset, device), nullptr},
      {CALL(CAN_DevBoardTeleFirm, device, dir.file("app.bin").c_str(), &r.download),
       &r.download.errorCode, 0},
      {CALL(CAN_PrtEnumerate, device, &list), nullptr},
      {CALL(CAN_PrtReservation, device, 96, &r.handle), nullptr},
      {CALL(CAN_PrtGetMesPhys, port, &r.measures), nullptr, 3},
      {CALL(CAN_PrtSetVoie, port, 1, &r.detail), &r.detail},
      {CALL(CAN_PrtSetCanParam, port, &params), &params.resultByte},
      {CALL(CAN_PrtGetCanParam, port, &r.params), &r.params.resultByte},
      {CALL(CAN_PrtDetBaudRate, port, &search, &r.found), &r.found.resultByte},
      {CALL(CAN_PrtSetHardFilt, port, frameBytes, &r.detail), &r.detail},
      {CALL(CAN_PrtSetSoftFilt, port, frameBytes, &r.detail), &r.detail},
      {CALL(CAN_PrtLoadAssocTable, port, &otherTable, &r.assoc), &r.assoc.errorCode},
      {CALL(CAN_PrtSetParamFlux, port, frameBytes, 0), nullptr},
      {CALL(CAN_PrtRegulationOn, port, 0, frameBytes), nullptr},
      {CALL(CAN_PrtRegulationOff, port, frameBytes), nullptr},
      {CALL(CAN_PrtPortGetState, port, &r.state), nullptr},
      {CALL(CAN_PrtSetSndCycl, port, frameBytes, 0, &r.detail), &r.detail},
      {CALL(CAN_PrtActSndCycl, port, 0, &r.detail), &r.detail},
      {CALL(CAN_PrtUpdSndCycl, port, frameBytes, &r.detail), &r.detail},
      {CALL(CAN_PrtDActSndCycl, port, 0, &r.detail), &r.detail},
      {CALL(CAN_PrtDelSndCycl, port, 0, &r.detail), &r.detail},
      {CALL(CAN_PrtCtrlReinit, port, frameBytes), nullptr},
      {CALL(CAN_PrtSendTrame, port, &frame, &r.detail), &r.detail, 2},
      {CALL(CAN_ChnEnumerate, port, &list), nullptr},
      {CALL(CAN_ChnCreate, port, CHN_ONE_TO_ONE, 0, &r.handle), nullptr},
      {CALL(CAN_ChnConfig, open, &chnConfig), nullptr},
      {CALL(CAN_ChnOpenSession, spare), nullptr},
      {CALL(CAN_ChnCloseSession, open), nullptr},
      {CALL(CAN_ChnSendDiag, open, &request), nullptr},
  };
  for (const auto &row : armed) {
    box.mode = row.mode;
    simuPort().mode = row.mode;
    std::memset(&r, kFill, sizeof r);
    list = {};
    params.resultByte = kFill;
    const std::string before = snapshot();
    setNextCANStatus(row.name, 0xABCD, 0x5A);
    EXPECT_EQ(row.call(), 0xABCDu) << row.name;
    if (row.detailAt != nullptr) {
      EXPECT_EQ(*row.detailAt, 0x5A) << row.name;
      *row.detailAt = kFill;
    }
    Records untouched;
    std::memset(&untouched, kFill, sizeof untouched);
    EXPECT_EQ(std::memcmp(&r, &untouched, sizeof r), 0) << row.name << " wrote a record";
    EXPECT_TRUE(list.count == 0 && list.records == nullptr) << row.name << " filled the list";
    EXPECT_EQ(params.resultByte, kFill) << row.name;
    EXPECT_EQ(snapshot(), before) << row.name << " ran";
  }
  // CAN_ChnFree runs first and asks the table afterwards.
  ASSERT_EQ(CAN_ChnCloseSession(open), E_SUCCESS);
  setNextCANStatus("CAN_ChnFree", 0xABCD, 0x5A);
  EXPECT_EQ(CAN_ChnFree(open), 0xABCDu);
  CAN_EnumList channels = {};
  ASSERT_EQ(CAN_ChnEnumerate(port, &channels), E_SUCCESS);
  EXPECT_EQ(channels.count, 1u) << "freed all the same";
  free(channels.records);
}
