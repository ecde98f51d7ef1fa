#include "DriverApi.h"

namespace {
template <class F>
bool bind(const LibraryLoader &library, const char *name, F &slot, std::string &missing) {
  slot = reinterpret_cast<F>(library.symbol(name));
  if (slot == nullptr && missing.empty())
    missing = name;
  return slot != nullptr;
}
} // namespace

bool DriverApi::resolve(const LibraryLoader &library, std::string &missing) {
  missing.clear();
  bind(library, "CAN_DrvInit", DrvInit, missing);
  bind(library, "CAN_DrvEnd", DrvEnd, missing);
  bind(library, "CAN_DrvRxMsg", DrvRxMsg, missing);
  bind(library, "CAN_DrvFreeRxMsg", DrvFreeRxMsg, missing);
  bind(library, "CAN_DrvEndFifo", DrvEndFifo, missing);
  bind(library, "setNextCANStatus", setNextCANStatus, missing);
  return missing.empty();
}
