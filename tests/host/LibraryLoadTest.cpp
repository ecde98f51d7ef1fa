// Loads the shared library as a host does, by path at run time (dlopen or
// LoadLibrary), resolves every export the .def file names, unloads it and
// loads it again in the same process.
#include "cansimu/cansimu.h"
#include "system/LibraryLoader.h"

#include <gtest/gtest.h>

#include <fstream>
#include <string>
#include <vector>

namespace {

using RxMsg = CAN_STATUS(CANSIMU_CALL *)(CAN_EventDrv **, uint32_t *, uint32_t);
using Enumerate = CAN_STATUS(CANSIMU_CALL *)(CAN_EnumList *);
using SetNext = void(CANSIMU_CALL *)(const char *, uint32_t, uint32_t);
using NoArgs = CAN_STATUS(CANSIMU_CALL *)();
using End = void(CANSIMU_CALL *)();
using FreeRx = CAN_STATUS(CANSIMU_CALL *)(CAN_EventDrv *);

// The export names listed after EXPORTS in the .def file.
std::vector<std::string> defExports() {
  std::ifstream def(CANSIMU_DEF_FILE);
  std::string word;
  while (def >> word && word != "EXPORTS") {
  }
  std::vector<std::string> names;
  while (def >> word)
    names.push_back(word);
  return names;
}

} // namespace

// Each round arms a status the next round must not see: the injection table
// outlives CAN_DrvEnd and goes only with the library.
TEST(LibraryLoad, EveryDefExportResolvesAndAReloadedLibraryStartsFresh) {
  const auto names = defExports();
  ASSERT_GE(names.size(), 14u);
  for (int round = 0; round < 3; ++round) {
    LibraryLoader library(CANSIMU_LIBRARY_PATH);
    ASSERT_TRUE(library.loaded()) << library.error();
    for (const auto &name : names)
      EXPECT_NE(library.symbol(name.c_str()), nullptr) << name;
    EXPECT_EQ(library.symbol("logMessage"), nullptr) << "internals stay hidden";
    auto entry = [&](const char *name) { return library.symbol(name); };
    auto enumerate = reinterpret_cast<Enumerate>(entry("CAN_DevEnumerate"));
    auto rxMsg = reinterpret_cast<RxMsg>(entry("CAN_DrvRxMsg"));
    auto freeRx = reinterpret_cast<FreeRx>(entry("CAN_DrvFreeRxMsg"));
    // A list that already holds records is refused without allocating.
    CAN_EnumList held = {1, &held};
    EXPECT_EQ(enumerate(&held), E_NULL_POINTER) << "round " << round;
    reinterpret_cast<SetNext>(entry("setNextCANStatus"))("CAN_DevEnumerate", 42, 0);
    ASSERT_EQ(reinterpret_cast<NoArgs>(entry("CAN_DrvEndFifo"))(), E_SUCCESS);
    CAN_EventDrv *event = nullptr;
    uint32_t pending = 9;
    ASSERT_EQ(rxMsg(&event, &pending, 20), E_SUCCESS);
    EXPECT_EQ(pending, 0u);
    freeRx(event);
    reinterpret_cast<End>(entry("CAN_DrvEnd"))();
  }
}
