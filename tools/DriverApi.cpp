#include "DriverApi.h"

namespace {
template <class F>
void bind(const LibraryLoader &library, const char *name, F &slot, std::string &missing) {
  slot = reinterpret_cast<F>(library.symbol(name));
  if (slot == nullptr && missing.empty())
    missing = name;
}
} // namespace

bool DriverApi::resolve(const LibraryLoader &library, std::string &missing) {
  missing.clear();
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
  bind(library, "setNextCANStatus", setNextCANStatus, missing);
  return missing.empty();
}
