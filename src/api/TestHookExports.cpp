// The test harness's hook and the host's log-method setters.
#include "api/ExportCall.h"
#include "api/InjectionTable.h"
#include "cansimu/cansimu.h"
#include "core/SimuDriver.h"
#include "device/SimuDevice.h"

#include <cstring>

namespace {
bool named(const char *name, const char *exportName) { return std::strcmp(name, exportName) == 0; }
} // namespace

extern "C" {

CANSIMU_API void CANSIMU_CALL setNextCANStatus(const char *exportName, uint32_t status,
                                               uint32_t detail) {
  ExportCall::guardedVoid("setNextCANStatus", [&] {
    const char *name = exportName == nullptr ? "" : exportName;
    const auto detailByte = static_cast<ACE_UINT8>(detail & 0xFFu);
    // The three receive names queue an event instead of arming the table.
    if (named(name, "CAN_DrvRxMsg")) {
      SimuDriver::instance()->injectEvent(static_cast<ACE_INT32>(status), detailByte);
    } else if (named(name, "CAN_DevRxMsg")) {
      SimuDriver::instance()->device->injectEvent(static_cast<ACE_INT32>(status), detailByte);
    } else if (named(name, "CAN_PrtRxMsg")) {
      SimuDriver::instance()->device->port->injectEvent(static_cast<ACE_INT32>(status), detailByte);
    } else {
      InjectionTable::arm(name, InjectedStatus{status, detailByte});
    }
  });
}

// The host may install its own log methods; logging always goes to the
// platform's logging service, so these accept anything and do nothing.
#define CANSIMU_IGNORED_LOG_SETTER(name)                                                           \
  CANSIMU_API void CANSIMU_CALL name(void *) {}
CANSIMU_IGNORED_LOG_SETTER(setLogCriticalMethod)
CANSIMU_IGNORED_LOG_SETTER(setLogErrorMethod)
CANSIMU_IGNORED_LOG_SETTER(setLogFrameCriticalMethod)
CANSIMU_IGNORED_LOG_SETTER(setLogFrameErrorMethod)
CANSIMU_IGNORED_LOG_SETTER(setLogFrameInformationMethod)
CANSIMU_IGNORED_LOG_SETTER(setLogFrameWarningMethod)
CANSIMU_IGNORED_LOG_SETTER(setLogInformationMethod)
CANSIMU_IGNORED_LOG_SETTER(setLogWarningMethod)
#undef CANSIMU_IGNORED_LOG_SETTER

} // extern "C"
