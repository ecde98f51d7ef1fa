// Where each answer came from: the log line that follows an ECU's answer
// names the scenario entry (file, line, pattern, place in the rotation) or
// why there was none, and the lines the exchange always wrote keep their
// texts and order.
#include "ChannelFixture.h"

#include <string>
#include <vector>

using namespace channel_test;
using AnswerSource = ChannelTest;

namespace {

// A scenario file's lines: the XML declaration, the root, then one line per
// EVENEMENT from line 3 on.
constexpr unsigned kFirstEventLine = 3;

struct SourceCase {
  const char *what;
  std::string scenarioXml; // empty: the UCE names a file that does not exist
  uint32_t channelType;
  const char *request;
  // The expected end of the "Answer source" line; <file> stands for the
  // scenario's path.
  std::string source;
};

std::string replaced(std::string text, const std::string &from, const std::string &to) {
  const size_t at = text.find(from);
  return at == std::string::npos ? text : text.replace(at, from.size(), to);
}

} // namespace

TEST_F(AnswerSource, EachKindOfAnswerNamesItsEntryOrWhyThereWasNone) {
  const std::string scripted =
      ScenarioFile().event("1003", {"5003"}).event("22F1??", {"62F19041", "62F19042"}).xml();
  const std::string closing =
      ScenarioFile().event("1003", {"5003"}).event("OPENDIALOG", {"TRUE", "FALSE"}).xml();
  const std::string line = std::to_string(kFirstEventLine + 1);
  const std::string dialogLine = std::to_string(kFirstEventLine + 1);
  const SourceCase cases[] = {
      {"an entry", scripted, CHN_ONE_TO_ONE, "22F190",
       "entry <file>:" + line + " 22F1??, response 1 of 2"},
      {"no entry, negative fallback", scripted, CHN_ONE_TO_ONE, "2201",
       "no entry: negative fallback"},
      {"no entry on a broadcast channel", scripted, CHN_BROADCAST, "2201",
       "no entry: not answered on this channel"},
      {"the second dialog check finds it closed", closing, CHN_BROADCAST, "1003",
       "dialog closed: OPENDIALOG answered FALSE at <file>:" + dialogLine},
      {"a scenario that does not parse", "<SCENARIO>\n<EVENEMENT>\n</SCENARIO>\n", CHN_ONE_TO_ONE,
       "1003",
       "no entry: negative fallback (the scenario <file> does not parse: line 3: "
       "Start-end tags mismatch)"},
      {"no scenario file", "", CHN_BROADCAST, "1003", "no scenario: the file could not be read"},
  };
  int number = 0;
  for (const SourceCase &c : cases) {
    const std::string path = dir.file("ecu" + std::to_string(++number) + ".xml");
    if (!c.scenarioXml.empty())
      writeFile(path, c.scenarioXml);
    startWith("<UCE scenario='" + path + "' targetAddress='10' idRx='7E8' idTx='7E0'/>",
              {{0x10, 0x7E0, 0x7E8}});
    CAN_CHN_HANDLE channel = create(c.channelType);
    ASSERT_EQ(configure(channel, 0x10), E_SUCCESS) << c.what;
    // Opening the session makes the first dialog check (a broadcast one
    // through the exchange of its start frame).
    ASSERT_EQ(CAN_ChnOpenSession(channel), E_SUCCESS) << c.what;
    const size_t before = log.lines().size();
    ASSERT_EQ(send(channel, c.request), E_SUCCESS) << c.what;
    const std::vector<std::string> lines = log.lines();
    const std::string expected = "Answer source: ECU 7e0/7e8, request " + std::string(c.request) +
                                 ": " + replaced(c.source, "<file>", "<" + path + ">");
    ASSERT_GT(lines.size(), before) << c.what;
    EXPECT_EQ(lines.back(), expected) << c.what;
    CAN_DrvEnd();
  }
}

// The new line comes after the lines an answer always had, which keep
// their order; one line per ECU on a broadcast channel, each naming its ECU.
TEST_F(AnswerSource, FollowsTheAnswerLinesOfEachEcu) {
  startWith(ecu("7E0", "7E8", ScenarioFile().event("3E00", {"7E00"}), "engine", "10") +
                ecu("710", "77A", ScenarioFile().event("3E00", {"7E00"}), "gateway", "01"),
            {{0x10, 0x7E0, 0x7E8}, {0x01, 0x710, 0x77A}});
  CAN_CHN_HANDLE channel = openChannel(CHN_BROADCAST, 0x10);
  const size_t before = log.lines().size();
  ASSERT_EQ(send(channel, "3E00"), E_SUCCESS);
  const std::vector<std::string> lines = log.lines();
  const std::vector<std::string> sent(lines.begin() + before, lines.end());
  const std::string entry = ":" + std::to_string(kFirstEventLine) + " 3E00, response 1 of 1";
  EXPECT_EQ(sent, (std::vector<std::string>{"Call to CAN_ChnSendDiag()", "Broadcast Request [3E00]",
                                            "Response [7E00]", "Frame [7E00]",
                                            "Answer source: ECU 7e0/7e8, request 3E00: entry <" +
                                                dir.file("engine.xml") + ">" + entry,
                                            "Response [7E00]", "Frame [7E00]",
                                            "Answer source: ECU 710/77a, request 3E00: entry <" +
                                                dir.file("gateway.xml") + ">" + entry}));
}
