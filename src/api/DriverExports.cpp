// The driver-level exports: configuration, end, and the driver event queue.
#include "api/ExportCall.h"
#include "cansimu/cansimu.h"
#include "core/SessionReport.h"
#include "core/SimuDriver.h"
#include "platform/CodePage.h"

extern "C" {

CANSIMU_API CAN_STATUS CANSIMU_CALL CAN_DrvInit(const char *configPath) {
  return ExportCall("CAN_DrvInit", kDriverFamily).run([&] {
    SimuDriver::setConfigPath(toWideString(configPath));
    // A driver that already exists reads the path it was created with.
    SimuDriver::instance()->load();
    return E_SUCCESS;
  });
}

CANSIMU_API void CANSIMU_CALL CAN_DrvEnd(void) {
  ExportCall::guardedVoid("CAN_DrvEnd", [] {
    SimuDriver::end();
    SessionReport::flush();
  });
}

CANSIMU_API CAN_STATUS CANSIMU_CALL CAN_DrvRxMsg(CAN_EventDrv **event, uint32_t *pending,
                                                 uint32_t timeoutMs) {
  return ExportCall("CAN_DrvRxMsg", kDriverFamily)
      .require(event)
      .require(pending)
      .check(timeoutMs != 0, E_INVALID)
      .run([&] { return SimuDriver::instance()->rxMsg(event, pending, timeoutMs); });
}

CANSIMU_API CAN_STATUS CANSIMU_CALL CAN_DrvFreeRxMsg(CAN_EventDrv *event) {
  return ExportCall("CAN_DrvFreeRxMsg", kDriverFamily).run([&] {
    SimuDriver::freeRxMsg(event);
    return E_SUCCESS;
  });
}

CANSIMU_API CAN_STATUS CANSIMU_CALL CAN_DrvEndFifo(void) {
  return ExportCall("CAN_DrvEndFifo", kDriverFamily).run([] {
    SimuDriver::instance()->pushEndMarker();
    return E_SUCCESS;
  });
}

} // extern "C"
