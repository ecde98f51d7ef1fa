// Loads the shared library as a host does, by name at run time, unloads it
// and loads it again in the same process.
#include "cansimu/cansimu.h"

#include <gtest/gtest.h>

#include <dlfcn.h>

namespace {

struct Library {
  void *handle = dlopen(CANSIMU_LIBRARY_PATH, RTLD_NOW | RTLD_LOCAL);
  ~Library() {
    if (handle != nullptr)
      dlclose(handle);
  }
  template <class F> F get(const char *name) {
    return reinterpret_cast<F>(dlsym(handle, name));
  }
};

using RxMsg = CAN_STATUS (*)(CAN_EventDrv **, uint32_t *, uint32_t);
using NoArgs = CAN_STATUS (*)();
using End = void (*)();
using FreeRx = CAN_STATUS (*)(CAN_EventDrv *);

// Every name of the .def file, as a host resolves them.
const char *const kExportNames[] = {"CAN_DrvInit",
                                    "CAN_DrvEnd",
                                    "CAN_DrvRxMsg",
                                    "CAN_DrvFreeRxMsg",
                                    "CAN_DrvEndFifo",
                                    "CAN_DevEnumerate",
                                    "CAN_DevRxMsg",
                                    "CAN_DevFreeRxMsg",
                                    "CAN_DevEndFifo",
                                    "CAN_DevReservation",
                                    "CAN_DevFree",
                                    "CAN_DevSetMode",
                                    "CAN_DevGetMode",
                                    "CAN_DevGetConfig",
                                    "CAN_DevGetTension",
                                    "CAN_DevGetVersion",
                                    "CAN_DevSetSleep",
                                    "CAN_DevRunTest",
                                    "CAN_DevSndGenericFrame",
                                    "CAN_DevAutoConfig",
                                    "CAN_DevAutoConfigRaz",
                                    "CAN_DevHC16Reset",
                                    "CAN_DevBoardTeleFirm",
                                    "setNextCANStatus",
                                    "setLogCriticalMethod",
                                    "setLogErrorMethod",
                                    "setLogFrameCriticalMethod",
                                    "setLogFrameErrorMethod",
                                    "setLogFrameInformationMethod",
                                    "setLogFrameWarningMethod",
                                    "setLogInformationMethod",
                                    "setLogWarningMethod"};

} // namespace

TEST(LibraryLoad, EveryExportResolvesByName) {
  Library library;
  ASSERT_NE(library.handle, nullptr) << dlerror();
  for (const char *name : kExportNames)
    EXPECT_NE(dlsym(library.handle, name), nullptr) << name;
  EXPECT_EQ(dlsym(library.handle, "logMessage"), nullptr)
      << "internals stay hidden";
}

TEST(LibraryLoad, AReloadedLibraryStartsFresh) {
  for (int round = 0; round < 3; ++round) {
    Library library;
    ASSERT_NE(library.handle, nullptr) << dlerror();
    auto endFifo = library.get<NoArgs>("CAN_DrvEndFifo");
    auto rxMsg = library.get<RxMsg>("CAN_DrvRxMsg");
    auto freeRx = library.get<FreeRx>("CAN_DrvFreeRxMsg");
    auto end = library.get<End>("CAN_DrvEnd");
    CAN_EventDrv *event = nullptr;
    uint32_t pending = 0;
    // Nothing queued by the previous round survives the unload.
    EXPECT_EQ(rxMsg(&event, &pending, 20), E_NO_EVENT) << "round " << round;
    ASSERT_EQ(endFifo(), E_SUCCESS);
    ASSERT_EQ(endFifo(), E_SUCCESS);
    ASSERT_EQ(rxMsg(&event, &pending, 20), E_SUCCESS);
    EXPECT_EQ(pending, 1u);
    freeRx(event);
    end();
  }
}
