#include "HostLibrary.h"

#include <stdexcept>

template <class F> void HostLibrary::resolve(F &slot, const char *name) {
  slot = reinterpret_cast<F>(library_.symbol(name));
  if (slot == nullptr)
    throw std::runtime_error(std::string("the library has no export ") + name);
}

HostLibrary::HostLibrary(const std::string &path) : library_(path) {
  if (!library_.loaded())
    throw std::runtime_error(library_.error().empty() ? "cannot load " + path : library_.error());
  resolve(DrvInit, "CAN_DrvInit");
  resolve(DrvEnd, "CAN_DrvEnd");
  resolve(DevReservation, "CAN_DevReservation");
  resolve(DevSetMode, "CAN_DevSetMode");
  resolve(PrtReservation, "CAN_PrtReservation");
  resolve(PrtLoadAssocTable, "CAN_PrtLoadAssocTable");
  resolve(PrtSendTrame, "CAN_PrtSendTrame");
  resolve(PrtRxMsg, "CAN_PrtRxMsg");
  resolve(PrtFreeRxMsg, "CAN_PrtFreeRxMsg");
  resolve(ChnCreate, "CAN_ChnCreate");
  resolve(ChnConfig, "CAN_ChnConfig");
  resolve(ChnOpenSession, "CAN_ChnOpenSession");
  resolve(ChnSendDiag, "CAN_ChnSendDiag");
  resolve(ChnRxMsg, "CAN_ChnRxMsg");
  resolve(ChnFreeRxMsg, "CAN_ChnFreeRxMsg");
}

HostLibrary::~HostLibrary() { DrvEnd(); }
