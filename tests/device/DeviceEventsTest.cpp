// The device event queue: timed reads, events injected by a test harness with
// their payloads, and the release of every payload, whether the host frees the
// record or the device is destroyed with events still queued (a payload left
// behind is a leak under the sanitizer build).
#include "DeviceFixture.h"

#include <chrono>
#include <cstdint>

using namespace device_test;
using DeviceEvents = DeviceTest;

namespace {

void inject(uint32_t type, uint32_t value) { setNextCANStatus("CAN_DevRxMsg", type, value); }
const uint32_t kEveryType[] = {101, 102, 200, 201, 202, 203, 204, 205, 1000, 0};

template <class Record> const Record &payload(const DeviceEvent &event) {
  return *static_cast<const Record *>(event->data);
}

} // namespace

TEST_F(DeviceEvents, AnEmptyQueueTimesOutWithNoEventAndUnknownTypesQueueNothing) {
  init(namedDevice());
  CAN_DEV_HANDLE device = reserve();
  for (uint32_t type : {1u, 100u, 103u, 150u, 199u, 206u, 999u, 1001u, 0xFFFFFFFFu})
    inject(type, 1);
  CAN_EventDev *event = reinterpret_cast<CAN_EventDev *>(&event);
  uint32_t pending = 7;
  const auto start = std::chrono::steady_clock::now();
  EXPECT_EQ(CAN_DevRxMsg(device, &event, &pending, 100), E_NO_EVENT);
  EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(100));
  EXPECT_EQ(event, nullptr);
  EXPECT_EQ(pending, 0u);
}

TEST_F(DeviceEvents, EachInjectedTypeCarriesItsPayload) {
  init(namedDevice("<VOLTAGES VBatt='12.5' APCKelmora='5.5' APCDravik='3.25'/>"
                   "<CAN_FIRMWAREVERSION BootVersion='B1.20'/>"));
  CAN_DEV_HANDLE device = reserve();
  uint8_t detail = 0;
  ASSERT_EQ(CAN_DevSetMode(device, 3, &detail), E_SUCCESS);
  for (uint32_t type : kEveryType)
    inject(type, 0x1AB);

  uint32_t pending = 0;
  for (uint32_t type : {101u, 102u}) {
    DeviceEvent event = nextEvent(device, &pending);
    ASSERT_EQ(event->type, type);
    EXPECT_STREQ(payload<CAN_EnumDev>(event).name, kSerial);
    EXPECT_EQ(payload<CAN_EnumDev>(event).reserved, 1);
  }
  EXPECT_EQ(pending, 8u);
  DeviceEvent event = nextEvent(device);
  ASSERT_EQ(event->type, DEV_TYPE_STATUS_PAIR);
  EXPECT_EQ(static_cast<unsigned char *>(event->data)[0], 0xAB) << "the detail's low byte";
  EXPECT_EQ(static_cast<unsigned char *>(event->data)[1], 0);
  event = nextEvent(device);
  ASSERT_EQ(event->type, DEV_TYPE_CONFIG);
  const auto &config = payload<CAN_ConfigDev>(event);
  EXPECT_STREQ(config.bootVersion, "B1.20");
  EXPECT_EQ(config.padding, 0) << "allocated by the library: zeroed";
  ASSERT_EQ(config.count, 1u);
  EXPECT_EQ(config.ports[0].portNumber, 96);
  event = nextEvent(device);
  ASSERT_EQ(event->type, DEV_TYPE_TENSION);
  EXPECT_FLOAT_EQ(payload<CAN_TensionDev>(event).batteryVoltage, 12.5f);
  EXPECT_FLOAT_EQ(payload<CAN_TensionDev>(event).apcKelmora, 5.5f);
  EXPECT_FLOAT_EQ(payload<CAN_TensionDev>(event).apcDravik, 3.25f);
  event = nextEvent(device);
  ASSERT_EQ(event->type, DEV_TYPE_STATUS);
  EXPECT_EQ(payload<unsigned char>(event), 0xAB);
  event = nextEvent(device);
  ASSERT_EQ(event->type, DEV_TYPE_MODE);
  EXPECT_EQ(payload<CAN_ModeDev>(event).mode, 3u);
  event = nextEvent(device);
  ASSERT_EQ(event->type, DEV_TYPE_RESET);
  EXPECT_EQ(payload<unsigned char>(event), 0xAB);
  event = nextEvent(device);
  ASSERT_EQ(event->type, DEV_TYPE_PROGRESS);
  EXPECT_EQ(reinterpret_cast<std::uintptr_t>(event->data), 0xABu) << "the value itself";
  event = nextEvent(device, &pending);
  EXPECT_EQ(event->type, DEV_TYPE_ENDFIFO);
  EXPECT_EQ(event->data, nullptr);
  EXPECT_EQ(event->reserved1 | event->reserved2 | event->reserved3 | event->reserved4, 0u);
  EXPECT_EQ(pending, 0u);
}

TEST_F(DeviceEvents, InjectedEventsChangeNoStateAndTheEndMarkerNeedsAConnection) {
  init(namedDevice());
  CAN_DEV_HANDLE device = reserve();
  inject(DEV_TYPE_DISCONNECTED, 0);
  EXPECT_EQ(nextEvent(device)->type, DEV_TYPE_DISCONNECTED);
  EXPECT_TRUE(simuDevice().connected);
  edit(namedDevice(kUnplugged));
  EXPECT_EQ(nextEvent(device)->type, DEV_TYPE_DISCONNECTED);
  inject(0, 0);
  inject(DEV_TYPE_CONNECTED, 0);
  DeviceEvent event = nextEvent(device);
  ASSERT_EQ(event->type, DEV_TYPE_CONNECTED) << "the end marker was not queued";
  EXPECT_EQ(payload<CAN_EnumDev>(event).disconnected, 1u);
  EXPECT_FALSE(simuDevice().connected);
}

TEST_F(DeviceEvents, PayloadsAreReleasedByTheHostOrWithTheDevice) {
  init(namedDevice());
  CAN_DEV_HANDLE device = reserve();
  // A config record without its port array, or with a count of 0, releases
  // only the record.
  inject(DEV_TYPE_CONFIG, 0);
  inject(DEV_TYPE_CONFIG, 0);
  DeviceEvent event = nextEvent(device);
  auto *config = static_cast<CAN_ConfigDev *>(event->data);
  free(config->ports);
  config->ports = nullptr;
  event = nextEvent(device);
  config = static_cast<CAN_ConfigDev *>(event->data);
  free(config->ports);
  config->count = 0;
  event.reset();
  // Events still queued are released with the device.
  for (uint32_t type : kEveryType)
    inject(type, 1);
  EXPECT_EQ(simuDevice().events.pendingCount(), 10u);
  CAN_DrvEnd();
  EXPECT_EQ(SimuDriver::existing(), nullptr);
}
