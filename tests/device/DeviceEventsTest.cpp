// The device event queue: events injected by a test harness with
// their payloads, and the release of every payload, whether the host frees the
// record or the device is destroyed with events still queued (a payload left
// behind is a leak, one freed twice a fault, under the sanitizer build).
#include "DeviceFixture.h"

#include <cstdint>
#include <iterator>
#include <map>
#include <vector>

using namespace device_test;
using DeviceEvents = DeviceTest;

namespace {

void inject(uint32_t type, uint32_t value) { setNextCANStatus("CAN_DevRxMsg", type, value); }
const uint32_t kEveryType[] = {101, 102, 200, 201, 202, 203, 204, 205, 1000, 0};

template <class Record> const Record &payload(const DeviceEvent &event) {
  return *static_cast<const Record *>(event->data);
}

} // namespace

TEST_F(DeviceEvents, EachInjectedTypeCarriesItsPayloadAndOtherTypesQueueNothing) {
  CAN_DEV_HANDLE device =
      reservedDevice("<VOLTAGES VBatt='12.5' APCKelmora='5.5' APCDravik='3.25'/>");
  ASSERT_EQ(CAN_DevSetMode(device, 3, &detail), E_SUCCESS);
  // Unknown types queue nothing: only the known ones come back below.
  for (uint32_t type : {1u, 150u, 206u, 0xFFFFFFFFu})
    inject(type, 1);
  uint32_t pending = 0;
  for (uint32_t type : kEveryType)
    inject(type, 0x1AB);
  // The known types come back in injection order, each record zeroed but for
  // its type and payload; their payloads are checked by type below.
  std::vector<uint32_t> types;
  std::map<uint32_t, DeviceEvent> events;
  do {
    DeviceEvent event = nextEvent(device, &pending);
    EXPECT_EQ(event->reserved1 | event->reserved2 | event->reserved3 | event->reserved4, 0u);
    types.push_back(event->type);
    events[event->type] = std::move(event);
  } while (pending != 0);
  ASSERT_EQ(types, std::vector<uint32_t>(std::begin(kEveryType), std::end(kEveryType)));
  for (uint32_t type : {DEV_TYPE_DISCONNECTED, DEV_TYPE_CONNECTED}) {
    EXPECT_STREQ(payload<CAN_EnumDev>(events[type]).name, kSerial);
    EXPECT_EQ(payload<CAN_EnumDev>(events[type]).reserved, 1);
  }
  const auto *pair = static_cast<const unsigned char *>(events[DEV_TYPE_STATUS_PAIR]->data);
  EXPECT_EQ(pair[0], 0xAB) << "the detail's low byte";
  EXPECT_EQ(pair[1], 0);
  const auto &configRecord = payload<CAN_ConfigDev>(events[DEV_TYPE_CONFIG]);
  EXPECT_EQ(configRecord.padding, 0) << "allocated by the library: zeroed";
  EXPECT_EQ(configRecord.count, 1u);
  const auto &volts = payload<CAN_TensionDev>(events[DEV_TYPE_TENSION]);
  EXPECT_EQ(std::vector<float>({volts.batteryVoltage, volts.apcKelmora, volts.apcDravik}),
            std::vector<float>({12.5f, 5.5f, 3.25f}));
  EXPECT_EQ(payload<unsigned char>(events[DEV_TYPE_STATUS]), 0xAB);
  EXPECT_EQ(payload<CAN_ModeDev>(events[DEV_TYPE_MODE]).mode, 3u);
  EXPECT_EQ(payload<unsigned char>(events[DEV_TYPE_RESET]), 0xAB);
  EXPECT_EQ(reinterpret_cast<std::uintptr_t>(events[DEV_TYPE_PROGRESS]->data), 0xABu)
      << "the value itself";
  EXPECT_EQ(events[DEV_TYPE_ENDFIFO]->data, nullptr);

  // Records nobody reads are released with the device.
  for (uint32_t type : kEveryType)
    inject(type, 1);
  EXPECT_EQ(simuDevice().events.pendingCount(), 10u);
}
