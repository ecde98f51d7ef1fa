// The names the program shows and checks are the library's own: each channel
// event type and result code name of its tables selects, in a typed answer,
// the value it gives the name; each DETBAUDRATE text it accepts is played as
// that status, and any other status name as E_INVALID; each injection it
// accepts names an export and an event type its level queues.
#include "channel/ChannelFixture.h"
#include "names/InjectionNames.h"
#include "names/StatusNames.h"

#include <cstdio>
#include <fstream>
#include <set>
#include <string>
#include <utility>
#include <vector>

using namespace channel_test;

namespace {

std::string twoDigits(size_t value) {
  char text[8];
  std::snprintf(text, sizeof text, "%02X", static_cast<unsigned>(value));
  return text;
}

class CliNames : public ChannelTest {};

} // namespace

TEST_F(CliNames, TypedAnswers_SelectTheTypeAndResultCodeTheProgramNames) {
  std::vector<std::pair<std::string, uint32_t>> types, codes;
  for (uint32_t type = 0; type <= CHN_TYPE_END_OF_RCV; ++type)
    if (const char *name = channelEventName(type))
      types.emplace_back(name, type);
  for (uint32_t code = 0; code < 256; ++code)
    if (const char *name = resultCodeName(code))
      codes.emplace_back(name, code);
  ASSERT_EQ(types.size(), 14u);
  ASSERT_EQ(codes.size(), 31u);
  // Request 30nn answers with type nn's name, 31nn with result code nn's.
  ScenarioFile scenario;
  for (size_t i = 0; i < types.size(); ++i)
    scenario.event("30" + twoDigits(i), {types[i].first + ",62,cOk"});
  for (size_t i = 0; i < codes.size(); ++i)
    scenario.event("31" + twoDigits(i), {"CHN_TYPE_RCV_SUCCESS,62," + codes[i].first});
  startWith(ecu("7E0", "7E8", scenario, "engine", "10"), {{0x10, 0x7E0, 0x7E8}});
  CAN_CHN_HANDLE channel = openChannel(CHN_ONE_TO_ONE, 0x10);

  for (size_t i = 0; i < types.size(); ++i) {
    ASSERT_EQ(send(channel, "30" + twoDigits(i)), E_SUCCESS);
    EXPECT_EQ(nextEvent(channel)->type, types[i].second) << types[i].first;
  }
  for (size_t i = 0; i < codes.size(); ++i) {
    ASSERT_EQ(send(channel, "31" + twoDigits(i)), E_SUCCESS);
    const ChannelEvent event = nextEvent(channel);
    ASSERT_NE(event->data, nullptr) << codes[i].first;
    EXPECT_EQ(static_cast<const CAN_ChnResult *>(event->data)->resultCode, codes[i].second)
        << codes[i].first;
  }
}

TEST_F(CliNames, DetectionOutcomes_AreTheStatusesTheDetectionPlays) {
  std::string sections;
  std::vector<CAN_STATUS> statuses;
  for (CAN_STATUS status = 0; status < 64; ++status)
    if (const char *name = statusName(status)) {
      sections += "<DETBAUDRATE>" + std::string(name) + "</DETBAUDRATE>";
      statuses.push_back(status);
    }
  start(sections, 1);
  CAN_BaudSearchPort search{};
  search.candidateCount = 1;
  CAN_BaudFoundPort found{};
  // The detection plays the texts in turn, one per call.
  for (CAN_STATUS status : statuses) {
    const char *name = statusName(status);
    EXPECT_EQ(CAN_PrtDetBaudRate(port, &search, &found),
              isDetectionOutcome(name) ? status : E_INVALID)
        << name;
  }
}

namespace {

class CliInjectionNames : public bus_test::BusTest {};

// The event types a level's queue received after one injection of each
// candidate type, in order.
template <class Event> std::vector<uint32_t> typesReceived(void *handle) {
  std::vector<uint32_t> types;
  while (const queues::Owned<Event> event = queues::take<Event>(handle, 1))
    types.push_back(event->type);
  return types;
}

} // namespace

// The program lets a tester inject only the event types each level queues:
// every type up to 1100, and the largest, injected once each, comes back
// from its queue exactly when queuesEventType says so.
TEST_F(CliInjectionNames, QueuedTypes_AreTheTypesEachLevelQueues) {
  start("", 0);
  std::vector<uint32_t> candidates;
  for (uint32_t type = 0; type <= 1100; ++type)
    candidates.push_back(type);
  candidates.push_back(UINT32_MAX);
  const auto inject = [&](const char *name, InjectionRoute route) {
    std::vector<uint32_t> expected;
    for (uint32_t type : candidates) {
      setNextCANStatus(name, type, 0);
      if (queuesEventType(route, type))
        expected.push_back(type);
    }
    return expected;
  };
  const auto driver = inject("CAN_DrvRxMsg", InjectionRoute::DriverQueue);
  EXPECT_EQ(typesReceived<CAN_EventDrv>(nullptr), driver);
  const auto device = inject("CAN_DevRxMsg", InjectionRoute::DeviceQueue);
  EXPECT_EQ(typesReceived<CAN_EventDev>(this->device), device);
  const auto port = inject("CAN_PrtRxMsg", InjectionRoute::PortQueue);
  EXPECT_EQ(typesReceived<CAN_EventPort>(this->port), port);
}

// A name the program takes for an injection is one the library exports,
// spelt as its export list spells it.
TEST(CliInjectionExports, EveryInjectableNameIsAnExport) {
  std::ifstream def(CANSIMU_DEF_FILE);
  std::set<std::string> exports;
  for (std::string word; def >> word;)
    exports.insert(word);
  const std::vector<std::string> names = injectableExports();
  EXPECT_EQ(names.size(), 45u);
  for (const std::string &name : names)
    EXPECT_EQ(exports.count(name), 1u) << name;
}
