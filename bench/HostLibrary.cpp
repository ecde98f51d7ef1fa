#include "HostLibrary.h"

#include <dlfcn.h>

#include <stdexcept>

template <class F> void HostLibrary::resolve(F &slot, const char *name) {
  slot = reinterpret_cast<F>(dlsym(handle_, name));
  if (slot == nullptr)
    throw std::runtime_error(std::string("the library has no export ") + name);
}

HostLibrary::HostLibrary(const std::string &path) {
  handle_ = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
  if (handle_ == nullptr) {
    const char *why = dlerror();
    throw std::runtime_error(why != nullptr ? why : "cannot load " + path);
  }
  try {
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
  } catch (...) {
    dlclose(handle_);
    throw;
  }
}

HostLibrary::~HostLibrary() {
  DrvEnd();
  dlclose(handle_);
}
