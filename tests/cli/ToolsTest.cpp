// The program's own parsing and wording, where a slip would show a tester a
// wrong value: codes typed in the shell, event payloads, the command line.
#include "Arguments.h"
#include "Command.h"
#include "Errors.h"
#include "files/BenchFile.h"
#include "names/InjectionNames.h"
#include "names/StatusNames.h"
#include "output/FrameText.h"
#include "output/Records.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>

namespace {

// An event record of `type` carrying `data`, the rest zero.
template <class Event> Event eventOf(uint32_t type, void *data) {
  Event event{};
  event.type = type;
  event.data = data;
  return event;
}
const auto deviceEvent = eventOf<CAN_EventDev>;

// A few commands with the options they take, as the program lists them.
const std::vector<Command> kCommands = {
    {"demo", "demo", "", "", 0, 1, {}, nullptr},
    {"flash", "flash", "", "", 2, 2, {}, nullptr},
    {"events", "events", "", "", 1, 1, {"--seconds"}, nullptr},
    {"ask", "ask", "", "", 2, SIZE_MAX, {"--broadcast", "--frame"}, nullptr}};

Arguments parse(std::vector<std::string> words) {
  std::vector<char *> argv;
  static char program[] = "cansimu";
  argv.push_back(program);
  for (std::string &word : words)
    argv.push_back(&word[0]);
  return parseArguments(static_cast<int>(argv.size()), argv.data(), kCommands);
}

} // namespace

// "010" is ten: a leading zero is not octal. A number past the bound, a
// negative one too, is out of range, not "not a number"; a refused text
// leaves the value as it was.
TEST(CliCodes, ReadNumber_TakesDecimalAndHexadecimalAndSaysWhyItRefuses) {
  const std::pair<const char *, uint32_t> accepted[] = {
      {"27", 27u}, {"0x1B", 27u}, {"010", 10u}, {"4294967295", UINT32_MAX}};
  for (const auto &[text, expected] : accepted) {
    uint32_t value = 12345;
    EXPECT_TRUE(readNumber(text, UINT32_MAX, value) == NumberReading::Read && value == expected)
        << text;
  }
  const std::pair<const char *, NumberReading> refused[] = {
      {"", NumberReading::NotANumber},
      {"+1", NumberReading::NotANumber},
      {"12abc", NumberReading::NotANumber},
      {"0x", NumberReading::NotANumber},
      {"E_BUSOFF", NumberReading::NotANumber},
      {"4294967296", NumberReading::OutOfRange},
      {"0x100000000", NumberReading::OutOfRange},
      {"-1", NumberReading::OutOfRange}};
  for (const auto &[text, reading] : refused) {
    uint32_t value = 12345;
    EXPECT_EQ(readNumber(text, UINT32_MAX, value), reading) << "'" << text << "'";
    EXPECT_EQ(value, 12345u) << "'" << text << "'";
  }
  uint32_t value = 0;
  EXPECT_EQ(readNumber("3600001", 3600000, value), NumberReading::OutOfRange);
  EXPECT_EQ(numberProblem("3600001", NumberReading::OutOfRange, 3600000),
            "'3600001' is out of range (0 to 3600000)");
}

