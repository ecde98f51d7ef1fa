// The library's exports, resolved by name from a loaded library: the table a
// host keeps of the driver's entry points. Each slot has the type of the
// header's prototype, so a call through it is checked like a direct call.
#pragma once

#include "LibraryLoader.h"
#include "cansimu/cansimu.h"

#include <string>

struct DriverApi {
  // Driver family.
  decltype(&::CAN_DrvInit) DrvInit = nullptr;
  decltype(&::CAN_DrvEnd) DrvEnd = nullptr;
  decltype(&::CAN_DrvRxMsg) DrvRxMsg = nullptr;
  decltype(&::CAN_DrvFreeRxMsg) DrvFreeRxMsg = nullptr;
  decltype(&::CAN_DrvEndFifo) DrvEndFifo = nullptr;

  // Device family.
  decltype(&::CAN_DevEnumerate) DevEnumerate = nullptr;
  decltype(&::CAN_DevRxMsg) DevRxMsg = nullptr;
  decltype(&::CAN_DevFreeRxMsg) DevFreeRxMsg = nullptr;
  decltype(&::CAN_DevEndFifo) DevEndFifo = nullptr;
  decltype(&::CAN_DevReservation) DevReservation = nullptr;
  decltype(&::CAN_DevFree) DevFree = nullptr;
  decltype(&::CAN_DevSetMode) DevSetMode = nullptr;
  decltype(&::CAN_DevGetMode) DevGetMode = nullptr;
  decltype(&::CAN_DevGetConfig) DevGetConfig = nullptr;
  decltype(&::CAN_DevGetTension) DevGetTension = nullptr;
  decltype(&::CAN_DevGetVersion) DevGetVersion = nullptr;
  decltype(&::CAN_DevSetSleep) DevSetSleep = nullptr;
  decltype(&::CAN_DevHC16Reset) DevHC16Reset = nullptr;
  decltype(&::CAN_DevBoardTeleFirm) DevBoardTeleFirm = nullptr;

  // Port family.
  decltype(&::CAN_PrtReservation) PrtReservation = nullptr;
  decltype(&::CAN_PrtFree) PrtFree = nullptr;
  decltype(&::CAN_PrtGetMesPhys) PrtGetMesPhys = nullptr;
  decltype(&::CAN_PrtDetBaudRate) PrtDetBaudRate = nullptr;
  decltype(&::CAN_PrtLoadAssocTable) PrtLoadAssocTable = nullptr;
  decltype(&::CAN_PrtSendTrame) PrtSendTrame = nullptr;
  decltype(&::CAN_PrtRxMsg) PrtRxMsg = nullptr;
  decltype(&::CAN_PrtFreeRxMsg) PrtFreeRxMsg = nullptr;

  // Channel family.
  decltype(&::CAN_ChnCreate) ChnCreate = nullptr;
  decltype(&::CAN_ChnConfig) ChnConfig = nullptr;
  decltype(&::CAN_ChnOpenSession) ChnOpenSession = nullptr;
  decltype(&::CAN_ChnCloseSession) ChnCloseSession = nullptr;
  decltype(&::CAN_ChnSendDiag) ChnSendDiag = nullptr;
  decltype(&::CAN_ChnRxMsg) ChnRxMsg = nullptr;
  decltype(&::CAN_ChnFreeRxMsg) ChnFreeRxMsg = nullptr;
  decltype(&::CAN_ChnFree) ChnFree = nullptr;

  // Test harness hook.
  decltype(&::setNextCANStatus) setNextCANStatus = nullptr;

  // Resolves every entry point; on failure `missing` names the first absent.
  bool resolve(const LibraryLoader &library, std::string &missing);
};
