// The diagnostic exchange: what each request on a channel queues, decided
// by the ECUs' scenarios, with the exchange's log lines.
#include "ChannelFixture.h"
#include "support/EventRecords.h"

#include <iterator>
#include <string>
#include <vector>

using namespace channel_test;
using DiagnosticExchange = ChannelTest;

namespace {
// Requests 3100, 3101, ... one per case.
std::string requestFor(size_t i) { return "310" + std::string(1, "0123456789ABCDEF"[i % 16]); }
} // namespace

TEST_F(DiagnosticExchange, OneToOneAnswersInRotationAndUnknownRequestsNegatively) {
  startWith(ecu("7E0", "7E8", ScenarioFile().event("22F190", {"62F19041", "62F19042"}), "engine"),
            {{0x10, 0x7E0, 0x7E8}});
  CAN_CHN_HANDLE channel = create(CHN_ONE_TO_ONE);
  ASSERT_EQ(configure(channel, 0x10, "", 0xCAFE), E_SUCCESS);
  ASSERT_EQ(CAN_ChnOpenSession(channel), E_SUCCESS);
  const size_t before = log.lines().size();
  ASSERT_EQ(send(channel, "22F190"), E_SUCCESS);
  const std::vector<std::string> lines = log.lines();
  EXPECT_EQ(std::vector<std::string>(lines.begin() + before, lines.end()),
            (std::vector<std::string>{"Call to CAN_ChnSendDiag()", "1-1 Request [22F190]",
                                      "Response [62F19041]", "Frame [62F19041]",
                                      "Answer source: ECU 7e0/7e8, request 22F190: entry <" +
                                          dir.file("engine.xml") + ">:3 22F190, response 1 of 2"}));
  ASSERT_EQ(send(channel, "22F19000"), E_SUCCESS) << "a longer request matches its prefix";
  ASSERT_EQ(send(channel, "2201"), E_SUCCESS);
  for (const char *expected : {"62F19041", "62F19042", "7F2280"}) {
    ChannelEvent event = nextEvent(channel);
    ASSERT_EQ(event->type, CHN_TYPE_RCV_SUCCESS);
    EXPECT_EQ(resultHex(*event), expected);
    EXPECT_EQ(event->request, nullptr);
    const auto *result = static_cast<CAN_ChnResult *>(event->data);
    EXPECT_EQ(result->resultCode + result->channelType, 0u);
    EXPECT_EQ(result->responderAddress, 0x10);
    EXPECT_EQ(result->echoByte1 * 0x100 + result->echoByte2, 0xB1B2);
    EXPECT_EQ(result->echoWord, 0xCAFEu);
  }
  EXPECT_TRUE(channelQueueIsEmpty(channel));
}

// Each dialog check is a look-up: the opening takes the first answer, each
// request the next, and a closed dialog leaves the request unanswered.
TEST_F(DiagnosticExchange, TheDialogSwitchRotatesWithEveryCheck) {
  const ScenarioFile alternating =
      ScenarioFile().event("OPENDIALOG", {"TRUE", "FALSE"}).event("3E", {"7E"});
  startWith(ecu("7E0", "7E8", alternating, "engine") +
                ecu("7E1", "7E9", ScenarioFile().event("OPENDIALOG", {"FALSE"}), "closed") +
                ecu("7E2", "7EA", ScenarioFile(), ""),
            {{0x10, 0x7E0, 0x7E8}, {0x11, 0x7E1, 0x7E9}, {0x12, 0x7E2, 0x7EA}});
  CAN_CHN_HANDLE channel = openChannel(CHN_ONE_TO_ONE, 0x10);
  ASSERT_EQ(send(channel, "3E"), E_SUCCESS);
  EXPECT_TRUE(channelQueueIsEmpty(channel)) << "the second check answered FALSE";
  ASSERT_EQ(send(channel, "3E"), E_SUCCESS);
  EXPECT_EQ(resultHex(*nextEvent(channel)), "7E");
  for (const uint8_t silent : {0x11, 0x12}) {
    CAN_CHN_HANDLE refused = create(CHN_ONE_TO_ONE);
    ASSERT_EQ(configure(refused, silent), E_SUCCESS);
    EXPECT_EQ(CAN_ChnOpenSession(refused), E_INVALID) << int(silent);
  }
}

