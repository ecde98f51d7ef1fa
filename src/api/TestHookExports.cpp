// The test harness's hook and the host's log-method setters.
#include "api/ExportCall.h"
#include "api/StatusInjection.h"
#include "cansimu/cansimu.h"

extern "C" {

CANSIMU_API void CANSIMU_CALL setNextCANStatus(const char *exportName, uint32_t status,
                                               uint32_t detail) {
  ExportCall::guardedVoid("setNextCANStatus", [&] {
    // Whether the entry was added, kept or refused is not reported back.
    StatusInjection::injectNext(exportName == nullptr ? "" : exportName, status, detail);
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
