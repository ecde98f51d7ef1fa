// CANSIMU_LOG as a host process has it when it loads the library.
#include "cansimu/cansimu.h"
#include "support/TempDir.h"
#include "system/LibraryLoader.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <ctime>
#include <fstream>
#include <regex>
#include <string>
#include <thread>
#include <vector>

namespace {

using Init = CAN_STATUS(CANSIMU_CALL *)(const char *);
using End = void(CANSIMU_CALL *)();
using DriverRead = CAN_STATUS(CANSIMU_CALL *)(CAN_EventDrv **, uint32_t *, uint32_t);

// The local time as the log's stamp starts, to the second.
std::string localSecond() {
  const std::time_t now = std::time(nullptr);
  char text[32];
  std::strftime(text, sizeof text, "%Y-%m-%d %H:%M:%S", std::localtime(&now));
  return text;
}

// Loads the library, asks it to read each path (each is missing, so each
// gives one log line) and unloads it.
void runSession(const std::vector<std::string> &paths) {
  LibraryLoader library(CANSIMU_LIBRARY_PATH);
  ASSERT_TRUE(library.loaded()) << library.error();
  auto init = reinterpret_cast<Init>(library.symbol("CAN_DrvInit"));
  auto end = reinterpret_cast<End>(library.symbol("CAN_DrvEnd"));
  for (const auto &path : paths) {
    EXPECT_EQ(init(path.c_str()), E_SUCCESS);
    end();
  }
}

std::vector<std::string> linesOf(const std::string &path) {
  std::ifstream in(path);
  std::vector<std::string> lines;
  for (std::string line; std::getline(in, line);)
    lines.push_back(line);
  return lines;
}

} // namespace

// The lines are appended after what the file held, each with the local time
// to the millisecond, as plain text. A file that cannot be opened is named
// once on standard error, and the library works as before.
TEST(LogFile, CansimuLogGetsEveryLineWithItsLocalTimeAndAnUnopenableFileIsReportedOnce) {
#ifndef _WIN32
  // A zone five and a half hours off UTC: a stamp in UTC would not match.
  setEnvironment("TZ", "IST-5:30");
  tzset();
#endif
  TempDir dir;
  const std::string logPath = dir.file("cansimu.log");
  std::ofstream(logPath) << "earlier line\n";
  const std::vector<std::string> benches = {dir.file("first.xml"), dir.file("100%s.xml")};
  setEnvironment("CANSIMU_LOG", logPath);
  const std::string before = localSecond();
  runSession(benches);
  const std::string after = localSecond();

  const auto lines = linesOf(logPath);
  ASSERT_EQ(lines.size(), 3u);
  EXPECT_EQ(lines[0], "earlier line");
  const std::regex stamped(R"((\d{4}-\d\d-\d\d \d\d:\d\d:\d\d)\.\d{3} MERIDAX: (.*))");
  for (size_t i = 0; i < benches.size(); ++i) {
    std::smatch parts;
    ASSERT_TRUE(std::regex_match(lines[i + 1], parts, stamped)) << lines[i + 1];
    EXPECT_GE(parts[1].str(), before);
    EXPECT_LE(parts[1].str(), after);
    std::string stored = benches[i];
    std::replace(stored.begin(), stored.end(), '/', '\\');
    EXPECT_EQ(parts[2].str(), "The file <" + stored + "> is unreachable");
  }

  const std::string unopenable = dir.file("no-such-folder/cansimu.log");
  setEnvironment("CANSIMU_LOG", unopenable);
  testing::internal::CaptureStderr();
  runSession(benches);
  const std::string reported = testing::internal::GetCapturedStderr();
  EXPECT_NE(reported.find("CANSIMU_LOG"), std::string::npos) << reported;
  const size_t named = reported.find(unopenable);
  ASSERT_NE(named, std::string::npos) << reported;
  EXPECT_EQ(reported.find(unopenable, named + 1), std::string::npos) << "reported once";
  EXPECT_EQ(linesOf(logPath).size(), 3u);
  setEnvironment("CANSIMU_LOG", "");
}

// Lines cost no write of their own, yet a reader of the file sees them while
// the driver lives without another call: every few milliseconds by the
// library's writer, or as their call returns and before it waits when
// CANSIMU_FLUSH is "call" (for readers that follow the file call by call).
// Whatever is pending is in the file when CAN_DrvEnd returns.
TEST(LogFile, LinesReachTheFileWithoutAnotherCallAndAllOfThemAtDriverEnd) {
  struct Mode {
    const char *flush;
    bool atReturn; // each call's lines are in the file when it returns
  };
  for (const Mode mode : {Mode{"call", true}, Mode{"", false}}) {
    SCOPED_TRACE(std::string("CANSIMU_FLUSH=") + mode.flush);
    TempDir dir;
    const std::string logPath = dir.file("cansimu.log");
    const std::string bench = dir.file("bench.xml");
    std::ofstream(bench) << "<BENCH><CAN_SERIALNUMBER>SIMU-1</CAN_SERIALNUMBER></BENCH>";
    setEnvironment("CANSIMU_LOG", logPath);
    setEnvironment("CANSIMU_FLUSH", mode.flush);
    LibraryLoader library(CANSIMU_LIBRARY_PATH);
    ASSERT_TRUE(library.loaded()) << library.error();
    setEnvironment("CANSIMU_LOG", "");
    auto init = reinterpret_cast<Init>(library.symbol("CAN_DrvInit"));
    auto end = reinterpret_cast<End>(library.symbol("CAN_DrvEnd"));
    auto read = reinterpret_cast<DriverRead>(library.symbol("CAN_DrvRxMsg"));
    auto waitForLines = [&](size_t count) {
      for (int look = 0; look < 500 && linesOf(logPath).size() < count; ++look)
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
      return linesOf(logPath).size();
    };
    ASSERT_EQ(init(dir.file("missing.xml").c_str()), E_SUCCESS);
    if (mode.atReturn) {
      EXPECT_EQ(linesOf(logPath).size(), 1u) << "the call's line, as it returns";
    }
    EXPECT_EQ(waitForLines(1), 1u) << "the call's line, with no other call";
    end();
    ASSERT_EQ(init(bench.c_str()), E_SUCCESS);
    // An edit the next read applies, with a line, then waits.
    std::ofstream(bench) << "<BENCH><CAN_SERIALNUMBER>SIMU-2</CAN_SERIALNUMBER></BENCH>";
    setModificationTime(bench, 2000000000);
    std::thread reader([&] {
      CAN_EventDrv *event = nullptr;
      uint32_t pending = 0;
      EXPECT_EQ(read(&event, &pending, 1500), E_NO_EVENT);
    });
    bool seenWhileWaiting = false;
    for (int look = 0; look < 100 && !seenWhileWaiting; ++look) {
      std::this_thread::sleep_for(std::chrono::milliseconds(10));
      const auto lines = linesOf(logPath);
      seenWhileWaiting =
          !lines.empty() && lines.back().find("re-read: applied") != std::string::npos;
    }
    reader.join();
    EXPECT_TRUE(seenWhileWaiting) << "the re-read line reached the file during the wait";
    // Lines logged just before the driver ends are written by its end.
    end();
    ASSERT_EQ(init(dir.file("missing-too.xml").c_str()), E_SUCCESS);
    end();
    const auto lines = linesOf(logPath);
    ASSERT_FALSE(lines.empty());
    EXPECT_NE(lines.back().find("missing-too.xml"), std::string::npos) << lines.back();
  }
  setEnvironment("CANSIMU_FLUSH", "");
}