// A response names its event type, frame and result code; the type decides
// what the event carries. Empty fields are skipped, unknown names fall back.
TEST_F(DiagnosticExchange, TypedResponsesSelectTheEventTypeItsPayloadAndResultCode) {
  const struct {
    const char *response;
    uint32_t type;
    bool frame, shortResult, copy;
    uint8_t code;
    const char *bytes;
  } cases[] = {
      {"62F190", CHN_TYPE_RCV_SUCCESS, true, false, false, 0, "62F190"},
      {"CHN_TYPE_SEND_FAILED_TIMEOUT,00,cTimeOut", 2002, false, false, true, 0, ""},
      {"CHN_TYPE_RCV_CORRUPTED_FRAME,62F1,cLongueurTrameFausse", 2004, true, false, false, 69,
       "62F1"},
      {"CHN_TYPE_RCV_SUCCESS,,cOk", CHN_TYPE_RCV_SUCCESS, true, false, false, 0, "D8"},
      {"CHN_TYPE_RCV_FAILED_NO_RESPONSE", 2010, false, false, true, 0, ""},
      {"XYZ,62F190", CHN_TYPE_RCV_SUCCESS, true, false, false, 0, "62F190"},
      {"CHN_TYPE_SEND_FAILED_CRNEG,7F22,cBusOff", 2001, false, true, true, 12, ""},
      {"CHN_TYPE_CRSNDDIAGFRAME,00,cNok", 400, false, true, false, 1, ""},
      {",,CHN_TYPE_RCV_SUCCESS_BUT_UNEXPECTED,,0102,,cErreurUsb,cNok", 2009, true, false, false, 64,
       "0102"},
      {"CHN_TYPE_RCV_SUCCESS,62,cnok", CHN_TYPE_RCV_SUCCESS, true, false, false, 0, "62"},
      {"CHN_TYPE_ENDFIFO,00", CHN_TYPE_ENDFIFO, false, false, false, 0, ""},
  };
  ScenarioFile scenario;
  for (size_t i = 0; i < std::size(cases); ++i)
    scenario.event(requestFor(i), {cases[i].response});
  startWith(ecu("7E0", "7E8", scenario, "engine"), {{0x10, 0x7E0, 0x7E8}});
  CAN_CHN_HANDLE channel = openChannel(CHN_ONE_TO_ONE, 0x10);
  for (size_t i = 0; i < std::size(cases); ++i) {
    const auto &expected = cases[i];
    ASSERT_EQ(send(channel, requestFor(i), 0x11223344), E_SUCCESS);
    ChannelEvent event = nextEvent(channel);
    ASSERT_EQ(event->type, expected.type) << expected.response;
    const auto *result = static_cast<CAN_ChnResult *>(event->data);
    EXPECT_EQ(result != nullptr, expected.frame || expected.shortResult) << expected.response;
    if (result != nullptr) {
      EXPECT_EQ(result->resultCode, expected.code) << expected.response;
    }
    if (expected.frame) {
      EXPECT_EQ(resultHex(*event), expected.bytes) << expected.response;
    }
    const auto *copy = static_cast<CAN_DiagMsg *>(event->request);
    ASSERT_EQ(copy != nullptr, expected.copy) << expected.response;
    if (copy != nullptr) {
      EXPECT_TRUE(copy->header == 0x11223344 && copy->length == 2 && copy->data[0] == 0x31);
    }
    if (expected.type == CHN_TYPE_ENDFIFO) {
      EXPECT_TRUE(isEndMarker(*event)) << "a host cannot tell it from the end marker";
    }
  }
}

