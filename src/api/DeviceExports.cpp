// The device-level exports: each runs the export frame, then hands over to
// the device its handle names (or, without a handle, to the driver's device).
#include "api/ExportCall.h"
#include "api/Handles.h"
#include "cansimu/cansimu.h"
#include "core/SimuDriver.h"
#include "device/SimuDevice.h"

namespace {
// What CAN_DevRunTest answers when no status is armed.
constexpr float kTestFirstValue = 2.0f;
constexpr float kTestSecondValue = 2.7f;
} // namespace

extern "C" {

CANSIMU_API CAN_STATUS CANSIMU_CALL CAN_DevEnumerate(CAN_EnumList *devices) {
  return ExportCall("CAN_DevEnumerate", kDeviceFamily).require(devices).inject().run([&] {
    return SimuDriver::instance()->enumerate(*devices);
  });
}

CANSIMU_API CAN_STATUS CANSIMU_CALL CAN_DevRxMsg(CAN_DEV_HANDLE device, CAN_EventDev **event,
                                                 uint32_t *pending, uint32_t timeoutMs) {
  return ExportCall("CAN_DevRxMsg", kDeviceFamily)
      .require(device)
      .require(event)
      .require(pending)
      .check(timeoutMs != 0, E_INVALID)
      .run([&] { return deviceOf(device)->rxMsg(event, pending, timeoutMs); });
}

CANSIMU_API CAN_STATUS CANSIMU_CALL CAN_DevFreeRxMsg(CAN_EventDev *event) {
  return ExportCall("CAN_DevFreeRxMsg", kDeviceFamily).run([&] {
    SimuDevice::freeRxMsg(event);
    return E_SUCCESS;
  });
}

CANSIMU_API CAN_STATUS CANSIMU_CALL CAN_DevEndFifo(CAN_DEV_HANDLE device) {
  return ExportCall("CAN_DevEndFifo", kDeviceFamily).require(device).run([&] {
    return deviceOf(device)->endFifo();
  });
}

CANSIMU_API CAN_STATUS CANSIMU_CALL CAN_DevReservation(const char *name, CAN_DEV_HANDLE *device) {
  return ExportCall("CAN_DevReservation", kDeviceFamily)
      .require(name)
      .require(device)
      .inject()
      .run([&] { return SimuDriver::instance()->reserve(name, device); });
}

CANSIMU_API CAN_STATUS CANSIMU_CALL CAN_DevFree(CAN_DEV_HANDLE device) {
  return ExportCall("CAN_DevFree", kDeviceFamily).require(device).run([&] {
    return deviceOf(device)->free();
  });
}

CANSIMU_API CAN_STATUS CANSIMU_CALL CAN_DevSetMode(CAN_DEV_HANDLE device, uint32_t mode,
                                                   uint8_t *detail) {
  return ExportCall("CAN_DevSetMode", kDeviceFamily)
      .require(device)
      .require(detail)
      .inject(detail)
      .run([&] { return deviceOf(device)->setMode(mode); });
}

CANSIMU_API CAN_STATUS CANSIMU_CALL CAN_DevGetMode(CAN_DEV_HANDLE device, CAN_ModeDev *mode) {
  return ExportCall("CAN_DevGetMode", kDeviceFamily)
      .require(device)
      .require(mode)
      .inject()
      .run([&] { return deviceOf(device)->getMode(*mode, true); });
}

CANSIMU_API CAN_STATUS CANSIMU_CALL CAN_DevGetConfig(CAN_DEV_HANDLE device, CAN_ConfigDev *config) {
  return ExportCall("CAN_DevGetConfig", kDeviceFamily)
      .require(device)
      .require(config)
      .inject()
      .run([&] { return deviceOf(device)->getConfig(*config, true); });
}

CANSIMU_API CAN_STATUS CANSIMU_CALL CAN_DevGetTension(CAN_DEV_HANDLE device,
                                                      CAN_TensionDev *tension) {
  return ExportCall("CAN_DevGetTension", kDeviceFamily)
      .require(device)
      .require(tension)
      .inject()
      .run([&] { return deviceOf(device)->getTension(*tension, true); });
}

CANSIMU_API CAN_STATUS CANSIMU_CALL CAN_DevGetVersion(CAN_DEV_HANDLE device,
                                                      CAN_VersionDev *version) {
  return ExportCall("CAN_DevGetVersion", kDeviceFamily)
      .require(device)
      .require(version)
      .inject()
      .run([&] { return deviceOf(device)->getVersion(*version); });
}

CANSIMU_API CAN_STATUS CANSIMU_CALL CAN_DevSetSleep(CAN_DEV_HANDLE device) {
  return ExportCall("CAN_DevSetSleep", kDeviceFamily).require(device).inject().run([&] {
    return deviceOf(device)->setSleep();
  });
}

// Answers a fixed record without looking at the device, not even at its
// connection state.
CANSIMU_API CAN_STATUS CANSIMU_CALL CAN_DevRunTest(CAN_DEV_HANDLE device, uint32_t,
                                                   CAN_TestDev *result) {
  return ExportCall("CAN_DevRunTest", kDeviceFamily)
      .require(device)
      .require(result, E_INVALID)
      .inject(result)
      .run([&] {
        result->resultByte = 0;
        result->firstValue = kTestFirstValue;
        result->secondValue = kTestSecondValue;
        return E_SUCCESS;
      });
}

// The next three are accepted without effect once past the frame.
CANSIMU_API CAN_STATUS CANSIMU_CALL CAN_DevSndGenericFrame(CAN_DEV_HANDLE device,
                                                           const void *frame) {
  return ExportCall("CAN_DevSndGenericFrame", kDeviceFamily)
      .require(device)
      .require(frame)
      .inject()
      .run([] { return E_SUCCESS; });
}

CANSIMU_API CAN_STATUS CANSIMU_CALL CAN_DevAutoConfig(CAN_DEV_HANDLE device) {
  return ExportCall("CAN_DevAutoConfig", kDeviceFamily).require(device).inject().run([] {
    return E_SUCCESS;
  });
}

CANSIMU_API CAN_STATUS CANSIMU_CALL CAN_DevAutoConfigRaz(CAN_DEV_HANDLE device) {
  return ExportCall("CAN_DevAutoConfigRaz", kDeviceFamily).require(device).inject().run([] {
    return E_SUCCESS;
  });
}

CANSIMU_API CAN_STATUS CANSIMU_CALL CAN_DevHC16Reset(CAN_DEV_HANDLE device) {
  return ExportCall("CAN_DevHC16Reset", kDeviceFamily).require(device).inject().run([&] {
    return deviceOf(device)->hc16Reset();
  });
}

CANSIMU_API CAN_STATUS CANSIMU_CALL CAN_DevBoardTeleFirm(CAN_DEV_HANDLE device,
                                                         const char *firmwarePath,
                                                         DownloadResult *result) {
  return ExportCall("CAN_DevBoardTeleFirm", kDeviceFamily)
      .require(device)
      .require(firmwarePath)
      .require(result)
      .inject(result)
      .run([&] { return deviceOf(device)->downloadFirmware(firmwarePath, result); });
}

} // extern "C"
