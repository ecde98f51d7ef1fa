// Raw frames in mode 2: the ECUs a frame's identifier addresses answer as
// PRT_TYPE_FRAME events carrying their idRx, with the frame path's log lines.
#include "support/BusFixture.h"

#include <string>
#include <vector>

using namespace bus_test;
using RawFrames = BusTest;

TEST_F(RawFrames, TheAddressedEcuAnswersWithItsIdRxAndItsLogLines) {
  start(ecu("7E0", "7E8",
            ScenarioFile().event("22F190", {"62F19001"}).event("3E", {"7E00112233445566778899"}),
            "engine") +
            ecu("7E1", "7E9", ScenarioFile().event("22F190", {"62F19002"}), "gearbox") +
            "<NEGATIVE_RESPONSE>31</NEGATIVE_RESPONSE>",
        2);
  const CAN_FramePort request = frameTo(0x7E0, {0x22, 0xF1, 0x90});
  ASSERT_EQ(CAN_PrtSendTrame(port, &request, &detail), E_SUCCESS);
  PortEvent event = nextEvent();
  ASSERT_EQ(event->type, PRT_TYPE_FRAME);
  const auto *frame = static_cast<CAN_FramePort *>(event->data);
  EXPECT_EQ(frame->canId, 0x7E8u);
  EXPECT_EQ(frame->reserved1 + frame->reserved2, 0u);
  EXPECT_EQ(frameHex(*event), "62F19001");
  EXPECT_EQ(frame->bytes[4] + frame->bytes[7], 0) << "bytes past the length are 0";
  // The three lines of an answer, then where it came from.
  EXPECT_EQ(log.lines(),
            (std::vector<std::string>{"CAN frame : 22F190", "[7e8]  Response : 62F19001",
                                      "[7e8]  Response enqueued on port",
                                      "Answer source: ECU 7e0/7e8, request 22F190: entry <" +
                                          dir.file("engine.xml") + ">:3 22F190, response 1 of 1"}));
  // Unknown: the negative answer with the configured code. Too long: cut to 8.
  const CAN_FramePort unknown = frameTo(0x7E0, {0x19, 0x02});
  const CAN_FramePort present = frameTo(0x7E0, {0x3E});
  ASSERT_EQ(CAN_PrtSendTrame(port, &unknown, &detail), E_SUCCESS);
  ASSERT_EQ(CAN_PrtSendTrame(port, &present, &detail), E_SUCCESS);
  EXPECT_EQ(frameHex(*nextEvent()), "7F1931");
  EXPECT_EQ(frameHex(*nextEvent()), "7E00112233445566");
  EXPECT_EQ(log.count("SimuPort::enqueueResponse() : Frame longer than expected!"), 1u);

  // Nobody listens on 0x123: success, one log line, nothing queued.
  const CAN_FramePort nobody = frameTo(0x123, {});
  ASSERT_EQ(CAN_PrtSendTrame(port, &nobody, &detail), E_SUCCESS);
  EXPECT_EQ(log.lines().back(), "CAN frame : ");
  EXPECT_TRUE(portQueueIsEmpty());
}

// 0x7D0 reaches every ECU of the table, bucket idTx % 32 by bucket, the ECU
// bound last first within one; an ECU whose dialog is closed stays silent,
// and one only in the free set (a second ECU on a known idTx) is never asked.
TEST_F(RawFrames, BroadcastReachesEveryEcuOfTheTableInItsOrder) {
  const ScenarioFile closed = ScenarioFile().event("OPENDIALOG", {"FALSE"}).event("3E", {"7E00"});
  auto answering = [](const std::string &text) { return ScenarioFile().event("3E", {text}); };
  start(ecu("7E1", "7E9", answering("01"), "a") + ecu("7E0", "7E8", answering("02"), "b") +
            ecu("7C0", "7C8", answering("03"), "c") + ecu("7A0", "7A8", closed, "d") +
            ecu("7E0", "7F8", answering("05"), "e") + ecu("7A1", "7A9", answering("06"), "f") +
            ecu("7A2", "7AA", ScenarioFile(), ""),
        2);
  const CAN_FramePort request = frameTo(CAN_BROADCAST_ID, {0x3E});
  ASSERT_EQ(CAN_PrtSendTrame(port, &request, &detail), E_SUCCESS);
  std::vector<std::string> answers;
  for (int i = 0; i < 4; ++i) {
    PortEvent event = nextEvent();
    answers.push_back(std::to_string(static_cast<CAN_FramePort *>(event->data)->canId) + ":" +
                      frameHex(*event));
  }
  // 0x7C0 and 0x7E0 share bucket 0 (0x7C0 bound last); 0x7A1 and 0x7E1 bucket 1.
  EXPECT_EQ(answers, (std::vector<std::string>{"1992:03", "2024:02", "1961:06", "2025:01"}));
  EXPECT_TRUE(portQueueIsEmpty());
}

TEST_F(RawFrames, AFrameLongerThanEightBytesIsRefusedUnread) {
  start(ecu("7E0", "7E8", ScenarioFile(), "engine"), 2);
  CAN_FramePort frame = frameTo(0x7E0, {0x10, 0x01});
  frame.length = 0xFFFFFFFF;
  EXPECT_EQ(CAN_PrtSendTrame(port, &frame, &detail), E_NULL_POINTER);
  EXPECT_EQ(log.count("frame length 4294967295 is above 8 bytes"), 1u);
  EXPECT_EQ(log.count("CAN frame"), 0u);
  EXPECT_TRUE(portQueueIsEmpty());
}
