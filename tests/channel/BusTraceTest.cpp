// The bus trace of diagnostic exchanges: requests and answers cut into
// ISO 15765-2 frames on the answering ECU's identifiers, one candump log
// line per frame.
#include "core/BusTrace.h"
#include "ChannelFixture.h"
#include "platform/CodePage.h"

#include <fstream>
#include <regex>
#include <string>
#include <vector>

using namespace channel_test;
using BusTraceTest = ChannelTest;

namespace {

struct TraceCase {
  const char *what;
  uint32_t channelType;
  const char *request;
  const char *answer;
  // "ID#DATA" per frame, in bus order.
  std::vector<std::string> frames;
};

// The trace's lines without their timestamps; each line's form and the
// order of the times are checked on the way.
std::vector<std::string> framesOf(const std::string &path) {
  static const std::regex kLine(R"(^\((\d+)\.(\d{6})\) can0 ([0-9A-F]{3}#[0-9A-F]*)$)");
  std::ifstream file(path);
  std::vector<std::string> frames;
  long long last = 0;
  for (std::string line; std::getline(file, line);) {
    std::smatch parts;
    EXPECT_TRUE(std::regex_match(line, parts, kLine)) << line;
    if (parts.empty())
      continue;
    const long long micros = std::stoll(parts[1]) * 1000000 + std::stoll(parts[2]);
    EXPECT_GE(micros, last) << line;
    last = micros;
    frames.push_back(parts[3]);
  }
  return frames;
}

} // namespace

TEST_F(BusTraceTest, RequestsAndAnswersAreSegmentedOnTheAnsweringEcusIdentifiers) {
  const TraceCase cases[] = {
      {"a 20-byte answer: first frame, the tester's flow control, two consecutive frames",
       CHN_ONE_TO_ONE,
       "22F190",
       "62F1904142434445464748494A4B4C4D4E4F5051",
       {"7E0#0322F190", "7E8#101462F190414243", "7E0#300000", "7E8#214445464748494A",
        "7E8#224B4C4D4E4F5051"}},
      {"a 10-byte request: the ECU's flow control",
       CHN_ONE_TO_ONE,
       "2EF19001020304050607",
       "6EF190",
       {"7E0#100A2EF190010203", "7E8#300000", "7E0#2104050607", "7E8#036EF190"}},
      {"a broadcast request goes on 7D0",
       CHN_BROADCAST,
       "3E00",
       "7E00",
       {"7D0#023E00", "7E8#027E00"}},
      {"an answer without a frame leaves the request alone",
       CHN_ONE_TO_ONE,
       "3101",
       "CHN_TYPE_RCV_FAILED_TIMEOUT",
       {"7E0#023101"}},
  };
  int number = 0;
  for (const TraceCase &c : cases) {
    const std::string trace = dir.file("bus" + std::to_string(++number) + ".log");
    BusTrace::openNamed(toWideString(trace.c_str()), L"the test");
    startWith(ecu("7E0", "7E8", ScenarioFile().event(c.request, {c.answer}), "engine", "10"),
              {{0x10, 0x7E0, 0x7E8}});
    CAN_CHN_HANDLE channel = openChannel(c.channelType, 0x10);
    ASSERT_EQ(send(channel, c.request), E_SUCCESS) << c.what;
    CAN_DrvEnd();
    BusTrace::close();
    EXPECT_EQ(framesOf(trace), c.frames) << c.what;
  }
}
