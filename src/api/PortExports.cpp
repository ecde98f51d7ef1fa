// The port-level exports: each runs the export frame, then hands over to the
// port its handle names (enumeration and reservation go through the device).
#include "api/ExportCall.h"
#include "api/Handles.h"
#include "cansimu/cansimu.h"
#include "core/LogMessage.h"
#include "device/SimuDevice.h"
#include "port/SimuPort.h"

extern "C" {

// The list is looked at after the injection step: an armed status answers
// even a call whose list already holds items.
CANSIMU_API CAN_STATUS CANSIMU_CALL CAN_PrtEnumerate(CAN_DEV_HANDLE device, CAN_EnumList *ports) {
  return ExportCall("CAN_PrtEnumerate", kPortFamily)
      .require(device)
      .require(ports)
      .inject()
      .run([&] {
        if (ports->records != nullptr) {
          logMessage(L"CAN_PrtEnumerate: the list already holds records");
          return E_NULL_POINTER;
        }
        return deviceOf(device)->enumeratePorts(*ports);
      });
}

CANSIMU_API CAN_STATUS CANSIMU_CALL CAN_PrtReservation(CAN_DEV_HANDLE device, uint32_t portNumber,
                                                       CAN_PRT_HANDLE *port) {
  return ExportCall("CAN_PrtReservation", kPortFamily)
      .require(device)
      .require(port)
      .inject()
      .run([&] { return deviceOf(device)->reservePort(portNumber, port); });
}

CANSIMU_API CAN_STATUS CANSIMU_CALL CAN_PrtFree(CAN_PRT_HANDLE port) {
  return ExportCall("CAN_PrtFree", kPortFamily).require(port).run([&] {
    return portOf(port)->free();
  });
}

CANSIMU_API CAN_STATUS CANSIMU_CALL CAN_PrtGetMesPhys(CAN_PRT_HANDLE port,
                                                      CAN_MesPhysPort *values) {
  return ExportCall("CAN_PrtGetMesPhys", kPortFamily)
      .require(port)
      .require(values)
      .inject()
      .run([&] { return portOf(port)->getMesPhys(*values, true); });
}

CANSIMU_API CAN_STATUS CANSIMU_CALL CAN_PrtSetVoie(CAN_PRT_HANDLE port, uint32_t, uint8_t *detail) {
  return ExportCall("CAN_PrtSetVoie", kPortFamily)
      .require(port)
      .require(detail)
      .inject(detail)
      .run([&] { return portOf(port)->checkReady(); });
}

CANSIMU_API CAN_STATUS CANSIMU_CALL CAN_PrtSetCanParam(CAN_PRT_HANDLE port, CAN_ParamPort *params) {
  return ExportCall("CAN_PrtSetCanParam", kPortFamily)
      .require(port)
      .require(params)
      .inject(params)
      .run([&] { return portOf(port)->setCanParam(*params); });
}

CANSIMU_API CAN_STATUS CANSIMU_CALL CAN_PrtGetCanParam(CAN_PRT_HANDLE port, CAN_ParamPort *params) {
  return ExportCall("CAN_PrtGetCanParam", kPortFamily)
      .require(port)
      .require(params)
      .inject(params)
      .run([&] { return portOf(port)->getCanParam(*params, true); });
}

CANSIMU_API CAN_STATUS CANSIMU_CALL CAN_PrtDetBaudRate(CAN_PRT_HANDLE port,
                                                       const CAN_BaudSearchPort *request,
                                                       CAN_BaudFoundPort *answer) {
  return ExportCall("CAN_PrtDetBaudRate", kPortFamily)
      .require(port)
      .require(request)
      .require(answer)
      .inject(answer)
      .run([&] { return portOf(port)->detBaudRate(request, answer); });
}

CANSIMU_API CAN_STATUS CANSIMU_CALL CAN_PrtSetHardFilt(CAN_PRT_HANDLE port, const void *filter,
                                                       uint8_t *detail) {
  return ExportCall("CAN_PrtSetHardFilt", kPortFamily)
      .require(port)
      .require(filter)
      .require(detail)
      .inject(detail)
      .run([&] { return portOf(port)->checkReady(); });
}

CANSIMU_API CAN_STATUS CANSIMU_CALL CAN_PrtSetSoftFilt(CAN_PRT_HANDLE port, const void *filter,
                                                       uint8_t *detail) {
  return ExportCall("CAN_PrtSetSoftFilt", kPortFamily)
      .require(port)
      .require(filter)
      .require(detail)
      .inject(detail)
      .run([&] { return portOf(port)->checkReady(); });
}

CANSIMU_API CAN_STATUS CANSIMU_CALL CAN_PrtLoadAssocTable(CAN_PRT_HANDLE port,
                                                          const CAN_AssocTable *table,
                                                          AssocResult *result) {
  return ExportCall("CAN_PrtLoadAssocTable", kPortFamily)
      .require(port)
      .require(table)
      .require(result)
      .inject(result)
      .run([&] { return portOf(port)->loadAssocTable(*table, *result); });
}

CANSIMU_API CAN_STATUS CANSIMU_CALL CAN_PrtSetParamFlux(CAN_PRT_HANDLE port, const void *params,
                                                        uint32_t) {
  return ExportCall("CAN_PrtSetParamFlux", kPortFamily)
      .require(port)
      .require(params)
      .inject()
      .run([&] { return portOf(port)->checkReady(); });
}

CANSIMU_API CAN_STATUS CANSIMU_CALL CAN_PrtRegulationOn(CAN_PRT_HANDLE port, uint32_t,
                                                        const void *params) {
  return ExportCall("CAN_PrtRegulationOn", kPortFamily)
      .require(port)
      .require(params)
      .inject()
      .run([&] { return portOf(port)->checkReady(); });
}

CANSIMU_API CAN_STATUS CANSIMU_CALL CAN_PrtRegulationOff(CAN_PRT_HANDLE port, const void *params) {
  return ExportCall("CAN_PrtRegulationOff", kPortFamily)
      .require(port)
      .require(params)
      .inject()
      .run([&] { return portOf(port)->checkReady(); });
}

CANSIMU_API CAN_STATUS CANSIMU_CALL CAN_PrtPortGetState(CAN_PRT_HANDLE port, CAN_StatePort *state) {
  return ExportCall("CAN_PrtPortGetState", kPortFamily)
      .require(port)
      .require(state)
      .inject()
      .run([&] { return portOf(port)->getState(*state, true); });
}

// Cyclic frames and the controller re-init simulate nothing beyond the frame.
CANSIMU_API CAN_STATUS CANSIMU_CALL CAN_PrtSetSndCycl(CAN_PRT_HANDLE port, const void *cycle,
                                                      uint32_t, uint8_t *detail) {
  return ExportCall("CAN_PrtSetSndCycl", kPortFamily)
      .require(port)
      .require(cycle)
      .require(detail)
      .inject(detail)
      .run([] { return E_SUCCESS; });
}

CANSIMU_API CAN_STATUS CANSIMU_CALL CAN_PrtActSndCycl(CAN_PRT_HANDLE port, uint32_t,
                                                      uint8_t *detail) {
  return ExportCall("CAN_PrtActSndCycl", kPortFamily)
      .require(port)
      .require(detail)
      .inject(detail)
      .run([] { return E_SUCCESS; });
}

CANSIMU_API CAN_STATUS CANSIMU_CALL CAN_PrtUpdSndCycl(CAN_PRT_HANDLE port, const void *cycle,
                                                      uint8_t *detail) {
  return ExportCall("CAN_PrtUpdSndCycl", kPortFamily)
      .require(port)
      .require(cycle)
      .require(detail)
      .inject(detail)
      .run([] { return E_SUCCESS; });
}

CANSIMU_API CAN_STATUS CANSIMU_CALL CAN_PrtDActSndCycl(CAN_PRT_HANDLE port, uint32_t,
                                                       uint8_t *detail) {
  return ExportCall("CAN_PrtDActSndCycl", kPortFamily)
      .require(port)
      .require(detail)
      .inject(detail)
      .run([] { return E_SUCCESS; });
}

CANSIMU_API CAN_STATUS CANSIMU_CALL CAN_PrtDelSndCycl(CAN_PRT_HANDLE port, uint32_t,
                                                      uint8_t *detail) {
  return ExportCall("CAN_PrtDelSndCycl", kPortFamily)
      .require(port)
      .require(detail)
      .inject(detail)
      .run([] { return E_SUCCESS; });
}

CANSIMU_API CAN_STATUS CANSIMU_CALL CAN_PrtCtrlReinit(CAN_PRT_HANDLE port, const void *params) {
  return ExportCall("CAN_PrtCtrlReinit", kPortFamily)
      .require(port)
      .require(params)
      .inject()
      .run([] { return E_SUCCESS; });
}

CANSIMU_API CAN_STATUS CANSIMU_CALL CAN_PrtSendTrame(CAN_PRT_HANDLE port,
                                                     const CAN_FramePort *frame, uint8_t *detail) {
  return ExportCall("CAN_PrtSendTrame", kPortFamily)
      .require(port)
      .require(frame)
      .require(detail)
      .inject(detail)
      .run([&] { return portOf(port)->sendTrame(*frame); });
}

CANSIMU_API CAN_STATUS CANSIMU_CALL CAN_PrtRxMsg(CAN_PRT_HANDLE port, CAN_EventPort **event,
                                                 uint32_t *pending, uint32_t timeoutMs) {
  return ExportCall("CAN_PrtRxMsg", kPortFamily)
      .require(port)
      .require(event)
      .require(pending)
      .check(timeoutMs != 0, E_INVALID)
      .run([&] { return portOf(port)->rxMsg(event, pending, timeoutMs); });
}

CANSIMU_API CAN_STATUS CANSIMU_CALL CAN_PrtEndFifo(CAN_PRT_HANDLE port) {
  return ExportCall("CAN_PrtEndFifo", kPortFamily).require(port).run([&] {
    return portOf(port)->endFifo();
  });
}

CANSIMU_API CAN_STATUS CANSIMU_CALL CAN_PrtFreeRxMsg(CAN_EventPort *event) {
  return ExportCall("CAN_PrtFreeRxMsg", kPortFamily).run([&] {
    SimuPort::freeRxMsg(event);
    return E_SUCCESS;
  });
}

} // extern "C"
