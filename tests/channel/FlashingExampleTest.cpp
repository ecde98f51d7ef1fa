// The example flashing ECU end to end, as a flashing application talks to
// it: programming session, security access, fingerprint, erase with
// response-pending answers, download, checksum, reset.
#include "ChannelFixture.h"

#include <chrono>
#include <string>
#include <vector>

using namespace channel_test;

namespace {

struct FlashStep {
  const char *request;
  // Every answer the request gets, in order (pending answers first).
  std::vector<const char *> answers;
};

class FlashingExample : public ChannelTest {
protected:
  // The next answer; a read may end early on the signal of a record taken
  // before, so it reads again until the deadline.
  std::string nextAnswer(CAN_CHN_HANDLE channel) {
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(2);
    while (std::chrono::steady_clock::now() < deadline) {
      CAN_EventChn *event = nullptr;
      uint32_t pending = 0;
      if (CAN_ChnRxMsg(channel, &event, &pending, 100) == E_SUCCESS)
        return resultHex(*ChannelEvent(event));
    }
    return "";
  }
};

} // namespace

TEST_F(FlashingExample, AFlashingSequenceRunsThroughAndTheFingerprintSticks) {
  const std::string scenario = std::string(CANSIMU_EXAMPLES_DIR) + "/flasher.xml";
  startWith("<UCE scenario='" + scenario + "' targetAddress='12' idRx='7EA' idTx='7E2'/>",
            {{0x12, 0x7E2, 0x7EA}});
  CAN_CHN_HANDLE channel = openChannel(CHN_ONE_TO_ONE, 0x12);
  const FlashStep steps[] = {
      {"1002", {"7F1022"}}, // programming only from the extended session
      {"1003", {"5003003201F4"}},
      {"1002", {"5002003201F4"}},
      {"3101FF00", {"7F3133"}}, // locked
      {"2711", {"67111F2E3D4C"}},
      {"271245746716", {"6712"}},
      {"2EF15A010203040506070809", {"6EF15A"}},
      {"3101FF00", {"7F3178", "7F3178", "7101FF0000"}},
      {"340044000100000000FF00", {"74200FFF"}},
      {"3601AABBCC", {"7601"}},
      {"3602DDEEFF", {"7602"}},
      {"37", {"77"}},
      {"3101FF01", {"7101FF0100"}},
      {"1101", {"5101"}},
      {"22F15A", {"62F15A010203040506070809"}},
      {"3101FF00", {"7F317F"}}, // back in the default session
  };
  for (const FlashStep &step : steps) {
    ASSERT_EQ(send(channel, step.request), E_SUCCESS) << step.request;
    for (const char *answer : step.answers)
      EXPECT_EQ(nextAnswer(channel), answer) << step.request;
  }
}
