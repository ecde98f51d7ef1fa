// The port event queue: injected types with their payloads, the end marker,
// and the release of records (the sanitizer build proves nothing leaks).
#include "support/BusFixture.h"
#include "support/EventRecords.h"

#include <cstring>
#include <vector>

using namespace bus_test;
using PortEvents = BusTest;

namespace {
std::vector<unsigned char> payloadBytes(const CAN_EventPort &event, size_t size) {
  const auto *bytes = static_cast<const unsigned char *>(event.data);
  return bytes == nullptr ? std::vector<unsigned char>()
                          : std::vector<unsigned char>(bytes, bytes + size);
}
std::vector<unsigned char> withValue(size_t size,
                                     std::vector<std::pair<size_t, unsigned char>> set) {
  std::vector<unsigned char> bytes(size, 0);
  for (const auto &[offset, value] : set)
    bytes[offset] = value;
  return bytes;
}
} // namespace

// In mode 0 the getters behind 311, 313 and 320 would refuse; injected
// events fill their payloads all the same.
TEST_F(PortEvents, EachInjectedTypeCarriesItsPayloadInQueueOrder) {
  start("<VOLTAGES VBatt='12.5'/>");
  CAN_ParamPort params = {};
  params.param1 = 9;
  params.param6 = 0x01020304;
  ASSERT_EQ(CAN_PrtSetCanParam(port, &params), E_SUCCESS);
  ASSERT_EQ(CAN_DevSetMode(device, 0, &detail), E_SUCCESS);
  CAN_MesPhysPort measures = {};
  measures.batteryVoltage = 12.5f;
  const unsigned char state[] = {0, 0, 0, 0, 1, 0, 0, 0, 1, 0, 0, 0, 0, 0, 0, 0, 0, 0xFF, 0, 0};
  const std::vector<unsigned char> paramBytes(reinterpret_cast<unsigned char *>(&params),
                                              reinterpret_cast<unsigned char *>(&params) + 20);
  const std::vector<unsigned char> measureBytes(reinterpret_cast<unsigned char *>(&measures),
                                                reinterpret_cast<unsigned char *>(&measures) + 24);
  const struct {
    uint32_t type;
    std::vector<unsigned char> payload;
  } cases[] = {
      {300, {0xAB}},
      {322, {0xAB}},
      {307, withValue(16, {{0, 0xAB}, {4, 1}})},
      {321, withValue(16, {{0, 0xAB}, {4, 1}})},
      {310, withValue(12, {{0, 0xAB}})},
      {311, paramBytes},
      {312, {0xAB, 0}},
      {313, std::vector<unsigned char>(state, state + 20)},
      {314, withValue(12, {{0, 0xAB}})},
      {315, withValue(8, {{0, 0xAB}})},
      {320, measureBytes},
      {323, std::vector<unsigned char>(28, 0)},
      {324, {}},
      {325, {}},
      {400, withValue(24, {{0, 0xAB}})},
      {401, std::vector<unsigned char>(24, 0)},
  };
  for (uint32_t ignored : {299u, 326u, 399u, 402u, 0xFFFFFFFFu})
    setNextCANStatus("CAN_PrtRxMsg", ignored, 0xAB);
  for (const auto &expected : cases)
    setNextCANStatus("CAN_PrtRxMsg", expected.type, 0x1AB);
  for (const auto &expected : cases) {
    PortEvent event = nextEvent();
    ASSERT_EQ(event->type, expected.type);
    EXPECT_EQ(payloadBytes(*event, expected.payload.size()), expected.payload) << expected.type;
    EXPECT_EQ(event->reserved1 + event->reserved2 + event->reserved3 + event->reserved4, 0u);
  }
  EXPECT_TRUE(portQueueIsEmpty()) << "unknown types queue nothing";
  // Records nobody reads are released with the port.
  for (const auto &expected : cases)
    setNextCANStatus("CAN_PrtRxMsg", expected.type, 1);
}

TEST_F(PortEvents, EndMarkerIsQueuedWhateverTheConnectionButOnlyReadWhileConnected) {
  start("");
  simuPort().setDeviceConnected(false);
  EXPECT_EQ(CAN_PrtEndFifo(port), E_SUCCESS);
  setNextCANStatus("CAN_PrtRxMsg", PRT_TYPE_ENDFIFO, 5);
  CAN_EventPort *event = reinterpret_cast<CAN_EventPort *>(&event);
  uint32_t pending = 77;
  EXPECT_EQ(CAN_PrtRxMsg(port, &event, &pending, 10000), E_DISCONNECTED) << "at once";
  EXPECT_EQ(pending, 77u) << "untouched";
  simuPort().setDeviceConnected(true);
  EXPECT_TRUE(isEndMarker(*nextEvent()));
  EXPECT_TRUE(isEndMarker(*nextEvent())) << "the injected one, its value dropped";
  EXPECT_TRUE(portQueueIsEmpty());
}

// The harness may inject before the host ever initialised the library.
TEST_F(PortEvents, AnInjectionBeforeInitCreatesTheDriverAndQueuesOnItsPort) {
  ASSERT_EQ(SimuDriver::existing(), nullptr);
  setNextCANStatus("CAN_PrtRxMsg", 303, 0x42);
  ASSERT_NE(SimuDriver::existing(), nullptr);
  ASSERT_EQ(CAN_DevReservation("", &device), E_SUCCESS) << "no configuration: an empty name";
  ASSERT_EQ(CAN_PrtReservation(device, 96, &port), E_SUCCESS);
  PortEvent event = nextEvent();
  EXPECT_EQ(event->type, 303u);
  EXPECT_EQ(*static_cast<unsigned char *>(event->data), 0x42);
}
