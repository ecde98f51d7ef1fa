// Answers with timing attributes: readable only when due, on a channel and
// on the raw frame path, with response-pending answers ahead of the final
// one; delayed records released when their channel, their port's
// reservation or the driver goes first. (The stress test re-reads the
// late ECU's file while its answers wait.)
#include "ChannelFixture.h"

#include <chrono>
#include <string>
#include <vector>

using namespace channel_test;
using Clock = std::chrono::steady_clock;

namespace {

constexpr uint32_t kReadShortMs = 20;

std::string scenarioWith(const std::string &attributes) {
  return "<?xml version=\"1.0\"?>\n<SCENARIO>\n  <EVENEMENT " + attributes +
         "><REQUETE><TRAME>3101FF00</TRAME></REQUETE><REPONSE><TRAME>7101FF00</TRAME>"
         "</REPONSE></EVENEMENT>\n</SCENARIO>\n";
}

// One answer the host must read, and the least time after the request it
// may be readable.
struct Arrival {
  const char *frame;
  unsigned notBeforeMs;
};

struct TimingCase {
  const char *what;
  const char *attributes;
  bool rawFrames;
  std::vector<Arrival> arrivals;
};

class DelayedAnswer : public ChannelTest {
protected:
  void startEcu(const std::string &attributes, uint32_t mode) {
    const std::string path = dir.file("ecu.xml");
    writeFile(path, scenarioWith(attributes));
    start("<UCE scenario='" + path + "' targetAddress='7A' idRx='7E8' idTx='7E0'/>", mode);
  }
  // The next answer as hex, waiting at most `timeoutMs`; empty when none.
  // A read may end early on the signal of an earlier record: read again
  // until the deadline.
  std::string nextFrame(CAN_CHN_HANDLE channel, uint32_t timeoutMs) {
    const Clock::time_point deadline = Clock::now() + std::chrono::milliseconds(timeoutMs);
    do {
      const auto left =
          std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now());
      const uint32_t wait = left.count() > 0 ? static_cast<uint32_t>(left.count()) : 1;
      const std::string frame = readOnce(channel, wait);
      if (!frame.empty())
        return frame;
    } while (Clock::now() < deadline);
    return "";
  }
  std::string readOnce(CAN_CHN_HANDLE channel, uint32_t timeoutMs) {
    if (channel == nullptr) {
      const PortEvent event = queues::take<CAN_EventPort>(port, timeoutMs);
      return event ? frameHex(*event) : "";
    }
    const ChannelEvent event = queues::take<CAN_EventChn>(channel, timeoutMs);
    return event ? resultHex(*event) : "";
  }
  CAN_CHN_HANDLE channelTo7A() {
    CAN_AssocEntry entry = {{}, 0x7A, {}, 0x7E0, 0x7E8, 0};
    const CAN_AssocTable table = {1, &entry};
    AssocResult result;
    EXPECT_EQ(CAN_PrtLoadAssocTable(port, &table, &result), E_SUCCESS);
    return openChannel(CHN_ONE_TO_ONE, 0x7A);
  }
};

long long msSince(Clock::time_point start) {
  return std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - start).count();
}

} // namespace

TEST_F(DelayedAnswer, AnswersBecomeReadableWhenDueNotBefore) {
  const TimingCase cases[] = {
      {"a delayed answer on a channel", "delay='150'", false, {{"7101FF00", 150}}},
      {"pending answers, then the answer",
       "pending='2' every='100'",
       false,
       {{"7F3178", 0}, {"7F3178", 100}, {"7101FF00", 200}}},
      {"pending answers and a delay on raw frames",
       "pending='1' every='80' delay='70'",
       true,
       {{"7F3178", 0}, {"7101FF00", 150}}},
  };
  for (const TimingCase &c : cases) {
    SCOPED_TRACE(c.what);
    startEcu(c.attributes, c.rawFrames ? 2 : 1);
    CAN_CHN_HANDLE channel = c.rawFrames ? nullptr : channelTo7A();
    const Clock::time_point sent = Clock::now();
    if (c.rawFrames) {
      const CAN_FramePort request = frameTo(0x7E0, {0x31, 0x01, 0xFF, 0x00});
      ASSERT_EQ(CAN_PrtSendTrame(port, &request, &detail), E_SUCCESS);
    } else {
      ASSERT_EQ(send(channel, "3101FF00"), E_SUCCESS);
    }
    for (const Arrival &arrival : c.arrivals) {
      // Not yet due: a short read finds nothing.
      if (static_cast<long long>(arrival.notBeforeMs) > msSince(sent) + kReadShortMs) {
        EXPECT_EQ(nextFrame(channel, kReadShortMs), "") << arrival.frame;
      }
      EXPECT_EQ(nextFrame(channel, 2000), arrival.frame);
      EXPECT_GE(msSince(sent), static_cast<long long>(arrival.notBeforeMs)) << arrival.frame;
    }
    EXPECT_EQ(nextFrame(channel, kReadShortMs), "");
    CAN_DrvEnd();
  }
}

TEST_F(DelayedAnswer, WaitingRecordsGoWithTheirChannelPortOrDriver) {
  startEcu("delay='60000'", 1);
  CAN_CHN_HANDLE channel = channelTo7A();
  for (int i = 0; i < 10000; ++i)
    ASSERT_EQ(send(channel, "3101FF00"), E_SUCCESS);
  EXPECT_EQ(simuPort().delayedAnswersWaiting(), 10000u);
  ASSERT_EQ(CAN_ChnCloseSession(channel), E_SUCCESS);
  ASSERT_EQ(CAN_ChnFree(channel), E_SUCCESS);
  EXPECT_EQ(simuPort().delayedAnswersWaiting(), 0u);

  CAN_DrvEnd();
  startEcu("delay='60000'", 2);
  const CAN_FramePort request = frameTo(0x7E0, {0x31, 0x01, 0xFF, 0x00});
  ASSERT_EQ(CAN_PrtSendTrame(port, &request, &detail), E_SUCCESS);
  EXPECT_EQ(simuPort().delayedAnswersWaiting(), 1u);
  ASSERT_EQ(CAN_PrtFree(port), E_SUCCESS);
  EXPECT_EQ(simuPort().delayedAnswersWaiting(), 0u);
  // And at driver end (TearDown), with answers still waiting: released
  // there, which the sanitizer builds check.
  ASSERT_EQ(CAN_PrtReservation(device, 96, &port), E_SUCCESS);
  ASSERT_EQ(CAN_PrtSendTrame(port, &request, &detail), E_SUCCESS);
}