// A broadcast channel takes every free ECU in configuration order, sends its
// start frame when the session opens (no request to copy then), and ends
// every exchange with END_OF_RCV. An ECU outside the association table
// answers on the port as a CAN frame.
TEST_F(DiagnosticExchange, BroadcastAsksEveryEcuInOrderAndClosesEachExchange) {
  startWith(
      ecu("7E0", "7E8",
          ScenarioFile()
              .event("1003", {"CHN_TYPE_SEND_FAILED_TIMEOUT,00,cTimeOut"})
              .event("3E00", {"7E00"}),
          "a") +
          ecu("7E1", "7E9", ScenarioFile().event("1003", {"5003"}).event("3E00", {"7E01"}), "b") +
          ecu("7E2", "7EA", ScenarioFile().event("3E00", {"CHN_TYPE_RCV_SUCCESS,7E02"}), "c"),
      {{0x10, 0x7E0, 0x7E8}, {0x11, 0x7E1, 0x7E9}});
  CAN_CHN_HANDLE channel = openChannel(CHN_BROADCAST, 0, "1003");
  EXPECT_EQ(log.count("Broadcast Request [1003]"), 1u);
  ChannelEvent failed = nextEvent(channel);
  EXPECT_EQ(failed->type, CHN_TYPE_SEND_FAILED_TIMEOUT);
  EXPECT_EQ(failed->request, nullptr) << "the opening has no host request";
  EXPECT_EQ(resultHex(*nextEvent(channel)), "5003");
  EXPECT_EQ(nextEvent(channel)->type, CHN_TYPE_END_OF_RCV);

  ASSERT_EQ(send(channel, "3E00"), E_SUCCESS);
  std::vector<std::string> answers;
  for (int i = 0; i < 2; ++i) {
    ChannelEvent event = nextEvent(channel);
    answers.push_back(resultHex(*event) + "@" +
                      std::to_string(static_cast<CAN_ChnResult *>(event->data)->responderAddress));
  }
  EXPECT_EQ(answers, (std::vector<std::string>{"7E00@16", "7E01@17"}));
  ChannelEvent end = nextEvent(channel);
  EXPECT_TRUE(end->type == CHN_TYPE_END_OF_RCV && end->data == nullptr && end->request == nullptr);
  PortEvent frame = BusTest::nextEvent();
  EXPECT_EQ(static_cast<CAN_FramePort *>(frame->data)->canId, 0x7EAu);
  EXPECT_EQ(frameHex(*frame), "7E02") << "the frame field of the typed answer";

  ASSERT_EQ(send(channel, "19"), E_SUCCESS);
  EXPECT_EQ(nextEvent(channel)->type, CHN_TYPE_END_OF_RCV) << "no negative answers";
  EXPECT_TRUE(channelQueueIsEmpty(channel));
  // Records nobody reads are released with the port.
  ASSERT_EQ(send(channel, "3E00"), E_SUCCESS);
}

// A frame of up to 4095 bytes travels whole; a longer one is cut and logged.
TEST_F(DiagnosticExchange, AnAnswerLongerThan4095BytesIsCutAndLogged) {
  const std::string whole(8190, 'A');
  startWith(ecu("7E0", "7E8", ScenarioFile().event("21", {whole}).event("22", {whole + "BBBB"}),
                "engine"),
            {{0x10, 0x7E0, 0x7E8}});
  CAN_CHN_HANDLE channel = openChannel(CHN_ONE_TO_ONE, 0x10);
  ASSERT_EQ(send(channel, "21"), E_SUCCESS);
  ASSERT_EQ(send(channel, "22"), E_SUCCESS);
  for (int i = 0; i < 2; ++i) {
    ChannelEvent event = nextEvent(channel);
    const auto *result = static_cast<CAN_ChnResult *>(event->data);
    EXPECT_EQ(result->frameLength, 4095u);
    EXPECT_EQ(result->frameData[4094], 0xAA);
  }
  EXPECT_EQ(log.count("[7e8]  Answer to 22 holds 4097 bytes: cut to 4095"), 1u);
  EXPECT_EQ(log.count("Response [AAAA"), 2u);
  for (const std::string &line : log.lines())
    EXPECT_LE(line.size(), 511u);
  // Records still queued are released when the channel is freed.
  ASSERT_EQ(send(channel, "21"), E_SUCCESS);
  ASSERT_EQ(CAN_ChnCloseSession(channel), E_SUCCESS);
  EXPECT_EQ(CAN_ChnFree(channel), E_SUCCESS);
}
