#include "api/InjectionTable.h"
#include "cansimu/cansimu.h"
#include "core/SimuDriver.h"
#include "device/SimuDevice.h"
#include "support/EventRecords.h"
#include "support/TempDir.h"
#include "support/XmlFiles.h"

#include <gtest/gtest.h>

#include <chrono>
#include <thread>

namespace {
bool taken(const char *name, ACE_UINT32 &status, ACE_UINT8 &detail) {
  return takeInjectedStatus(name, status, detail);
}
} // namespace

TEST(Injection, TheFirstArmingIsKeptWithTheLowByteOfItsDetailUntilTaken) {
  setNextCANStatus("CAN_DevSetMode", 5, 0x1203);
  setNextCANStatus("CAN_DevSetMode", 9, 2);
  ACE_UINT32 status = 0;
  ACE_UINT8 detail = 0;
  ASSERT_TRUE(taken("CAN_DevSetMode", status, detail));
  EXPECT_EQ(status, 5u);
  EXPECT_EQ(detail, 3);
  status = 77;
  EXPECT_FALSE(taken("CAN_DevSetMode", status, detail));
  EXPECT_EQ(status, 77u) << "a miss writes nothing";
}

TEST(Injection, NamesAreComparedExactlyAndNullIsTheEmptyName) {
  setNextCANStatus("can_devsetmode", 5, 0);
  setNextCANStatus("CAN_DevSetMode ", 6, 0);
  setNextCANStatus(nullptr, 4, 0);
  ACE_UINT32 status = 0;
  ACE_UINT8 detail = 0;
  EXPECT_FALSE(taken("CAN_DevSetMode", status, detail));
  EXPECT_TRUE(taken("can_devsetmode", status, detail));
  EXPECT_TRUE(taken("", status, detail));
}

TEST(Injection, ReceiveNamesNeverBecomeTableEntries) {
  for (const char *name : {"CAN_DrvRxMsg", "CAN_DevRxMsg", "CAN_PrtRxMsg"}) {
    setNextCANStatus(name, 150, 0);
    ACE_UINT32 status = 0;
    ACE_UINT8 detail = 0;
    EXPECT_FALSE(taken(name, status, detail)) << name;
  }
  CAN_DrvEnd();
}

TEST(Injection, DriverEvent100CarriesADescriptionOfTheDevice) {
  SimuDriver::instance()->device->serialNumber = L"SIMU-0042";
  SimuDriver::instance()->device->reserved = true;
  setNextCANStatus("CAN_DrvRxMsg", 100, 0x1FF);
  CAN_EventDrv *event = nullptr;
  uint32_t pending = 9;
  ASSERT_EQ(CAN_DrvRxMsg(&event, &pending, 1000), E_SUCCESS);
  ASSERT_NE(event, nullptr);
  EXPECT_EQ(event->type, 100u);
  EXPECT_EQ(event->detail, 255u);
  EXPECT_EQ(event->reserved1 | event->reserved2 | event->reserved3, 0u);
  EXPECT_EQ(pending, 0u);
  ASSERT_NE(event->data, nullptr);
  const auto *device = static_cast<const CAN_EnumDev *>(event->data);
  EXPECT_STREQ(device->name, "SIMU-0042");
  EXPECT_EQ(device->fixedOne, 1u);
  EXPECT_EQ(device->reserved, 1);
  EXPECT_EQ(device->disconnected, 0u);
  // Under the leak checker this proves the payload goes with the record.
  EXPECT_EQ(CAN_DrvFreeRxMsg(event), E_SUCCESS);
  CAN_DrvEnd();
}

TEST(Injection, DriverEvent101IsQueuedAndOtherTypesAreNot) {
  setNextCANStatus("CAN_DrvRxMsg", 102, 0);
  setNextCANStatus("CAN_DrvRxMsg", 1, 0);
  setNextCANStatus("CAN_DrvRxMsg", 0xFFFFFF9Cu, 0); // -100 as a signed type
  setNextCANStatus("CAN_DrvRxMsg", 101, 3);
  CAN_EventDrv *event = nullptr;
  uint32_t pending = 0;
  ASSERT_EQ(CAN_DrvRxMsg(&event, &pending, 1000), E_SUCCESS);
  EXPECT_EQ(event->type, 101u);
  EXPECT_EQ(event->detail, 3u);
  EXPECT_EQ(pending, 0u);
  CAN_DrvFreeRxMsg(event);
  CAN_DrvEnd();
}

TEST(Injection, EventType0WakesABlockedReaderWithTheEndMarker) {
  CAN_EventDrv *event = nullptr;
  uint32_t pending = 0;
  SimuDriver::instance();
  std::thread harness([] {
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
    setNextCANStatus("CAN_DrvRxMsg", 0, 0);
  });
  const CAN_STATUS status = CAN_DrvRxMsg(&event, &pending, 60000);
  harness.join();
  ASSERT_EQ(status, E_SUCCESS);
  EXPECT_TRUE(isEndMarker(*event));
  CAN_DrvFreeRxMsg(event);
  CAN_DrvEnd();
}

TEST(Injection, AnInjectionBeforeInitCreatesADriverThatIgnoresTheLaterPath) {
  TempDir dir;
  const std::string path = ConfigurationFile().consoleMode().writeTo(dir.file("config.xml"));
  setNextCANStatus("CAN_DrvRxMsg", 0, 0);
  ASSERT_NE(SimuDriver::existing(), nullptr);
  EXPECT_EQ(CAN_DrvInit(path.c_str()), E_SUCCESS);
  EXPECT_FALSE(SimuDriver::existing()->consoleMode) << "the driver has an empty path";
  EXPECT_EQ(SimuDriver::existing()->path().length(), 0u);
  CAN_DrvEnd();
  // A driver made after the end reads the path it is given.
  EXPECT_EQ(CAN_DrvInit(path.c_str()), E_SUCCESS);
  EXPECT_TRUE(SimuDriver::existing()->consoleMode);
  CAN_DrvEnd();
}

TEST(Injection, RecordsStillQueuedAtTheEndAreReleasedWithTheirPayloads) {
  // Checked by the leak checker: two described devices never read.
  setNextCANStatus("CAN_DrvRxMsg", 100, 0);
  setNextCANStatus("CAN_DrvRxMsg", 101, 0);
  EXPECT_EQ(SimuDriver::instance()->events.pendingCount(), 2u);
  CAN_DrvEnd();
  EXPECT_EQ(SimuDriver::existing(), nullptr);
}
