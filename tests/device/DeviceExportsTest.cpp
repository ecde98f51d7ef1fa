// The CAN_Dev* exports as a host calls them.
#include "DeviceFixture.h"
#include "api/InjectionTable.h"

#include <chrono>
#include <cstring>
#include <functional>
#include <string>
#include <vector>

using namespace device_test;
using DeviceExports = DeviceTest;

TEST_F(DeviceExports, EachNullPointerGets21AndLeavesTheArmedStatusForTheNextCall) {
  init(namedDevice());
  CAN_DEV_HANDLE device = reserve();
  CAN_DEV_HANDLE out = nullptr;
  uint8_t detail = 0;
  CAN_ModeDev mode;
  CAN_ConfigDev config;
  CAN_TensionDev tension;
  CAN_VersionDev version;
  CAN_TestDev test;
  DownloadResult result;
  const char frame[8] = {};
  const std::vector<std::pair<const char *, std::function<CAN_STATUS()>>> calls = {
      {"CAN_DevEnumerate", [&] { return CAN_DevEnumerate(nullptr); }},
      {"CAN_DevReservation", [&] { return CAN_DevReservation(nullptr, &out); }},
      {"CAN_DevReservation", [&] { return CAN_DevReservation(kSerial, nullptr); }},
      {"CAN_DevSetMode", [&] { return CAN_DevSetMode(nullptr, 1, &detail); }},
      {"CAN_DevSetMode", [&] { return CAN_DevSetMode(device, 1, nullptr); }},
      {"CAN_DevGetMode", [&] { return CAN_DevGetMode(nullptr, &mode); }},
      {"CAN_DevGetMode", [&] { return CAN_DevGetMode(device, nullptr); }},
      {"CAN_DevGetConfig", [&] { return CAN_DevGetConfig(nullptr, &config); }},
      {"CAN_DevGetConfig", [&] { return CAN_DevGetConfig(device, nullptr); }},
      {"CAN_DevGetTension", [&] { return CAN_DevGetTension(nullptr, &tension); }},
      {"CAN_DevGetTension", [&] { return CAN_DevGetTension(device, nullptr); }},
      {"CAN_DevGetVersion", [&] { return CAN_DevGetVersion(nullptr, &version); }},
      {"CAN_DevGetVersion", [&] { return CAN_DevGetVersion(device, nullptr); }},
      {"CAN_DevSetSleep", [&] { return CAN_DevSetSleep(nullptr); }},
      {"CAN_DevRunTest", [&] { return CAN_DevRunTest(nullptr, 0, &test); }},
      {"CAN_DevRunTest", [&] { return CAN_DevRunTest(nullptr, 0, nullptr); }},
      {"CAN_DevSndGenericFrame", [&] { return CAN_DevSndGenericFrame(nullptr, frame); }},
      {"CAN_DevSndGenericFrame", [&] { return CAN_DevSndGenericFrame(device, nullptr); }},
      {"CAN_DevAutoConfig", [&] { return CAN_DevAutoConfig(nullptr); }},
      {"CAN_DevAutoConfigRaz", [&] { return CAN_DevAutoConfigRaz(nullptr); }},
      {"CAN_DevHC16Reset", [&] { return CAN_DevHC16Reset(nullptr); }},
      {"CAN_DevBoardTeleFirm", [&] { return CAN_DevBoardTeleFirm(nullptr, "f", &result); }},
      {"CAN_DevBoardTeleFirm", [&] { return CAN_DevBoardTeleFirm(device, nullptr, &result); }},
      {"CAN_DevBoardTeleFirm", [&] { return CAN_DevBoardTeleFirm(device, "f", nullptr); }},
  };
  for (const auto &[name, call] : calls) {
    setNextCANStatus(name, 99, 0);
    EXPECT_EQ(call(), E_NULL_POINTER) << name;
    ACE_UINT32 status = 0;
    ACE_UINT8 armedDetail = 0;
    EXPECT_TRUE(takeInjectedStatus(name, status, armedDetail) && status == 99) << name;
  }
  EXPECT_EQ(CAN_DevRunTest(device, 0, nullptr), E_INVALID) << "the one mixed case";
  CAN_EventDev *event = nullptr;
  uint32_t pending = 0;
  EXPECT_EQ(CAN_DevRxMsg(nullptr, &event, &pending, 0), E_NULL_POINTER);
  EXPECT_EQ(CAN_DevRxMsg(device, nullptr, &pending, 10), E_NULL_POINTER);
  EXPECT_EQ(CAN_DevRxMsg(device, &event, nullptr, 10), E_NULL_POINTER);
  EXPECT_EQ(CAN_DevRxMsg(device, &event, &pending, 0), E_INVALID);
  EXPECT_EQ(CAN_DevEndFifo(nullptr), E_NULL_POINTER);
  EXPECT_EQ(CAN_DevFree(nullptr), E_NULL_POINTER);
  EXPECT_EQ(CAN_DevFreeRxMsg(nullptr), E_SUCCESS);
}

