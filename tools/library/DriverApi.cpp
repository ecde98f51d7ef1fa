#include "library/DriverApi.h"

bool DriverApi::resolve(const LibraryLoader &library, std::string &missing) {
  missing.clear();
  slots_.clear();
  const auto bind = [&](const LibraryLoader &from, const char *name, auto &slot, std::string &) {
    if (!slot.bind(from, name) && missing.empty())
      missing = name;
    slots_.push_back(&slot);
  };
  bind(library, "CAN_DrvInit", DrvInit, missing);
  bind(library, "CAN_DrvEnd", DrvEnd, missing);
  bind(library, "CAN_DrvRxMsg", DrvRxMsg, missing);
  bind(library, "CAN_DrvFreeRxMsg", DrvFreeRxMsg, missing);
  bind(library, "CAN_DrvEndFifo", DrvEndFifo, missing);
  bind(library, "CAN_DevEnumerate", DevEnumerate, missing);
  bind(library, "CAN_DevRxMsg", DevRxMsg, missing);
  bind(library, "CAN_DevFreeRxMsg", DevFreeRxMsg, missing);
  bind(library, "CAN_DevEndFifo", DevEndFifo, missing);
  bind(library, "CAN_DevReservation", DevReservation, missing);
  bind(library, "CAN_DevFree", DevFree, missing);
  bind(library, "CAN_DevSetMode", DevSetMode, missing);
  bind(library, "CAN_DevGetMode", DevGetMode, missing);
  bind(library, "CAN_DevGetConfig", DevGetConfig, missing);
  bind(library, "CAN_DevGetTension", DevGetTension, missing);
  bind(library, "CAN_DevGetVersion", DevGetVersion, missing);
  bind(library, "CAN_DevSetSleep", DevSetSleep, missing);
  bind(library, "CAN_DevHC16Reset", DevHC16Reset, missing);
  bind(library, "CAN_DevBoardTeleFirm", DevBoardTeleFirm, missing);
  bind(library, "CAN_PrtReservation", PrtReservation, missing);
  bind(library, "CAN_PrtFree", PrtFree, missing);
  bind(library, "CAN_PrtGetMesPhys", PrtGetMesPhys, missing);
  bind(library, "CAN_PrtDetBaudRate", PrtDetBaudRate, missing);
  bind(library, "CAN_PrtLoadAssocTable", PrtLoadAssocTable, missing);
  bind(library, "CAN_PrtSendTrame", PrtSendTrame, missing);
  bind(library, "CAN_PrtRxMsg", PrtRxMsg, missing);
  bind(library, "CAN_PrtFreeRxMsg", PrtFreeRxMsg, missing);
  bind(library, "CAN_PrtEndFifo", PrtEndFifo, missing);
  bind(library, "CAN_ChnCreate", ChnCreate, missing);
  bind(library, "CAN_ChnConfig", ChnConfig, missing);
  bind(library, "CAN_ChnOpenSession", ChnOpenSession, missing);
  bind(library, "CAN_ChnCloseSession", ChnCloseSession, missing);
  bind(library, "CAN_ChnSendDiag", ChnSendDiag, missing);
  bind(library, "CAN_ChnRxMsg", ChnRxMsg, missing);
  bind(library, "CAN_ChnFreeRxMsg", ChnFreeRxMsg, missing);
  bind(library, "CAN_ChnEndFifo", ChnEndFifo, missing);
  bind(library, "CAN_ChnFree", ChnFree, missing);
  bind(library, "setNextCANStatus", setNextCANStatus, missing);
  return missing.empty();
}

unsigned DriverApi::callsOf(const std::string &name) const {
  for (const ExportSlot *slot : slots_)
    if (name == slot->name())
      return slot->calls();
  return 0;
}
