// The library's exports, resolved by name from a loaded library: the table a
// host keeps of the driver's entry points.
#pragma once

#include "LibraryLoader.h"
#include "cansimu/cansimu.h"

#include <string>

struct DriverApi {
  CAN_STATUS(CANSIMU_CALL *DrvInit)(const char *) = nullptr;
  void(CANSIMU_CALL *DrvEnd)() = nullptr;
  CAN_STATUS(CANSIMU_CALL *DrvRxMsg)(CAN_EventDrv **, uint32_t *, uint32_t) = nullptr;
  CAN_STATUS(CANSIMU_CALL *DrvFreeRxMsg)(CAN_EventDrv *) = nullptr;
  CAN_STATUS(CANSIMU_CALL *DrvEndFifo)() = nullptr;
  void(CANSIMU_CALL *setNextCANStatus)(const char *, uint32_t, uint32_t) = nullptr;

  // Resolves every entry point; on failure `missing` names the first absent.
  bool resolve(const LibraryLoader &library, std::string &missing);
};
