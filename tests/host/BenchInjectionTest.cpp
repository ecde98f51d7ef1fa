// INJECT elements of the configuration: each read of the file applies them
// as the same setNextCANStatus calls would, for a host that never calls it.
#include "support/BusFixture.h"
#include "support/EventRecords.h"

#include <vector>

using namespace bus_test;

namespace {

std::string inject(const std::string &exportName, const std::string &status,
                   const std::string &detail = "") {
  return "<INJECT export='" + exportName + "' status='" + status + "'" +
         (detail.empty() ? "" : " detail='" + detail + "'") + "/>";
}

class BenchInjection : public BusTest {
protected:
  CAN_STATUS getVersion() {
    CAN_VersionDev version = {};
    return CAN_DevGetVersion(device, &version);
  }
  CAN_STATUS getMode() {
    CAN_ModeDev mode = {};
    return CAN_DevGetMode(device, &mode);
  }
};

} // namespace

// Arming at load: elements nested anywhere, statuses and details by name or
// number, in document order; the first arming of a name is kept, also one
// the harness made before the file was read.
TEST_F(BenchInjection, EachElementArmsItsExportOnceAtLoadAndTheFirstArmingIsKept) {
  setNextCANStatus("CAN_DevGetMode", 11, 0);
  start("<FAULTS><A>" + inject("CAN_DevGetVersion", "E_DISCONNECTED") + "</A>" +
        inject("CAN_DevGetVersion", "E_BUSOFF") + inject("CAN_DevGetMode", "E_INVALID") +
        inject("CAN_PrtActSndCycl", " 0x0 ", "E_BUSOFF") +
        inject("CAN_PrtGetCanParam", "300", "0x1FF") + "</FAULTS>");
  EXPECT_EQ(getVersion(), E_DISCONNECTED);
  EXPECT_EQ(getVersion(), E_SUCCESS) << "the second element was dropped";
  EXPECT_EQ(getMode(), 11u) << "the harness armed it first";
  EXPECT_EQ(getMode(), E_SUCCESS);
  detail = 0;
  EXPECT_EQ(CAN_PrtActSndCycl(port, 1, &detail), E_SUCCESS);
  EXPECT_EQ(detail, E_BUSOFF) << "an armed status 0 answers too, with its detail";
  CAN_ParamPort params = {};
  EXPECT_EQ(CAN_PrtGetCanParam(port, &params), 300u);
  EXPECT_EQ(params.resultByte, 0xFF) << "the detail's low byte";
  EXPECT_EQ(log.count("INJECT <CAN_DevGetVersion>: status 7, detail 0 armed"), 1u);
  EXPECT_EQ(log.count("INJECT <CAN_DevGetVersion>: status 27, detail 0 dropped: an earlier "
                      "arming still waits"),
            1u);
  EXPECT_EQ(log.count("INJECT <CAN_PrtGetCanParam>: status 300, detail 511 armed"), 1u);
}

// Re-arming at re-read: only an edit re-applies the elements, and an edit
// while the arming still waits does not stack a second one.
TEST_F(BenchInjection, EveryReReadAfterAnEditArmsAgain) {
  const std::string fault = inject("CAN_DevGetVersion", "7");
  start(fault);
  EXPECT_EQ(getVersion(), E_DISCONNECTED);
  edit(fault);
  EXPECT_EQ(getVersion(), E_DISCONNECTED);
  pollDriver();
  EXPECT_EQ(getVersion(), E_SUCCESS) << "a poll without an edit arms nothing";
  edit(fault);
  edit(fault);
  EXPECT_EQ(getVersion(), E_DISCONNECTED);
  EXPECT_EQ(getVersion(), E_SUCCESS);
  edit("");
  EXPECT_EQ(getVersion(), E_SUCCESS) << "a file without INJECT arms nothing";
}

