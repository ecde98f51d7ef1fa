#include "api/InjectionTable.h"
#include "cansimu/cansimu.h"
#include "core/SimuDriver.h"
#include "device/SimuDevice.h"
#include "support/EventRecords.h"
#include "support/TempDir.h"
#include "support/XmlFiles.h"

#include <gtest/gtest.h>

TEST(Injection, TheFirstArmingIsKeptUntilTakenAndNamesAreComparedExactly) {
  setNextCANStatus("CAN_DevSetMode", 5, 0x1203);
  setNextCANStatus("CAN_DevSetMode", 9, 2);
  setNextCANStatus("can_devsetmode", 6, 0);
  setNextCANStatus("CAN_DevSetMode ", 7, 0);
  setNextCANStatus(nullptr, 4, 0);
  ACE_UINT32 status = 0;
  ACE_UINT8 detail = 0;
  ASSERT_TRUE(takeInjectedStatus("CAN_DevSetMode", status, detail));
  EXPECT_EQ(status, 5u);
  EXPECT_EQ(detail, 3) << "the low byte";
  status = 77;
  EXPECT_FALSE(takeInjectedStatus("CAN_DevSetMode", status, detail));
  EXPECT_EQ(status, 77u) << "a miss writes nothing; other spellings are other names";
  EXPECT_TRUE(takeInjectedStatus("can_devsetmode", status, detail));
  EXPECT_TRUE(takeInjectedStatus("", status, detail)) << "null is the empty name";
}

// The three receive names queue events instead (or nothing, for the port).
TEST(Injection, ReceiveNamesAreNeverArmed) {
  for (const char *name : {"CAN_DrvRxMsg", "CAN_DevRxMsg", "CAN_PrtRxMsg"}) {
    setNextCANStatus(name, 150, 0);
    ACE_UINT32 status = 0;
    ACE_UINT8 detail = 0;
    EXPECT_FALSE(takeInjectedStatus(name, status, detail)) << name;
  }
  CAN_DrvEnd();
}

// Types 100 and 101 queue a record that describes the device, 0 the end
// marker, other types nothing; records come oldest first with the count of
// those left behind. One never read is released with its payload at the end
// (checked by the leak checker).
TEST(Injection, DriverEventsComeOldestFirstAndDescribeTheDeviceFor100And101) {
  SimuDriver::instance()->device->serialNumber = L"SIMU-0042";
  SimuDriver::instance()->device->reserved = true;
  for (ACE_UINT32 type : {102u, 1u, 0xFFFFFF9Cu /* -100 */, 100u, 101u, 0u, 100u})
    setNextCANStatus("CAN_DrvRxMsg", type, 0x100 | type);
  uint32_t left = 3;
  for (const ACE_UINT32 type : {100u, 101u, 0u}) {
    CAN_EventDrv *event = nullptr;
    uint32_t pending = 99;
    ASSERT_EQ(CAN_DrvRxMsg(&event, &pending, 1000), E_SUCCESS);
    EXPECT_EQ(pending, left--);
    EXPECT_EQ(event->type, type);
    EXPECT_EQ(event->detail, type) << "the low byte of the detail";
    const auto *device = static_cast<const CAN_EnumDev *>(event->data);
    if (type == 0) {
      EXPECT_TRUE(isEndMarker(*event));
    } else {
      EXPECT_EQ(event->reserved1 | event->reserved2 | event->reserved3, 0u);
      ASSERT_NE(device, nullptr);
      EXPECT_STREQ(device->name, "SIMU-0042");
      EXPECT_EQ(device->fixedOne, 1u);
      EXPECT_EQ(device->reserved, 1);
      EXPECT_EQ(device->disconnected, 0u);
    }
    EXPECT_EQ(CAN_DrvFreeRxMsg(event), E_SUCCESS);
  }
  CAN_DrvEnd();
}

TEST(Injection, AnInjectionBeforeInitCreatesADriverThatIgnoresTheLaterPath) {
  TempDir dir;
  const std::string path = ConfigurationFile().consoleMode().writeTo(dir.file("config.xml"));
  setNextCANStatus("CAN_DrvRxMsg", 0, 0);
  ASSERT_NE(SimuDriver::existing(), nullptr);
  EXPECT_EQ(CAN_DrvInit(path.c_str()), E_SUCCESS);
  EXPECT_FALSE(SimuDriver::existing()->consoleMode) << "the driver has an empty path";
  CAN_DrvEnd();
  // A driver made after the end reads the path it is given.
  EXPECT_EQ(CAN_DrvInit(path.c_str()), E_SUCCESS);
  EXPECT_TRUE(SimuDriver::existing()->consoleMode);
  CAN_DrvEnd();
}
