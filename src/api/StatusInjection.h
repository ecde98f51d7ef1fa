// What setNextCANStatus does with a name, a status and a detail. The export
// and the configuration's INJECT elements both go through here, so a bench
// file arms exactly what the same call from a test harness would.
#pragma once

#include <ace/Basic_Types.h>

#include <cstddef>

namespace StatusInjection {

enum class Outcome {
  EventInjected, // a receive name: its level got the event (an unknown type queues nothing)
  Armed,         // the next call of the export that passes its checks answers the status
  NotArmed,      // an earlier arming of the name still waits and stays; the values were dropped
};

// "CAN_DrvRxMsg", "CAN_DevRxMsg" and "CAN_PrtRxMsg" hand an event of type
// `status` to the driver, the device or the port (creating the driver when
// there is none); any other name arms the injection table. Only the low byte
// of `detail` is used.
Outcome injectNext(const char *name, ACE_UINT32 status, ACE_UINT32 detail);

// True for the three receive names above.
bool isReceiveName(const char *name);
// True for the names of the exports that consult the injection table.
bool isArmableExport(const char *name);
// Those names, `count` of them, in the order of the interface.
const char *const *armableExports(size_t &count);

} // namespace StatusInjection
