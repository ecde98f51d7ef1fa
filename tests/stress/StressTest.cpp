// A host's threads all at once: a reader blocked on every queue, senders on
// several channels, raw frames, a harness arming statuses and injecting
// events, and a tester rewriting the configuration and the scenarios so
// that re-reads happen under traffic. Every answer and every injected event
// must arrive exactly once; under ThreadSanitizer nothing may race. One ECU
// answers late (a delay, response-pending answers) to a one-to-one channel,
// the broadcast channel and raw frames at once, while its file is re-read.
#include "support/BusFixture.h"

#include <atomic>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <map>
#include <mutex>
#include <regex>
#include <string>
#include <thread>
#include <vector>

using namespace bus_test;

namespace {

const int kRequests = 400;   // per sender
const int kFrames = 400;     // raw frames
const int kInjections = 200; // per queue level
const int kRewrites = 60;

// Counts what one reader took, by event type and frame text.
struct Tally {
  std::mutex lock;
  std::map<std::string, int> counts;
  void add(const std::string &key) {
    std::lock_guard<std::mutex> guard(lock);
    ++counts[key];
  }
  int of(const std::string &key) {
    std::lock_guard<std::mutex> guard(lock);
    return counts.count(key) != 0 ? counts[key] : 0;
  }
};

// Saves a file as an editor does, whole and at once: the library never reads
// it half written, and its modification time only moves forward.
void replaceFile(const std::string &path, const std::string &content, long long time) {
  const std::string fresh = path + ".new";
  writeFile(fresh, content);
  setModificationTime(fresh, time);
  // Windows refuses the rename while the library has the file open.
  std::error_code failed;
  for (int attempt = 0; attempt < 1000; ++attempt) {
    std::filesystem::rename(fresh, path, failed);
    if (!failed)
      return;
    std::this_thread::yield();
  }
  FAIL() << "cannot replace " << path << ": " << failed.message();
}

// Reads the queue of `handle` until its end marker, counting each event
// under the key `keyOf` gives it.
template <class Event, class Key> void readUntilEnd(void *handle, Tally &tally, Key keyOf) {
  for (;;) {
    const queues::Owned<Event> event = queues::take<Event>(handle, 50);
    if (!event)
      continue;
    if (event->type == 0)
      return;
    tally.add(keyOf(*event));
  }
}
template <class Event> std::string typeOf(const Event &event) { return std::to_string(event.type); }

class Stress : public BusTest {
protected:
  std::string scenarioXml(const std::string &answer) {
    return ScenarioFile().event("3E00", {answer}).event("2201", {answer + "01"}).xml();
  }
  // The late ECU: tester present after 3 ms, 2201 after a pending answer.
  std::string delayedScenarioXml() {
    return ScenarioFile()
        .raw("<EVENEMENT delay='3'><REQUETE><TRAME>3E00</TRAME></REQUETE>"
             "<REPONSE><TRAME>7E03</TRAME></REPONSE></EVENEMENT>")
        .raw("<EVENEMENT pending='1' every='2'><REQUETE><TRAME>2201</TRAME></REQUETE>"
             "<REPONSE><TRAME>62010D</TRAME></REPONSE></EVENEMENT>")
        .xml();
  }
  std::string units() {
    std::string xml;
    const char *ids[][3] = {
        {"a", "7E0", "7E8"}, {"b", "7E1", "7E9"}, {"c", "7E2", "7EA"}, {"d", "7E3", "7EB"}};
    for (const auto &id : ids)
      xml += "<UCE scenario='" + dir.file(std::string(id[0]) + ".xml") +
             "' targetAddress='1' idTx='" + id[1] + "' idRx='" + id[2] + "'/>";
    // Every thread logs and traces while the writer thread writes.
    return xml + "<LOGFILE>stress.log</LOGFILE><TRACEFILE>stress-bus.log</TRACEFILE>";
  }
  // Each ECU answers with its own text, the same at every rewrite.
  void writeScenarios(long long time) {
    const char *answers[][2] = {{"a", "7E00"}, {"b", "7E01"}, {"c", "7E02"}};
    for (const auto &answer : answers) {
      const std::string path = dir.file(std::string(answer[0]) + ".xml");
      replaceFile(path, scenarioXml(answer[1]), time);
    }
    replaceFile(dir.file("d.xml"), delayedScenarioXml(), time);
  }
};

} // namespace