// An injection as a tester writes it: the status by number or name, for the
// receive exports an event type of their own level that the level queues;
// what the library does with it, or why it would skip it.
TEST(CliInjections, ReadInjection_ChecksNamesValuesAndTypesAndSaysWhatHappens) {
  struct Case {
    const char *name, *status, *detail;
    InjectionProblem problem;
    std::string said; // the effect, or why it is refused
  };
  const Case cases[] = {
      {"CAN_DevGetVersion", "E_BUSOFF", "", InjectionProblem::None,
       "the next CAN_DevGetVersion answers E_BUSOFF (27)"},
      {"CAN_ChnSendDiag", "0x1F4", "E_INVALID", InjectionProblem::None,
       "the next CAN_ChnSendDiag answers status 500, detail 4"},
      {"CAN_DevRxMsg", "DEV_TYPE_RESET", "0x33", InjectionProblem::None,
       "DEV_TYPE_RESET (205) on the device queue, detail 51"},
      {"CAN_PrtRxMsg", "0", "", InjectionProblem::None, "an end marker on the port queue"},
      {"CAN_DrvRxMsg", "DEV_TYPE_RESET", "", InjectionProblem::Value,
       "'DEV_TYPE_RESET' is neither a number nor a driver event type (DRV_TYPE_...)"},
      {"CAN_DevRxMsg", "150", "", InjectionProblem::TypeNotQueued,
       "the device queue takes no event of type 150 (only 0, 101, 102, 200 to 205, 1000)"},
      {"CAN_PrtRxMsg", "326", "", InjectionProblem::TypeNotQueued,
       "the port queue takes no event of type 326 (only 0, 300 to 325, 400, 401)"},
      {"CAN_DevGetVersoin", "4", "", InjectionProblem::Name,
       "'CAN_DevGetVersoin' is not an export of the library (did you mean CAN_DevGetVersion?)"},
      {"CAN_DrvInit", "4", "", InjectionProblem::Name,
       "CAN_DrvInit takes no injection: the library would keep it armed for ever"},
      {"CAN_DevGetMode", "4294967296", "", InjectionProblem::Value,
       "'4294967296' is out of range (0 to 4294967295)"},
      {"CAN_DevGetMode", "4", "E_BUSY", InjectionProblem::Value,
       "detail 'E_BUSY' is neither a number nor a status name"}};
  const auto exported = [](const std::string &name) { return name != "CAN_DevGetVersoin"; };
  for (const Case &c : cases) {
    Injection injection;
    std::string why;
    EXPECT_EQ(readInjection(c.name, c.status, c.detail, exported, injection, why), c.problem)
        << c.name << " " << c.status;
    EXPECT_EQ(c.problem == InjectionProblem::None ? injectionEffect(injection) : why, c.said);
  }
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

// Bytes typed apart as requests are shown make one request; any word longer
// than a byte (or one alone) keeps each word a request of its own.
TEST(CliFrames, RequestTexts_JoinWordsOfOneByteEachOnly) {
  using Words = std::vector<std::string>;
  const std::pair<Words, Words> cases[] = {{{"22", "F1", "90"}, {"22F190"}},
                                           {{"10", "03"}, {"1003"}},
                                           {{"22", "f1", "9a"}, {"22f19a"}},
                                           {{"3E"}, {"3E"}},
                                           {{"22F190", "1003"}, {"22F190", "1003"}},
                                           {{"22", "F190"}, {"22", "F190"}},
                                           {{"22", "G1"}, {"22", "G1"}},
                                           {{"2", "F1"}, {"2", "F1"}}};
  for (const auto &[words, requests] : cases)
    EXPECT_EQ(requestTexts(words), requests) << words.size() << " words from " << words[0];
}

// The service of a positive answer is its first byte less 0x40; a negative
// answer names the service and the code it refuses with.
TEST(CliFrames, AnswerMeaning_NamesServiceAndNegativeCode) {
  const std::pair<Bytes, std::string> answers[] = {
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

// Options stand before or after the command and its arguments; a value
// follows its option or an '='; the last --library wins.
TEST(CliArguments, OptionsStandAnywhereTakeTheirValueEitherWayAndTheLastLibraryWins) {
  const Arguments arguments =
      parse({"--library", "a.so", "events", "b.xml", "--seconds=3", "--library=lib.so"});
  EXPECT_EQ(arguments.command, "events");
  EXPECT_EQ(arguments.positional, std::vector<std::string>{"b.xml"});
  EXPECT_EQ(arguments.library, "lib.so");
  EXPECT_FALSE(arguments.has("--library"));
  EXPECT_EQ(arguments.options.at("--seconds"), "3");
  EXPECT_TRUE(parse({"flash", "-h"}).help);
  EXPECT_EQ(parse({"--log", "x.log", "demo"}).log, "x.log");
  EXPECT_TRUE(parse({"--version"}).version);
  EXPECT_EQ(parse({"flash", "b.xml", "-", "-1"}).positional,
            (std::vector<std::string>{"b.xml", "-", "-1"}))
      << "'-' and negative numbers are arguments";
  const Arguments ask = parse({"ask", "--frame", "b.xml", "10", "1001"});
  EXPECT_TRUE(ask.has("--frame")) << "a flag takes no value";
  EXPECT_EQ(ask.positional, (std::vector<std::string>{"b.xml", "10", "1001"}));
}

TEST(CliArguments, RefusedCommandLinesSayWhatIsWrong) {
  const std::pair<std::vector<std::string>, std::string> refused[] = {
      {{"reboot", "now"}, "unknown command 'reboot'"},
      {{"--fast", "demo"}, "unknown option --fast (see cansimu demo --help)"},
      {{"flash", "b.xml", "--seconds", "2"}, "flash takes no --seconds (see cansimu flash --help)"},
      {{"--frame", "ask", "b.xml"},
       "--frame goes after the command: cansimu ask ... --frame (see cansimu ask --help)"},
      {{"demo", "--library"}, "--library needs a value"},
      {{"events", "b.xml", "--seconds"}, "--seconds needs a value"}};
  for (const auto &[words, message] : refused) {
    try {
      parse(words);
      ADD_FAILURE() << message;
    } catch (const UsageError &error) {
      EXPECT_EQ(error.what(), message);
    }
  }
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
  const EventText answer =
      describeChannelEvent(eventOf<CAN_EventChn>(CHN_TYPE_RCV_SUCCESS, frameResult.get()), 90);
  EXPECT_EQ(answer.summary, "CHN_TYPE_RCV_SUCCESS (2008)");
  EXPECT_EQ(answer.details,
            std::vector<std::string>{"ECU 0x10, cOk (0): 7F 22 31  negative ReadDataByIdentifier: "
                                     "requestOutOfRange (0x31)"});

  auto shortResult = exactly<CAN_ChnResult>(offsetof(CAN_ChnResult, frameLength));
  shortResult->resultCode = 1;
  shortResult->responderAddress = 0x40;
  uint8_t bytes[10] = {0x22, 0xF1, 0x90};
  CAN_DiagMsg request = {0, sizeof bytes, bytes};
  CAN_EventChn refused = eventOf<CAN_EventChn>(CHN_TYPE_SEND_FAILED_CRNEG, shortResult.get());
  refused.request = &request;
  EXPECT_EQ(describeChannelEvent(refused, 80).details,
            (std::vector<std::string>{
                "ECU 0x40, cNok (1)",
                "with the request 22 F1 90 00 00 00 00 00 ... (ReadDataByIdentifier)"}));
  EXPECT_TRUE(describeChannelEvent(eventOf<CAN_EventChn>(CHN_TYPE_END_OF_RCV, nullptr), 80)
                  .details.empty());

  CAN_FramePort frame{};
  frame.canId = 0x7E8;
  frame.length = 12; // more than a frame holds: only its 8 bytes are read
  std::memset(frame.bytes, 0x11, sizeof frame.bytes);
  CAN_EventPort port = eventOf<CAN_EventPort>(PRT_TYPE_FRAME, &frame);
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
