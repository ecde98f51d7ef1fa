// A standard host session run once for every allocation it makes, with that
// allocation failing: nothing may crash or leak (the sanitizer build checks
// the leaks), each call answers with a status the interface documents, and a
// clean session run right after gives exactly its usual results, so no
// failure leaves corrupted state behind.
#include "FailingAllocator.h"
#include "api/InjectionTable.h"
#include "support/FirmwareImages.h"
#include "support/Queues.h"
#include "support/TempDir.h"
#include "support/XmlFiles.h"

#include "cansimu/cansimu.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <set>
#include <string>
#include <vector>

namespace {

// What one session saw, to compare a clean run with the usual results.
// The labels are plain text and numbers, formatted here with the test's
// allocations paused, so that only the library's allocations are counted.
struct Transcript {
  std::vector<std::string> lines;
  // Each call's status, to check against the documented ones.
  std::vector<CAN_STATUS> statuses;
  // The application's version texts before and after the firmware download.
  std::string versionsBefore, versionsAfter;
  void add(const char *what, CAN_STATUS status, long number = -1) {
    note(what, number, status);
    failing_allocator::Paused paused;
    statuses.push_back(status);
  }
  // Something the host received: an event's type and size.
  void note(const char *what, long first, long second = -1) {
    failing_allocator::Paused paused;
    std::string line = what;
    for (long number : {first, second})
      if (number >= 0)
        line += " " + std::to_string(number);
    lines.push_back(line);
  }
};

// Every status a call may give; anything else would be corruption.
const std::set<CAN_STATUS> kDocumented = {0, 1, 2, 3, 4, 6, 7, 9, 13, 15, 18, 19, 21, 22, 26, 27};

// The application's three version texts, or "unread".
std::string applicationTexts(CAN_DEV_HANDLE device) {
  CAN_VersionDev version;
  if (device == nullptr || CAN_DevGetVersion(device, &version) != E_SUCCESS)
    return "unread";
  failing_allocator::Paused paused;
  return std::string(version.appVersion) + "/" + version.appDate + "/" + version.appCheckSum;
}

class Session {
public:
  Session(const std::string &configPath, const std::string &imagePath)
      : configPath_(configPath), imagePath_(imagePath) {}

  Transcript run() {
    Transcript t;
    t.add("init", CAN_DrvInit(configPath_.c_str()));
    CAN_DEV_HANDLE device = nullptr;
    t.add("device", CAN_DevReservation("S", &device));
    t.versionsBefore = applicationTexts(device);
    DownloadResult download = {0, 0};
    t.add("download", device ? CAN_DevBoardTeleFirm(device, imagePath_.c_str(), &download) : 99);
    t.versionsAfter = applicationTexts(device);
    readDevice(t, device);
    CAN_PRT_HANDLE port = nullptr;
    t.add("port", device ? CAN_PrtReservation(device, 96, &port) : 99);
    uint8_t detail = 0;
    t.add("mode 1", device ? CAN_DevSetMode(device, 1, &detail) : 99);
    CAN_AssocEntry entries[2] = {{{}, 0x10, {}, 0x7E0, 0x7E8, 0}, {{}, 0x11, {}, 0x7E1, 0x7E9, 0}};
    const CAN_AssocTable table = {2, entries};
    AssocResult result;
    t.add("assoc", port ? CAN_PrtLoadAssocTable(port, &table, &result) : 99);

    CAN_CHN_HANDLE broadcast = channel(t, port, CHN_BROADCAST, 0);
    CAN_CHN_HANDLE engine = channel(t, port, CHN_ONE_TO_ONE, 0x10);
    exchange(t, engine, {0x22, 0xF1, 0x90});
    exchange(t, engine, {0x19});
    exchange(t, engine, {0x31, 0x01});
    exchange(t, broadcast, {0x3E, 0x00});

    t.add("mode 2", device ? CAN_DevSetMode(device, 2, &detail) : 99);
    const CAN_FramePort frame = {0x7E1, 0, 0, 2, {0x3E, 0x00}, 0};
    t.add("frame", port ? CAN_PrtSendTrame(port, &frame, &detail) : 99);
    setNextCANStatus("CAN_PrtRxMsg", PRT_TYPE_MES_PHYS, 0);
    readPort(t, port);
    setNextCANStatus("CAN_DevGetTension", 7, 0);
    CAN_TensionDev tension;
    t.add("armed tension", device ? CAN_DevGetTension(device, &tension) : 99);
    CAN_EnumList list = {};
    const CAN_STATUS listed = port ? CAN_ChnEnumerate(port, &list) : 99;
    t.add("channels", listed, list.count);
    if (listed == E_SUCCESS)
      std::free(list.records);
    for (CAN_CHN_HANDLE channel : {engine, broadcast}) {
      if (channel == nullptr)
        continue;
      t.add("close", CAN_ChnCloseSession(channel));
      t.add("free", CAN_ChnFree(channel));
    }
    t.add("free port", port ? CAN_PrtFree(port) : 99);
    t.add("free device", device ? CAN_DevFree(device) : 99);
    CAN_DrvEnd();
    return t;
  }

private:
  static CAN_CHN_HANDLE channel(Transcript &t, CAN_PRT_HANDLE port, uint32_t type,
                                uint8_t address) {
    CAN_CHN_HANDLE channel = nullptr;
    if (port == nullptr || CAN_ChnCreate(port, type, 0, &channel) != E_SUCCESS ||
        channel == nullptr)
      return nullptr;
    uint8_t start[] = {0x10, 0x03};
    CAN_ChnConfigRec config = {};
    config.ecuAddress = address;
    config.startFrame = start;
    config.startFrameLength = 2;
    t.add("config", CAN_ChnConfig(channel, &config));
    t.add("open", CAN_ChnOpenSession(channel));
    drain(t, channel);
    return channel;
  }
  // Sends the request's bytes; the transcript names it by its first two.
  static void exchange(Transcript &t, CAN_CHN_HANDLE channel, std::initializer_list<uint8_t> hex) {
    std::vector<uint8_t> bytes;
    {
      failing_allocator::Paused paused;
      bytes.assign(hex);
    }
    const CAN_DiagMsg request = {0, static_cast<uint32_t>(bytes.size()), bytes.data()};
    const long label = bytes[0] << 8 | (bytes.size() > 1 ? bytes[1] : 0);
    t.add("send", channel ? CAN_ChnSendDiag(channel, &request) : 99, label);
    drain(t, channel);
  }
  // Reads what the queue of `handle` holds, handing each event to `note`.
  template <class Event, class Note> static void readAll(void *handle, Note note) {
    uint32_t pending = 0;
    while (handle != nullptr) {
      const queues::Owned<Event> event = queues::take<Event>(handle, 1, &pending);
      if (!event)
        break;
      note(*event);
      if (pending == 0)
        break;
    }
  }
  // The transcript gets each channel event's type and frame length.
  static void drain(Transcript &t, CAN_CHN_HANDLE channel) {
    readAll<CAN_EventChn>(channel, [&](const CAN_EventChn &event) {
      const auto *data = static_cast<CAN_ChnResult *>(event.data);
      const bool frameForm = event.type == CHN_TYPE_RCV_SUCCESS;
      t.note("event", event.type, frameForm && data ? data->frameLength : 0);
    });
  }
  static void readDevice(Transcript &t, CAN_DEV_HANDLE device) {
    long progress = 0;
    readAll<CAN_EventDev>(
        device, [&](const CAN_EventDev &event) { progress += event.type == DEV_TYPE_PROGRESS; });
    t.note("progress events", progress);
  }
  static void readPort(Transcript &t, CAN_PRT_HANDLE port) {
    readAll<CAN_EventPort>(port,
                           [&](const CAN_EventPort &event) { t.note("port event", event.type); });
  }