TEST_F(Stress, EveryAnswerAndInjectedEventArrivesOnceWhileFilesChangeUnderTraffic) {
  writeScenarios(fileTime);
  start(units(), 1);
  const std::vector<CAN_AssocEntry> entries = {{{}, 0x10, {}, 0x7E0, 0x7E8, 0},
                                               {{}, 0x11, {}, 0x7E1, 0x7E9, 0},
                                               {{}, 0x12, {}, 0x7E2, 0x7EA, 0},
                                               {{}, 0x13, {}, 0x7E3, 0x7EB, 0}};
  const CAN_AssocTable table = {4, const_cast<CAN_AssocEntry *>(entries.data())};
  AssocResult result;
  ASSERT_EQ(CAN_PrtLoadAssocTable(port, &table, &result), E_SUCCESS);
  // The broadcast channel first (it takes every free ECU), then one-to-one
  // channels that find their ECUs through the table.
  CAN_CHN_HANDLE channels[4] = {};
  const uint32_t types[4] = {CHN_BROADCAST, CHN_ONE_TO_ONE, CHN_ONE_TO_ONE, CHN_ONE_TO_ONE};
  const uint8_t addresses[4] = {0, 0x10, 0x11, 0x13};
  for (int i = 0; i < 4; ++i) {
    ASSERT_EQ(CAN_ChnCreate(port, types[i], 0, &channels[i]), E_SUCCESS);
    CAN_ChnConfigRec config = {};
    config.ecuAddress = addresses[i];
    ASSERT_EQ(CAN_ChnConfig(channels[i], &config), E_SUCCESS);
    ASSERT_EQ(CAN_ChnOpenSession(channels[i]), E_SUCCESS);
  }
  ASSERT_EQ(CAN_DevSetMode(device, 2, &detail), E_SUCCESS);

  std::vector<std::thread> readers;
  Tally driver, box, bus, chn[4];
  readers.emplace_back([&] { readUntilEnd<CAN_EventDrv>(nullptr, driver, typeOf<CAN_EventDrv>); });
  readers.emplace_back([&] { readUntilEnd<CAN_EventDev>(device, box, typeOf<CAN_EventDev>); });
  readers.emplace_back([&] {
    readUntilEnd<CAN_EventPort>(port, bus, [](const CAN_EventPort &event) {
      return event.type == PRT_TYPE_FRAME ? "frame " + frameHex(event) : typeOf(event);
    });
  });
  for (int i = 0; i < 4; ++i)
    readers.emplace_back([&, i] {
      readUntilEnd<CAN_EventChn>(channels[i], chn[i], [](const CAN_EventChn &event) {
        if (event.type != CHN_TYPE_RCV_SUCCESS)
          return typeOf(event);
        const auto *answer = static_cast<CAN_ChnResult *>(event.data);
        return queues::hexOf(answer->frameData, answer->frameLength);
      });
    });

  std::vector<std::thread> workers;
  std::atomic<int> refused{0};
  for (int i = 0; i < 4; ++i)
    workers.emplace_back([&, i] {
      uint8_t bytes[2] = {0x3E, 0x00};
      const CAN_DiagMsg request = {0, 2, bytes};
      for (int n = 0; n < kRequests; ++n)
        if (CAN_ChnSendDiag(channels[i], &request) != E_SUCCESS)
          ++refused;
    });
  for (const uint32_t canId : {0x7E2u, 0x7E3u})
    workers.emplace_back([&, canId] {
      const CAN_FramePort frame = frameTo(canId, {0x22, 0x01});
      uint8_t frameDetail = 0;
      for (int n = 0; n < kFrames; ++n)
        if (CAN_PrtSendTrame(port, &frame, &frameDetail) != E_SUCCESS)
          ++refused;
    });
  workers.emplace_back([&] {
    CAN_StatePort state;
    for (int n = 0; n < kInjections; ++n) {
      setNextCANStatus("CAN_DrvRxMsg", 100, n);
      setNextCANStatus("CAN_DevRxMsg", DEV_TYPE_STATUS, n);
      setNextCANStatus("CAN_PrtRxMsg", 300, n);
      setNextCANStatus("CAN_PrtPortGetState", 77, 0);
      if (CAN_PrtPortGetState(port, &state) != 77u)
        ++refused;
    }
  });
  workers.emplace_back([&] {
    for (int n = 0; n < kRewrites; ++n) {
      ++fileTime;
      replaceFile(configPath, bench(units() + (n % 2 == 0 ? "<VOLTAGES VBatt='12.5'/>" : "")).xml(),
                  fileTime);
      writeScenarios(fileTime);
      std::this_thread::yield();
    }
  });
  for (auto &worker : workers)
    worker.join();
  // The late answers are all delivered before the end markers go.
  while (simuPort().delayedAnswersWaiting() != 0)
    std::this_thread::sleep_for(std::chrono::milliseconds(5));

  // Every queue gets its end marker; the channels' sessions close first.
  EXPECT_EQ(CAN_DrvEndFifo(), E_SUCCESS);
  EXPECT_EQ(CAN_DevEndFifo(device), E_SUCCESS);
  EXPECT_EQ(CAN_PrtEndFifo(port), E_SUCCESS);
  for (CAN_CHN_HANDLE channel : channels) {
    EXPECT_EQ(CAN_ChnCloseSession(channel), E_SUCCESS);
    EXPECT_EQ(CAN_ChnEndFifo(channel), E_SUCCESS);
  }
  for (auto &reader : readers)
    reader.join();

  EXPECT_EQ(refused, 0);
  EXPECT_GT(simuPort().freeEcuCount(), 0u) << "the configuration was re-read under traffic";
  EXPECT_EQ(driver.of("100"), kInjections);
  EXPECT_EQ(box.of(std::to_string(DEV_TYPE_STATUS)), kInjections);
  EXPECT_EQ(bus.of("300"), kInjections);
  EXPECT_EQ(bus.of("frame 7E0201"), kFrames) << "the table keeps the first ECU on 0x7E2";
  for (const char *answer : {"7E00", "7E01", "7E02"})
    EXPECT_EQ(chn[0].of(answer), kRequests) << answer;
  EXPECT_EQ(chn[0].of(std::to_string(CHN_TYPE_END_OF_RCV)), kRequests + 1) << "and the opening";
  EXPECT_EQ(chn[1].of("7E00"), kRequests);
  EXPECT_EQ(chn[2].of("7E01"), kRequests);
  EXPECT_EQ(chn[0].of("7E03"), kRequests) << "the late ECU on the broadcast channel";
  EXPECT_EQ(chn[3].of("7E03"), kRequests) << "the late ECU on its own channel";
  EXPECT_EQ(bus.of("frame 7F2278"), kFrames) << "the late ECU's pending answers";
  EXPECT_EQ(bus.of("frame 62010D"), kFrames) << "and its answers";

  // Lines from every thread reach the files whole, none lost at the end.
  CAN_DrvEnd();
  const std::regex logLine(R"(\d{4}-\d\d-\d\d \d\d:\d\d:\d\d\.\d{3} MERIDAX: .*)");
  const std::regex traceLine(R"(\(\d+\.\d{6}\) can0 [0-9A-F]{3}#[0-9A-F]*)");
  int lateFrames = 0, lateAnswers = 0, traced = 0;
  std::ifstream log(dir.file("stress.log")), trace(dir.file("stress-bus.log"));
  for (std::string line; std::getline(log, line);) {
    ASSERT_TRUE(std::regex_match(line, logLine)) << line;
    lateFrames += line.find("[7eb]  Response : 62010D") != std::string::npos ? 1 : 0;
    lateAnswers += line.find("Response [7E03]") != std::string::npos ? 1 : 0;
  }
  for (std::string line; std::getline(trace, line); ++traced)
    ASSERT_TRUE(std::regex_match(line, traceLine)) << line;
  EXPECT_EQ(lateFrames, kFrames);
  EXPECT_EQ(lateAnswers, kRequests * 2) << "broadcast and one-to-one";
  EXPECT_GT(traced, kFrames * 2);
}
