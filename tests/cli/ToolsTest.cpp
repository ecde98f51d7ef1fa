// The program's own parsing and wording, where a slip would show a tester a
// wrong value: codes typed in the shell, event payloads, the command line.
#include "Arguments.h"
#include "BenchFile.h"
#include "Errors.h"
#include "FrameText.h"
#include "Records.h"
#include "StatusNames.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>

namespace {

CAN_EventDev deviceEvent(uint32_t type, void *data) {
  CAN_EventDev event{};
  event.type = type;
  event.data = data;
  return event;
}

Arguments parse(std::vector<std::string> words) {
  std::vector<char *> argv;
  static char program[] = "cansimu";
  argv.push_back(program);
  for (std::string &word : words)
    argv.push_back(&word[0]);
  return parseArguments(static_cast<int>(argv.size()), argv.data());
}

} // namespace

// "010" is ten: a leading zero is not octal. A refused text leaves the value
// as it was.
TEST(CliCodes, ParseCode_TakesDecimalHexadecimalAndEveryNameAndNothingElse) {
  const std::pair<const char *, uint32_t> accepted[] = {
      {"27", 27u},
      {"0x1B", 27u},
      {"010", 10u},
      {"4294967295", UINT32_MAX},
      {"E_SUCCESS", 0u},
      {"DEV_TYPE_PROGRESS", DEV_TYPE_PROGRESS},
      {"DRV_TYPE_DEVICE_101", DRV_TYPE_DEVICE_101},
      {"PRT_TYPE_FRAME", PRT_TYPE_FRAME}};
  for (const auto &[text, expected] : accepted) {
    uint32_t value = 12345;
    EXPECT_TRUE(parseCode(text, value) && value == expected) << text;
  }
  for (const char *text : {"", "-1", "+1", "4294967296", "12abc", "0x", "e_busoff", "E_BUSOFF "}) {
    uint32_t value = 12345;
    EXPECT_FALSE(parseCode(text, value)) << "'" << text << "'";
    EXPECT_EQ(value, 12345u) << "'" << text << "'";
  }
}

TEST(CliCodes, Texts_NumberAStatusWithoutANameAndKeepEachQueuesOwnTypes) {
  EXPECT_EQ(statusText(5), "status 5");
  EXPECT_EQ(driverEventName(DEV_TYPE_RESET), nullptr) << "each queue has its own types";
}

TEST(CliRecords, DeviceEvents_DescribeThePayloadOfTheirType) {
  // A progress event carries its value in the data word, not behind it.
  EXPECT_EQ(describeDeviceEvent(deviceEvent(DEV_TYPE_PROGRESS, reinterpret_cast<void *>(44))),
            "DEV_TYPE_PROGRESS (1000), 44 %");
  uint8_t pair[2] = {0x33, 0};
  EXPECT_EQ(describeDeviceEvent(deviceEvent(DEV_TYPE_STATUS_PAIR, pair)),
            "DEV_TYPE_STATUS_PAIR (200), values 0x33, 0x00");
  CAN_EnumDev device{};
  std::strcpy(device.name, "SIMU-7");
  device.disconnected = 1;
  EXPECT_EQ(describeDeviceEvent(deviceEvent(DEV_TYPE_DISCONNECTED, &device)),
            "DEV_TYPE_DISCONNECTED (101), device \"SIMU-7\", free, disconnected");
  EXPECT_EQ(describeDeviceEvent(deviceEvent(150, pair)), "type 150");
}

// A request typed by a tester: hex of either case, whole bytes, at most the
// 4095 bytes a channel carries.
TEST(CliFrames, ParseHexBytes_TakesWholeBytesOfEitherCaseUpTo4095) {
  Bytes bytes;
  std::string why;
  EXPECT_TRUE(parseHexBytes("22f1A0", bytes, why));
  EXPECT_EQ(bytes, (Bytes{0x22, 0xF1, 0xA0}));
  EXPECT_TRUE(parseHexBytes(std::string(2 * 4095, 'F'), bytes, why));
  const std::pair<std::string, const char *> refused[] = {
      {"", "is empty"},
      {"22F19", "has an odd number of hex digits"},
      {"22G1", "is not hex"},
      {"0x22", "is not hex"},
      {std::string(2 * 4096, 'F'), "is longer than 4095 bytes"}};
  for (const auto &[text, reason] : refused) {
    Bytes kept = {1};
    EXPECT_FALSE(parseHexBytes(text, kept, why)) << text;
    EXPECT_EQ(why, reason) << text;
    EXPECT_EQ(kept, Bytes{1}) << "a refused text leaves the bytes as they were";
  }
}

