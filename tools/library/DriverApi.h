// library/: the library found, loaded and its exports resolved, as a host does it.
// The library's exports, resolved by name from a loaded library: the table a
// host keeps of the driver's entry points. Each slot has the type of the
// header's prototype, so a call through it is checked like a direct call,
// and counts its calls: an armed status is taken by the next call of its
// export, and the shell tells a tester whether one is still waiting.
#pragma once

#include "cansimu/cansimu.h"
#include "system/LibraryLoader.h"

#include <atomic>
#include <string>
#include <vector>

// One export: its name and how often the program called it.
class ExportSlot {
public:
  const char *name() const { return name_; }
  unsigned calls() const { return calls_; }

protected:
  const char *name_ = "";
  mutable std::atomic<unsigned> calls_{0};
};

template <class Function> class Export;
template <class Result, class... Args> class Export<Result (*)(Args...)> : public ExportSlot {
public:
  Result operator()(Args... args) const {
    ++calls_;
    return function_(args...);
  }
  // Resolves the export; false when the library does not have it.
  bool bind(const LibraryLoader &library, const char *name) {
    name_ = name;
    function_ = reinterpret_cast<Result (*)(Args...)>(library.symbol(name));
    return function_ != nullptr;
  }

private:
  Result (*function_)(Args...) = nullptr;
};

struct DriverApi {
  // Driver family.
  Export<decltype(&::CAN_DrvInit)> DrvInit;
  Export<decltype(&::CAN_DrvEnd)> DrvEnd;
  Export<decltype(&::CAN_DrvRxMsg)> DrvRxMsg;
  Export<decltype(&::CAN_DrvFreeRxMsg)> DrvFreeRxMsg;
  Export<decltype(&::CAN_DrvEndFifo)> DrvEndFifo;

  // Device family.
  Export<decltype(&::CAN_DevEnumerate)> DevEnumerate;
  Export<decltype(&::CAN_DevRxMsg)> DevRxMsg;
  Export<decltype(&::CAN_DevFreeRxMsg)> DevFreeRxMsg;
  Export<decltype(&::CAN_DevEndFifo)> DevEndFifo;
  Export<decltype(&::CAN_DevReservation)> DevReservation;
  Export<decltype(&::CAN_DevFree)> DevFree;
  Export<decltype(&::CAN_DevSetMode)> DevSetMode;
  Export<decltype(&::CAN_DevGetMode)> DevGetMode;
  Export<decltype(&::CAN_DevGetConfig)> DevGetConfig;
  Export<decltype(&::CAN_DevGetTension)> DevGetTension;
  Export<decltype(&::CAN_DevGetVersion)> DevGetVersion;
  Export<decltype(&::CAN_DevSetSleep)> DevSetSleep;
  Export<decltype(&::CAN_DevHC16Reset)> DevHC16Reset;
  Export<decltype(&::CAN_DevBoardTeleFirm)> DevBoardTeleFirm;

  // Port family.
  Export<decltype(&::CAN_PrtReservation)> PrtReservation;
  Export<decltype(&::CAN_PrtFree)> PrtFree;
  Export<decltype(&::CAN_PrtGetMesPhys)> PrtGetMesPhys;
  Export<decltype(&::CAN_PrtDetBaudRate)> PrtDetBaudRate;
  Export<decltype(&::CAN_PrtLoadAssocTable)> PrtLoadAssocTable;
  Export<decltype(&::CAN_PrtSendTrame)> PrtSendTrame;
  Export<decltype(&::CAN_PrtRxMsg)> PrtRxMsg;
  Export<decltype(&::CAN_PrtFreeRxMsg)> PrtFreeRxMsg;
  Export<decltype(&::CAN_PrtEndFifo)> PrtEndFifo;

  // Channel family.
  Export<decltype(&::CAN_ChnCreate)> ChnCreate;
  Export<decltype(&::CAN_ChnConfig)> ChnConfig;
  Export<decltype(&::CAN_ChnOpenSession)> ChnOpenSession;
  Export<decltype(&::CAN_ChnCloseSession)> ChnCloseSession;
  Export<decltype(&::CAN_ChnSendDiag)> ChnSendDiag;
  Export<decltype(&::CAN_ChnRxMsg)> ChnRxMsg;
  Export<decltype(&::CAN_ChnFreeRxMsg)> ChnFreeRxMsg;
  Export<decltype(&::CAN_ChnEndFifo)> ChnEndFifo;
  Export<decltype(&::CAN_ChnFree)> ChnFree;

  // Test harness hook.
  Export<decltype(&::setNextCANStatus)> setNextCANStatus;

  // Resolves every entry point; on failure `missing` names the first absent.
  bool resolve(const LibraryLoader &library, std::string &missing);
  // How often the program called the export of that name (0 for a name it
  // never resolves).
  unsigned callsOf(const std::string &name) const;

private:
  std::vector<const ExportSlot *> slots_;
};
