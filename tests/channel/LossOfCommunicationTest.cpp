// The bench's opt-in loss of communication: while the box is unplugged, a
// channel meets a dead bus (a send failure with the request, no session);
// without the setting, or plugged in, the channel answers as always.
#include "ChannelFixture.h"

#include <string>

using namespace channel_test;
using LossOfCommunication = ChannelTest;

namespace {

struct CutCase {
  const char *what;
  const char *attribute;
  bool unplugged;
  uint32_t eventType;
  bool sessionOpens;
};

std::string state(const std::string &attribute, bool plugged) {
  return "<CAN_DEVICESTATE " + attribute + ">" + (plugged ? "DEV_TYPE_RCON" : "DEV_TYPE_RDISC") +
         "</CAN_DEVICESTATE>";
}

} // namespace

TEST_F(LossOfCommunication, OnlyTheSettingAndAnUnpluggedBoxCutTheChannels) {
  const CutCase cases[] = {
      {"set and unplugged", "lossOfCom='1'", true, CHN_TYPE_SEND_FAILED_LOSSOFCOM, false},
      {"set, plugged in", "lossOfCom='1'", false, CHN_TYPE_RCV_SUCCESS, true},
      {"not set, unplugged", "", true, CHN_TYPE_RCV_SUCCESS, true},
      {"another value, unplugged", "lossOfCom='yes'", true, CHN_TYPE_RCV_SUCCESS, true},
  };
  for (const CutCase &c : cases) {
    SCOPED_TRACE(c.what);
    const std::string unit =
        ecu("7E0", "7E8", ScenarioFile().event("22F190", {"62F19041"}), "engine", "10");
    startWith(state(c.attribute, true) + unit, {{0x10, 0x7E0, 0x7E8}});
    CAN_CHN_HANDLE channel = openChannel(CHN_ONE_TO_ONE, 0x10);
    if (c.unplugged) {
      edit(state(c.attribute, false) + unit);
      EXPECT_EQ(queues::next<CAN_EventDev>(device, 100)->type, DEV_TYPE_DISCONNECTED);
    }
    ASSERT_EQ(send(channel, "22F190"), E_SUCCESS);
    ChannelEvent answer = nextEvent(channel);
    EXPECT_EQ(answer->type, c.eventType);
    if (c.eventType == CHN_TYPE_SEND_FAILED_LOSSOFCOM) {
      const auto *copy = static_cast<const CAN_DiagMsg *>(answer->request);
      ASSERT_NE(copy, nullptr);
      EXPECT_EQ(copy->length, 3u);
      EXPECT_EQ(copy->data[0], 0x22);
      EXPECT_EQ(answer->data, nullptr);
    }
    CAN_CHN_HANDLE second = create(CHN_ONE_TO_ONE);
    ASSERT_EQ(configure(second, 0x10), E_SUCCESS);
    EXPECT_EQ(CAN_ChnOpenSession(second) == E_SUCCESS, c.sessionOpens);
    CAN_DrvEnd();
  }
}
