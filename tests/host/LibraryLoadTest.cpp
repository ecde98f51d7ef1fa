// Loads the shared library as a host does, by path at run time (dlopen or
// LoadLibrary), resolves every export the .def file names, unloads it and
// loads it again in the same process.
#include "LibraryLoader.h"
#include "cansimu/cansimu.h"

#include <gtest/gtest.h>

#include <fstream>
#include <sstream>
#include <string>
#include <vector>

namespace {

using RxMsg = CAN_STATUS(CANSIMU_CALL *)(CAN_EventDrv **, uint32_t *, uint32_t);
using NoArgs = CAN_STATUS(CANSIMU_CALL *)();
using End = void(CANSIMU_CALL *)();
using FreeRx = CAN_STATUS(CANSIMU_CALL *)(CAN_EventDrv *);

template <class F> F entry(const LibraryLoader &library, const char *name) {
  return reinterpret_cast<F>(library.symbol(name));
}

// The export names listed after EXPORTS in the .def file.
std::vector<std::string> defExports() {
  std::ifstream def(CANSIMU_DEF_FILE);
  std::vector<std::string> names;
  std::string line;
  bool inExports = false;
  while (std::getline(def, line)) {
    std::istringstream words(line);
    std::string word;
    if (!(words >> word))
      continue;
    if (word == "EXPORTS")
      inExports = true;
    else if (inExports)
      names.push_back(word);
  }
  return names;
}

} // namespace

TEST(LibraryLoad, EveryExportOfTheDefFileResolvesByName) {
  LibraryLoader library(CANSIMU_LIBRARY_PATH);
  ASSERT_TRUE(library.loaded()) << library.error();
  const auto names = defExports();
  ASSERT_GE(names.size(), 14u);
  for (const auto &name : names)
    EXPECT_NE(library.symbol(name.c_str()), nullptr) << name;
  EXPECT_EQ(library.symbol("logMessage"), nullptr) << "internals stay hidden";
}

TEST(LibraryLoad, AReloadedLibraryStartsFresh) {
  for (int round = 0; round < 3; ++round) {
    LibraryLoader library(CANSIMU_LIBRARY_PATH);
    ASSERT_TRUE(library.loaded()) << library.error();
    auto endFifo = entry<NoArgs>(library, "CAN_DrvEndFifo");
    auto rxMsg = entry<RxMsg>(library, "CAN_DrvRxMsg");
    auto freeRx = entry<FreeRx>(library, "CAN_DrvFreeRxMsg");
    auto end = entry<End>(library, "CAN_DrvEnd");
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
