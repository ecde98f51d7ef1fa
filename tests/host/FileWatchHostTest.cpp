// Edits seen through folder watches, as a host meets them: many ECUs on one
// scenario, files that cannot be watched, and driver restarts that must
// leave no watch behind.
#include "platform/FileWatch.h"
#include "support/BusFixture.h"

#include <filesystem>
#include <string>
#include <vector>

#ifndef _WIN32
#include <dirent.h>
#endif

using namespace bus_test;
using FileWatchHost = BusTest;

namespace {

std::string hex(unsigned value) {
  char text[16];
  std::snprintf(text, sizeof text, "%X", value);
  return text;
}

#ifndef _WIN32
// Open descriptors of the process.
size_t openDescriptors() {
  size_t count = 0;
  if (DIR *fds = ::opendir("/proc/self/fd")) {
    while (::readdir(fds) != nullptr)
      ++count;
    ::closedir(fds);
  }
  return count;
}
#endif

} // namespace

TEST_F(FileWatchHost, TenThousandEcusOnOneScenarioAllAnswerFromItsNextSave) {
  const std::string scenario =
      ScenarioFile().event("22F190", {"62F19001"}).writeTo(dir.file("shared.xml"));
  setModificationTime(scenario, fileTime);
  std::string ecus;
  const unsigned count = 10000;
  for (unsigned i = 0; i < count; ++i)
    ecus += "<UCE scenario='" + scenario + "' targetAddress='7A' idRx='" + hex(0x10000 + i) +
            "' idTx='" + hex(0x20000 + i) + "'/>";
  start(ecus, 2);
  EXPECT_EQ(FileWatch::watchedFolderCount(), 1u) << "one folder, watched once";

  ScenarioFile().event("22F190", {"62F19002"}).writeTo(scenario);
  setModificationTime(scenario, ++fileTime);
  const CAN_FramePort everyone = frameTo(0x7D0, {0x22, 0xF1, 0x90});
  ASSERT_EQ(CAN_PrtSendTrame(port, &everyone, &detail), E_SUCCESS);
  unsigned edited = 0;
  for (unsigned i = 0; i < count; ++i)
    edited += frameHex(*nextEvent()) == "62F19002" ? 1 : 0;
  EXPECT_EQ(edited, count);
}

// Through the exports, each call reads the watch afresh: a save made
// between two requests is seen by the second, a thousand times in a row.
TEST_F(FileWatchHost, ASaveBetweenTwoRequestsIsSeenByTheSecond) {
  start(ecu("7E0", "7E8", ScenarioFile().event("22F190", {"62F19000"}), "engine"), 2);
  const std::string scenario = dir.file("engine.xml");
  const CAN_FramePort request = frameTo(0x7E0, {0x22, 0xF1, 0x90});
  int missed = 0;
  for (int save = 1; save <= 1000; ++save) {
    const std::string answer = "62F1" + hex(0x1000 + save);
    ScenarioFile().event("22F190", {answer}).writeTo(scenario + ".tmp");
    setModificationTime(scenario + ".tmp", 2000000000LL + save);
    std::filesystem::rename(scenario + ".tmp", scenario);
    ASSERT_EQ(CAN_PrtSendTrame(port, &request, &detail), E_SUCCESS);
    missed += frameHex(*nextEvent()) == answer ? 0 : 1;
  }
  EXPECT_EQ(missed, 0);
}

#ifndef _WIN32
// A scenario reached through a link is read from a folder nobody watches:
// its ECUs check the file's time at each look-up, and the log says so once.
TEST_F(FileWatchHost, LinkedScenariosFallBackToTimeChecksWithOneLogLine) {
  TempDir elsewhere;
  const std::string target =
      ScenarioFile().event("22F190", {"62F19001"}).writeTo(elsewhere.file("real.xml"));
  setModificationTime(target, fileTime);
  std::string ecus;
  for (int i = 0; i < 3; ++i) {
    const std::string link = dir.file("linked" + std::to_string(i) + ".xml");
    std::filesystem::create_symlink(target, link);
    ecus += "<UCE scenario='" + link + "' targetAddress='7A' idRx='7E" + std::to_string(8 + i) +
            "' idTx='7E" + std::to_string(i) + "'/>";
  }
  start(ecus, 2);
  EXPECT_EQ(log.count("File change notification unavailable for <"), 1u);
  EXPECT_EQ(log.count("(the file is a symbolic link)"), 1u);

  ScenarioFile().event("22F190", {"62F19002"}).writeTo(target);
  setModificationTime(target, ++fileTime);
  const CAN_FramePort request = frameTo(0x7E2, {0x22, 0xF1, 0x90});
  ASSERT_EQ(CAN_PrtSendTrame(port, &request, &detail), E_SUCCESS);
  EXPECT_EQ(frameHex(*nextEvent()), "62F19002");
}
#endif

// Ending and starting the driver a thousand times leaves no watch and no
// descriptor behind, and the last start still sees edits.
TEST_F(FileWatchHost, ThousandRestartsLeaveNoWatchBehind) {
  const std::string engine =
      ecu("7E0", "7E8", ScenarioFile().event("22F190", {"62F19001"}), "engine");
  start(engine, 2);
  CAN_DrvEnd();
  EXPECT_EQ(FileWatch::watchedFolderCount(), 0u);
#ifndef _WIN32
  const size_t descriptors = openDescriptors();
#endif
  for (int restart = 0; restart < 1000; ++restart) {
    ASSERT_EQ(CAN_DrvInit(configPath.c_str()), E_SUCCESS);
    CAN_DrvEnd();
  }
  EXPECT_EQ(FileWatch::watchedFolderCount(), 0u);
#ifndef _WIN32
  EXPECT_EQ(openDescriptors(), descriptors);
#endif
  start(engine, 2);
  ScenarioFile().event("22F190", {"62F19003"}).writeTo(dir.file("engine.xml"));
  setModificationTime(dir.file("engine.xml"), 2000000000);
  const CAN_FramePort request = frameTo(0x7E0, {0x22, 0xF1, 0x90});
  ASSERT_EQ(CAN_PrtSendTrame(port, &request, &detail), E_SUCCESS);
  EXPECT_EQ(frameHex(*nextEvent()), "62F19003");
}