// The service of a positive answer is its first byte less 0x40; a negative
// answer names the service and the code it refuses with.
TEST(CliFrames, AnswerMeaning_NamesServiceAndNegativeCode) {
  const std::pair<Bytes, std::string> answers[] = {
      {{0x62, 0xF1, 0x90}, "positive ReadDataByIdentifier"},
      {{0x7E, 0x00}, "positive TesterPresent"},
      {{0x7F, 0x22, 0x31}, "negative ReadDataByIdentifier: requestOutOfRange (0x31)"},
      {{0x7F, 0x10, 0x80}, "negative DiagnosticSessionControl: code (0x80)"},
      {{0x7F, 0x3F}, "negative service 0x3F"},
      {{0x22, 0xF1}, ""},
      {{}, ""}};
  for (const auto &[bytes, meaning] : answers)
    EXPECT_EQ(answerMeaning(bytes.data(), bytes.size()), meaning) << spacedHex(bytes);
}

// Short frames stay on one line when it fits; frames with text or more than
// 16 bytes go 16 bytes a row with their characters beside them.
TEST(CliFrames, AnswerLines_KeepToTheWidthAndShowTextInRows) {
  const Bytes session = {0x50, 0x03, 0x00, 0x32, 0x01, 0xF4};
  EXPECT_EQ(
      answerLines("ECU 0x10", session.data(), session.size(), 80),
      (std::vector<std::string>{"ECU 0x10: 50 03 00 32 01 F4  positive DiagnosticSessionControl"}));
  EXPECT_EQ(answerLines("ECU 0x10", session.data(), session.size(), 40),
            (std::vector<std::string>{"ECU 0x10: 50 03 00 32 01 F4",
                                      "positive DiagnosticSessionControl"}));
  Bytes vin = {0x62, 0xF1, 0x90};
  for (char c : std::string("VF1SIMU0000000042"))
    vin.push_back(static_cast<uint8_t>(c));
  EXPECT_EQ(
      answerLines("ECU 0x10", vin.data(), vin.size(), 80),
      (std::vector<std::string>{"ECU 0x10, 20 bytes: positive ReadDataByIdentifier",
                                "62 F1 90 56 46 31 53 49 4D 55 30 30 30 30 30 30  b..VF1SIMU000000",
                                "30 30 34 32                                      0042"}));
  EXPECT_EQ(answerLines("from 7E8", nullptr, 0, 80),
            (std::vector<std::string>{"from 7E8: no bytes"}));
}

TEST(CliRecords, VersionTexts_StopAtTheFieldEndWithoutATerminator) {
  CAN_VersionDev version{};
  std::memcpy(version.appVersion, "ABCDEFGHIJK", 11);
  std::strcpy(version.appDate, "02/09/25");
  std::strcpy(version.appCheckSum, "7E21");
  EXPECT_EQ(describeApplicationVersion(version), "ABCDEFGHIJK (02/09/25, 7E21)");
}

TEST(CliArguments, OptionsStandAnywhereNeedTheirValueAndLibraryIsSetApart) {
  const Arguments arguments = parse({"--library", "lib.so", "events", "b.xml", "--seconds", "3"});
  EXPECT_EQ(arguments.command, "events");
  EXPECT_EQ(arguments.positional, std::vector<std::string>{"b.xml"});
  EXPECT_EQ(arguments.library, "lib.so");
  EXPECT_FALSE(arguments.has("--library"));
  EXPECT_EQ(arguments.options.at("--seconds"), "3");
  EXPECT_TRUE(parse({"flash", "-h"}).help);
  EXPECT_THROW(parse({"demo", "--library"}), UsageError);
  EXPECT_EQ(parse({"flash", "b.xml", "-"}).positional.back(), "-") << "'-' is an argument";
  const Arguments ask = parse({"ask", "--frame", "b.xml", "10", "1001"});
  EXPECT_TRUE(ask.has("--frame")) << "a flag takes no value";
  EXPECT_EQ(ask.positional, (std::vector<std::string>{"b.xml", "10", "1001"}));
}

namespace {
// Payloads allocated to their exact size, as the library allocates them, so
// that reading past one shows under the sanitizers.
template <class T> std::shared_ptr<T> exactly(size_t size) {
  return std::shared_ptr<T>(static_cast<T *>(std::calloc(1, size)), std::free);
}
} // namespace