TEST_F(DeviceExports, EnumerateListsTheDeviceWhateverItsState) {
  init(namedDevice());
  CAN_EnumList list = {};
  ASSERT_EQ(CAN_DevEnumerate(&list), E_SUCCESS);
  ASSERT_EQ(list.count, 1u);
  auto *record = static_cast<CAN_EnumDev *>(list.records);
  EXPECT_STREQ(record->name, kSerial);
  EXPECT_EQ(record->fixedOne, 1u);
  EXPECT_EQ(record->reserved + record->disconnected, 0u);
  for (unsigned char byte : record->unused)
    ASSERT_EQ(byte, 0) << "unwritten bytes are zero";
  EXPECT_EQ(CAN_DevEnumerate(&list), E_NULL_POINTER) << "a list that already holds records";
  EXPECT_EQ(list.records, record);
  EXPECT_EQ(log.count("already holds records"), 1u);
  free(record);

  reserve();
  edit(namedDevice(kUnplugged));
  nextEvent(&simuDevice());
  list = {};
  ASSERT_EQ(CAN_DevEnumerate(&list), E_SUCCESS);
  record = static_cast<CAN_EnumDev *>(list.records);
  EXPECT_EQ(record->reserved, 1);
  EXPECT_EQ(record->disconnected, 1u);
  free(record);
}

TEST_F(DeviceExports, ReservationChecksTheNameThenTheReservationThenTheConnection) {
  init(namedDevice());
  EXPECT_EQ(CAN_DevFree(&simuDevice()), E_SUCCESS) << "never reserved";
  CAN_DEV_HANDLE handle = &handle;
  EXPECT_EQ(CAN_DevReservation("simu-0042", &handle), E_NOT_FOUND) << "case-sensitive";
  EXPECT_EQ(handle, nullptr);
  EXPECT_EQ(log.count("no device is named <simu-0042>"), 1u);
  CAN_DEV_HANDLE device = reserve();
  EXPECT_EQ(device, &simuDevice());
  handle = &handle;
  EXPECT_EQ(CAN_DevReservation(kSerial, &handle), E_ALREADY_RESERVED);
  EXPECT_EQ(handle, nullptr);
  simuDevice().port->reserved = true;
  EXPECT_EQ(CAN_DevFree(device), E_INVALID) << "refused while the port is reserved";
  EXPECT_TRUE(simuDevice().reserved);
  simuDevice().port->reserved = false;

  edit(namedDevice(kUnplugged));
  EXPECT_EQ(nextEvent(device)->type, DEV_TYPE_DISCONNECTED);
  EXPECT_EQ(CAN_DevReservation("OTHER", &handle), E_NOT_FOUND);
  EXPECT_EQ(CAN_DevReservation(kSerial, &handle), E_ALREADY_RESERVED);
  EXPECT_EQ(CAN_DevFree(device), E_SUCCESS) << "no connection check";
  EXPECT_EQ(CAN_DevReservation(kSerial, &handle), E_DISCONNECTED);
  EXPECT_FALSE(simuDevice().reserved);
}

TEST_F(DeviceExports, ConfigAndVersionCarryTheVersionsAndThePortWithoutTouchingPadding) {
  init(namedDevice("<CAN_FIRMWAREVERSION BootVersion='B1.20' BootDate='01/02/2003' "
                   "BootCheckSum='BC01' AppVersion='A4.56' AppDate='04/05/2006' "
                   "AppCheckSum='AC02'/>"));
  CAN_DEV_HANDLE device = reserve();
  CAN_ConfigDev config;
  std::memset(&config, 0xEE, sizeof config);
  simuDevice().port->reserved = true;
  ASSERT_EQ(CAN_DevGetConfig(device, &config), E_SUCCESS);
  EXPECT_EQ(config.resultByte, 0);
  const std::vector<std::string> texts = {config.bootVersion, config.bootDate, config.bootCheckSum,
                                          config.appVersion,  config.appDate,  config.appCheckSum};
  EXPECT_EQ(texts, (std::vector<std::string>{"B1.20", "01/02/2003", "BC01", "A4.56", "04/05/2006",
                                             "AC02"}));
  EXPECT_EQ(config.padding, 0xEE) << "not written";
  ASSERT_EQ(config.count, 1u);
  EXPECT_EQ(config.ports[0].resultByte, 0);
  EXPECT_EQ(config.ports[0].reserved, 1);
  EXPECT_EQ(config.ports[0].portNumber, 96);
  free(config.ports);
  // The version record is the config's first 67 bytes, and nothing more.
  unsigned char buffer[sizeof(CAN_VersionDev) + 4];
  std::memset(buffer, 0xEE, sizeof buffer);
  ASSERT_EQ(CAN_DevGetVersion(device, reinterpret_cast<CAN_VersionDev *>(buffer)), E_SUCCESS);
  EXPECT_EQ(std::memcmp(buffer, &config, sizeof(CAN_VersionDev)), 0);
  EXPECT_EQ(buffer[sizeof(CAN_VersionDev)], 0xEE);
}