// The receive names queue an event at their level, with the type by the
// level's name or by number. At a re-read the driver's event is there for
// the very poll that read the file.
TEST_F(BenchInjection, ReceiveNamesQueueEventsOnTheDriverDeviceAndPortQueues) {
  start(inject("CAN_DrvRxMsg", "DRV_TYPE_DEVICE_100", "0x1FF") +
        inject("CAN_DevRxMsg", "DEV_TYPE_STATUS", "9") + inject("CAN_PrtRxMsg", "PRT_TYPE_STATE") +
        inject("CAN_PrtRxMsg", "400", "E_INVALID"));
  // The driver's poll first re-reads an edited file.
  auto driverEvent = queues::next<CAN_EventDrv>(nullptr);
  EXPECT_EQ(driverEvent->type, DRV_TYPE_DEVICE_100);
  EXPECT_EQ(driverEvent->detail, 0xFFu);
  ASSERT_NE(driverEvent->data, nullptr);
  EXPECT_STREQ(static_cast<CAN_EnumDev *>(driverEvent->data)->name, kSerial);
  const auto deviceEvent = queues::next<CAN_EventDev>(device);
  EXPECT_EQ(deviceEvent->type, DEV_TYPE_STATUS);
  EXPECT_EQ(*static_cast<unsigned char *>(deviceEvent->data), 9);
  EXPECT_EQ(nextEvent()->type, PRT_TYPE_STATE);
  EXPECT_EQ(nextEvent()->type, 400u);

  save(inject("CAN_DrvRxMsg", "0"));
  EXPECT_TRUE(isEndMarker(*queues::next<CAN_EventDrv>(nullptr)));
  EXPECT_EQ(log.count("INJECT <CAN_PrtRxMsg>: event type 400, detail 4 injected"), 1u);
}

// Every element that cannot be applied is logged by its export name (or its
// status, without one) and skipped; the elements after it still apply.
TEST_F(BenchInjection, ElementsWithMissingOrUnknownValuesAreSkippedWithALineNamingThem) {
  const struct {
    std::string element, line;
  } cases[] = {
      {"<INJECT status='E_INVALID'/>",
       "INJECT without an export attribute (status <E_INVALID>): skipped"},
      {inject("CAN_DevGetVersoin", "7"),
       "INJECT <CAN_DevGetVersoin>: no export of that name takes an injection: skipped"},
      {inject("can_devgetversion", "7"), "INJECT <can_devgetversion>: no export of that name"},
      {inject("CAN_DrvInit", "7"), "INJECT <CAN_DrvInit>: no export of that name"},
      {"<INJECT export='CAN_DevGetMode'/>",
       "INJECT <CAN_DevGetMode>: no status attribute: skipped"},
      {inject("CAN_DevGetMode", "E_BOGUS"),
       "INJECT <CAN_DevGetMode>: status <E_BOGUS> is neither a number nor a status name: skipped"},
      {inject("CAN_DevGetMode", "DEV_TYPE_RESET"),
       "INJECT <CAN_DevGetMode>: status <DEV_TYPE_RESET> is neither"},
      {inject("CAN_DevGetMode", "-1"), "INJECT <CAN_DevGetMode>: status <-1> is neither"},
      {inject("CAN_DevGetMode", "4294967296"),
       "INJECT <CAN_DevGetMode>: status <4294967296> is neither"},
      {inject("CAN_DevGetMode", "12 13"), "INJECT <CAN_DevGetMode>: status <12 13> is neither"},
      {inject("CAN_DrvRxMsg", "DEV_TYPE_RESET"),
       "INJECT <CAN_DrvRxMsg>: status <DEV_TYPE_RESET> is neither a number nor a DRV_TYPE_ event "
       "type name: skipped"},
      {inject("CAN_PrtRxMsg", "E_INVALID"),
       "INJECT <CAN_PrtRxMsg>: status <E_INVALID> is neither a number nor a PRT_TYPE_"},
      {inject("CAN_DevGetMode", "E_INVALID", "some"),
       "INJECT <CAN_DevGetMode>: detail <some> is neither a number nor a status name: skipped"},
  };
  std::string sections;
  for (const auto &item : cases)
    sections += item.element;
  start(sections + inject("CAN_DevGetVersion", "E_NOT_FOUND"));
  for (const auto &item : cases)
    EXPECT_EQ(log.count(item.line), 1u) << item.element;
  EXPECT_EQ(log.count(": skipped"), std::size(cases));
  EXPECT_EQ(getMode(), E_SUCCESS) << "nothing was armed by a skipped element";
  EXPECT_EQ(getVersion(), E_NOT_FOUND);
  pollDriver();
}