// Each event shows what its type carries and nothing else: a short result
// has no frame fields, a request copy comes back, a port frame carries 8
// bytes at most, an injected port event its value.
TEST(CliRecords, ChannelAndPortEvents_DecodeWhatTheirTypeCarries) {
  uint8_t negative[] = {0x7F, 0x22, 0x31};
  auto frameResult = exactly<CAN_ChnResult>(sizeof(CAN_ChnResult));
  frameResult->responderAddress = 0x10;
  frameResult->frameLength = 3;
  frameResult->frameData = negative;
  CAN_EventChn received{};
  received.type = CHN_TYPE_RCV_SUCCESS;
  received.data = frameResult.get();
  const EventText answer = describeChannelEvent(received, 90);
  EXPECT_EQ(answer.summary, "CHN_TYPE_RCV_SUCCESS (2008)");
  EXPECT_EQ(answer.details,
            std::vector<std::string>{"ECU 0x10, cOk (0): 7F 22 31  negative ReadDataByIdentifier: "
                                     "requestOutOfRange (0x31)"});

  auto shortResult = exactly<CAN_ChnResult>(offsetof(CAN_ChnResult, frameLength));
  shortResult->resultCode = 1;
  shortResult->responderAddress = 0x40;
  uint8_t bytes[10] = {0x22, 0xF1, 0x90};
  CAN_DiagMsg request = {0, sizeof bytes, bytes};
  CAN_EventChn refused{};
  refused.type = CHN_TYPE_SEND_FAILED_CRNEG;
  refused.data = shortResult.get();
  refused.request = &request;
  EXPECT_EQ(describeChannelEvent(refused, 80).details,
            (std::vector<std::string>{
                "ECU 0x40, cNok (1)",
                "with the request 22 F1 90 00 00 00 00 00 ... (ReadDataByIdentifier)"}));
  CAN_EventChn ended{};
  ended.type = CHN_TYPE_END_OF_RCV;
  EXPECT_TRUE(describeChannelEvent(ended, 80).details.empty());

  CAN_FramePort frame{};
  frame.canId = 0x7E8;
  frame.length = 12; // more than a frame holds: only its 8 bytes are read
  std::memset(frame.bytes, 0x11, sizeof frame.bytes);
  CAN_EventPort port{};
  port.type = PRT_TYPE_FRAME;
  port.data = &frame;
  EXPECT_EQ(describePortEvent(port, 80).details,
            std::vector<std::string>{"from 7E8: 11 11 11 11 11 11 11 11"});
  uint8_t value = 0x33;
  port.type = 305;
  port.data = &value;
  EXPECT_EQ(describePortEvent(port, 80).summary, "type 305, value 0x33");
}

// An ECU is named by its address first, then its idTx, then its scenario's
// name; an entry the library skips names nothing.
TEST(CliBench, FindEcu_TriesAddressThenIdTxThenScenarioName) {
  const auto ecu = [](const char *address, uint32_t idTx, const char *scenario) {
    BenchEcu entry;
    entry.targetAddress = address;
    entry.idTx = entry.idRx = "given";
    entry.idTxValue = idTx;
    uint32_t value = 0;
    entry.addressed = parseHexNumber(address, value) && value <= 0xFF;
    entry.address = static_cast<uint8_t>(value);
    entry.scenario = scenario;
    return entry;
  };
  std::vector<BenchEcu> ecus = {ecu("10", 0x7E0, "dir/engine.xml"), ecu("ENG", 0x40, "gw.xml"),
                                ecu("40", 0x745, "body.xml"), ecu("", 0x7E1, "ghost.xml")};
  const std::pair<const char *, const char *> names[] = {
      {"10", "dir/engine.xml"},     {"0x10", "dir/engine.xml"}, {"7e0", "dir/engine.xml"},
      {"Engine", "dir/engine.xml"}, {"40", "body.xml"},         {"gw", "gw.xml"},
      {"745", "body.xml"},          {"ghost", nullptr},         {"7E1", nullptr},
      {"nobody", nullptr}};
  for (const auto &[name, scenario] : names) {
    const BenchEcu *found = findEcu(ecus, name);
    EXPECT_EQ(found != nullptr ? found->scenario : "none", scenario != nullptr ? scenario : "none")
        << name;
  }
  EXPECT_EQ(ecuList(ecus), "0x10 engine, 'ENG' gw, 0x40 body");
}