TEST_F(DeviceExports, VersionTextsLongerThanTenBytesAreCutAndLogged) {
  init(namedDevice("<CAN_FIRMWAREVERSION BootVersion='0123456789ABC' AppDate='0123456789'/>"));
  CAN_VersionDev version;
  ASSERT_EQ(CAN_DevGetVersion(reserve(), &version), E_SUCCESS);
  EXPECT_STREQ(version.bootVersion, "0123456789");
  EXPECT_STREQ(version.appDate, "0123456789") << "exactly ten: kept whole";
  EXPECT_EQ(version.bootDate[0], 0) << "the next field is not overrun";
  EXPECT_EQ(log.count("BootVersion <0123456789ABC> is longer than 10 bytes"), 1u);
  EXPECT_EQ(log.count("AppDate"), 0u);
}

TEST_F(DeviceExports, WhileDisconnectedCallsWithEffectAnswer7AndTheOthersStillAnswer) {
  init(namedDevice());
  CAN_DEV_HANDLE device = reserve();
  edit(namedDevice(kUnplugged));
  EXPECT_EQ(nextEvent(device)->type, DEV_TYPE_DISCONNECTED);
  uint8_t detail = 0;
  CAN_ModeDev mode;
  CAN_ConfigDev config;
  config.ports = nullptr;
  CAN_TensionDev tension;
  CAN_VersionDev version;
  DownloadResult result = {0xEE, 0xEE};
  EXPECT_EQ(CAN_DevSetMode(device, 2, &detail), E_DISCONNECTED);
  EXPECT_EQ(CAN_DevGetMode(device, &mode), E_DISCONNECTED);
  EXPECT_EQ(CAN_DevGetConfig(device, &config), E_DISCONNECTED);
  EXPECT_EQ(CAN_DevGetTension(device, &tension), E_DISCONNECTED);
  EXPECT_EQ(CAN_DevGetVersion(device, &version), E_DISCONNECTED);
  EXPECT_EQ(CAN_DevSetSleep(device), E_DISCONNECTED);
  EXPECT_EQ(CAN_DevEndFifo(device), E_DISCONNECTED);
  EXPECT_EQ(CAN_DevHC16Reset(device), E_DISCONNECTED);
  EXPECT_EQ(CAN_DevBoardTeleFirm(device, "missing.bin", &result), E_DISCONNECTED);
  EXPECT_EQ(config.ports, nullptr);
  EXPECT_EQ(result.written, 0xEE);
  EXPECT_EQ(simuDevice().mode, 0u);
  EXPECT_TRUE(queueIsEmpty(device)) << "no event queued by a refused call";

  CAN_TestDev test;
  EXPECT_EQ(CAN_DevRunTest(device, 42, &test), E_SUCCESS);
  EXPECT_EQ(test.resultByte, 0);
  EXPECT_FLOAT_EQ(test.firstValue, 2.0f);
  EXPECT_FLOAT_EQ(test.secondValue, 2.7f);
  const unsigned char frame[4] = {1, 2, 3, 4};
  EXPECT_EQ(CAN_DevSndGenericFrame(device, frame), E_SUCCESS);
  EXPECT_EQ(CAN_DevAutoConfig(device), E_SUCCESS);
  EXPECT_EQ(CAN_DevAutoConfigRaz(device), E_SUCCESS);
}

TEST_F(DeviceExports, ResetTakesHalfASecondThenQueuesItsEvent) {
  init(namedDevice());
  CAN_DEV_HANDLE device = reserve();
  const auto start = std::chrono::steady_clock::now();
  ASSERT_EQ(CAN_DevHC16Reset(device), E_SUCCESS);
  EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(500));
  DeviceEvent event = nextEvent(device, nullptr, 1);
  ASSERT_NE(event, nullptr);
  EXPECT_EQ(event->type, DEV_TYPE_RESET);
  EXPECT_EQ(*static_cast<unsigned char *>(event->data), 0xF4);
}
