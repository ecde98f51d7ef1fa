#include "api/StatusInjection.h"

#include "api/InjectionTable.h"
#include "core/LogMessage.h"
#include "core/NumberText.h"
#include "core/SessionReport.h"
#include "core/SimuDriver.h"
#include "device/SimuDevice.h"
#include "platform/CodePage.h"
#include "port/SimuPort.h"

#include <cstring>
#include <string>

namespace {

bool named(const char *name, const char *exportName) { return std::strcmp(name, exportName) == 0; }

// The exports with an injection step, each under the literal name it asks
// the table with.
const char *const kArmableExports[] = {
    "CAN_DevEnumerate",       "CAN_DevReservation",   "CAN_DevSetMode",
    "CAN_DevGetMode",         "CAN_DevGetConfig",     "CAN_DevGetTension",
    "CAN_DevGetVersion",      "CAN_DevSetSleep",      "CAN_DevRunTest",
    "CAN_DevSndGenericFrame", "CAN_DevAutoConfig",    "CAN_DevAutoConfigRaz",
    "CAN_DevHC16Reset",       "CAN_DevBoardTeleFirm", "CAN_PrtEnumerate",
    "CAN_PrtReservation",     "CAN_PrtGetMesPhys",    "CAN_PrtSetVoie",
    "CAN_PrtSetCanParam",     "CAN_PrtGetCanParam",   "CAN_PrtDetBaudRate",
    "CAN_PrtSetHardFilt",     "CAN_PrtSetSoftFilt",   "CAN_PrtLoadAssocTable",
    "CAN_PrtSetParamFlux",    "CAN_PrtRegulationOn",  "CAN_PrtRegulationOff",
    "CAN_PrtPortGetState",    "CAN_PrtSetSndCycl",    "CAN_PrtActSndCycl",
    "CAN_PrtUpdSndCycl",      "CAN_PrtDActSndCycl",   "CAN_PrtDelSndCycl",
    "CAN_PrtCtrlReinit",      "CAN_PrtSendTrame",     "CAN_ChnEnumerate",
    "CAN_ChnCreate",          "CAN_ChnFree",          "CAN_ChnConfig",
    "CAN_ChnOpenSession",     "CAN_ChnCloseSession",  "CAN_ChnSendDiag",
};

} // namespace

StatusInjection::Outcome StatusInjection::injectNext(const char *name, ACE_UINT32 status,
                                                     ACE_UINT32 detail) {
  const auto type = static_cast<ACE_INT32>(status);
  const auto detailByte = static_cast<ACE_UINT8>(detail & 0xFFu);
  if (named(name, "CAN_DrvRxMsg")) {
    SimuDriver::instance()->injectEvent(type, detailByte);
  } else if (named(name, "CAN_DevRxMsg")) {
    SimuDriver::instance()->device->injectEvent(type, detailByte);
  } else if (named(name, "CAN_PrtRxMsg")) {
    SimuDriver::instance()->device->port->injectEvent(type, detailByte);
  } else {
    return InjectionTable::arm(name, InjectedStatus{status, detailByte}) ? Outcome::Armed
                                                                         : Outcome::NotArmed;
  }
  if (logIsRead())
    logMessage(L"Injected event: " + toWideString(name) + L" type " + decimalText(type) +
               L", detail " + decimalText(detailByte));
  SessionReport::injectedEvent(name, type);
  return Outcome::EventInjected;
}

bool StatusInjection::isReceiveName(const char *name) {
  return named(name, "CAN_DrvRxMsg") || named(name, "CAN_DevRxMsg") || named(name, "CAN_PrtRxMsg");
}

const char *const *StatusInjection::armableExports(size_t &count) {
  count = sizeof kArmableExports / sizeof kArmableExports[0];
  return kArmableExports;
}

bool StatusInjection::isArmableExport(const char *name) {
  for (const char *exportName : kArmableExports)
    if (named(name, exportName))
      return true;
  return false;
}