  std::string configPath_, imagePath_;
};

class AllocationFailures : public ::testing::Test {
protected:
  TempDir dir;
  std::string config, image;
  void SetUp() override {
    image = dir.file("app.bin");
    writeFile(image, firmware::applicationImage("C0DE", "V1.00", "12/03/24"));
    const std::string engine = ScenarioFile()
                                   .event("22F190", {"62F1905746"})
                                   .event("3101", {"CHN_TYPE_SEND_FAILED_CRNEG,7F31,cNok"})
                                   .event("3E00", {"7E00"})
                                   .writeTo(dir.file("engine.xml"));
    const std::string body = ScenarioFile()
                                 .event("3E00", {"7E00"})
                                 .event("1003", {"5003"})
                                 .writeTo(dir.file("body.xml"));
    config =
        ConfigurationFile()
            .section("<CAN_SERIALNUMBER>S</CAN_SERIALNUMBER>")
            .section("<CAN_FIRMWAREVERSION BootVersion='B1' AppVersion='A1'/>")
            .section("<UCE scenario='" + engine + "' targetAddress='1' idRx='7E8' idTx='7E0'/>")
            .section("<UCE scenario='" + body + "' targetAddress='2' idRx='7E9' idTx='7E1'/>")
            .section("<UCE scenario='" + body + "' targetAddress='3' idRx='7EA' idTx='7E2'/>")
            .writeTo(dir.file("bench.xml"));
  }
  // Entries a failed call may have left armed would answer the next session.
  static void clearArmedEntries() {
    ACE_UINT32 status = 0;
    ACE_UINT8 detail = 0;
    takeInjectedStatus("CAN_DevGetTension", status, detail);
  }
};

} // namespace

TEST_F(AllocationFailures, EveryAllocationOfASessionMayFailWithoutCorruptingALaterOne) {
  Session session(config, image);
  failing_allocator::arm(0);
  const Transcript usual = session.run();
  const long allocations = failing_allocator::disarm();
  ASSERT_GT(allocations, 100) << "the session allocates";
  ASSERT_NE(usual.versionsBefore, usual.versionsAfter) << "the download changes the versions";
  long differed = 0;
  for (long failAt = 1; failAt <= allocations; ++failAt) {
    failing_allocator::arm(failAt);
    const Transcript failing = session.run();
    failing_allocator::disarm();
    for (size_t i = 0; i < failing.statuses.size(); ++i)
      ASSERT_TRUE(kDocumented.count(failing.statuses[i]) != 0 || failing.statuses[i] == 99u)
          << "allocation " << failAt << ", call " << i + 1 << " gave " << failing.statuses[i];
    // A download gives all of the image's texts or leaves the old ones.
    if (failing.versionsBefore != "unread") {
      ASSERT_TRUE(failing.versionsAfter == usual.versionsBefore ||
                  failing.versionsAfter == usual.versionsAfter)
          << "allocation " << failAt << " left " << failing.versionsAfter;
    }
    if (failing.lines != usual.lines)
      ++differed;
    clearArmedEntries();
    ASSERT_EQ(session.run().lines, usual.lines) << "after allocation " << failAt << " failed";
  }
  // Most failures must show to the host; a few fall on memory whose loss
  // changes nothing it sees (a log line, a look-up key).
  EXPECT_GT(differed, allocations / 2);
  std::printf("%ld allocation points failed in turn, %ld visibly\n", allocations, differed);
}
