// The library as a host sees it: loaded by path at run time, each export
// resolved by name. The benchmarks that measure what a host measures go
// through this, never through the library's internals.
#pragma once

#include "cansimu/cansimu.h"
#include "system/LibraryLoader.h"

#include <string>

class HostLibrary {
public:
  // Loads the library and resolves the exports the benchmarks call; throws
  // std::runtime_error when the file or an export is missing.
  explicit HostLibrary(const std::string &path);
  // Ends the driver and unloads the library.
  ~HostLibrary();
  HostLibrary(const HostLibrary &) = delete;
  HostLibrary &operator=(const HostLibrary &) = delete;

  decltype(&CAN_DrvInit) DrvInit = nullptr;
  decltype(&CAN_DrvEnd) DrvEnd = nullptr;
  decltype(&CAN_DevReservation) DevReservation = nullptr;
  decltype(&CAN_DevSetMode) DevSetMode = nullptr;
  decltype(&CAN_PrtReservation) PrtReservation = nullptr;
  decltype(&CAN_PrtLoadAssocTable) PrtLoadAssocTable = nullptr;
  decltype(&CAN_PrtSendTrame) PrtSendTrame = nullptr;
  decltype(&CAN_PrtRxMsg) PrtRxMsg = nullptr;
  decltype(&CAN_PrtFreeRxMsg) PrtFreeRxMsg = nullptr;
  decltype(&CAN_ChnCreate) ChnCreate = nullptr;
  decltype(&CAN_ChnConfig) ChnConfig = nullptr;
  decltype(&CAN_ChnOpenSession) ChnOpenSession = nullptr;
  decltype(&CAN_ChnSendDiag) ChnSendDiag = nullptr;
  decltype(&CAN_ChnRxMsg) ChnRxMsg = nullptr;
  decltype(&CAN_ChnFreeRxMsg) ChnFreeRxMsg = nullptr;

private:
  template <class F> void resolve(F &slot, const char *name);

  LibraryLoader library_;
};
