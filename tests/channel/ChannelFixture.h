// A host with diagnostic channels: an association table loaded on the port,
// channels created and configured by ECU address, requests sent as hex text
// and channel events released through CAN_ChnFreeRxMsg.
#pragma once

#include "support/BusFixture.h"

#include <string>
#include <vector>

namespace channel_test {

using namespace bus_test;

using ChannelEvent = queues::Owned<CAN_EventChn>;

// One association: the ECU's diagnostic address and its two identifiers.
struct Association {
  uint8_t address;
  uint32_t idTx, idRx;
};

inline std::vector<uint8_t> bytesOf(const std::string &hex) {
  std::vector<uint8_t> bytes;
  for (size_t i = 0; i + 1 < hex.size(); i += 2)
    bytes.push_back(static_cast<uint8_t>(std::stoul(hex.substr(i, 2), nullptr, 16)));
  return bytes;
}

// The frame of a frame-form result, as hex text.
inline std::string resultHex(const CAN_EventChn &event) {
  const auto *result = static_cast<const CAN_ChnResult *>(event.data);
  return result == nullptr ? "" : queues::hexOf(result->frameData, result->frameLength);
}

class ChannelTest : public BusTest {
protected:
  // Starts the bench in mode 1 and loads the association table.
  void startWith(const std::string &sections, const std::vector<Association> &table) {
    start(sections, 1);
    std::vector<CAN_AssocEntry> entries(table.size());
    for (size_t i = 0; i < table.size(); ++i) {
      entries[i].ecuAddress = table[i].address;
      entries[i].idTx = table[i].idTx;
      entries[i].idRx = table[i].idRx;
    }
    const CAN_AssocTable assoc = {static_cast<uint32_t>(entries.size()), entries.data()};
    AssocResult result;
    if (!entries.empty()) {
      ASSERT_EQ(CAN_PrtLoadAssocTable(port, &assoc, &result), E_SUCCESS);
    }
  }
  CAN_CHN_HANDLE create(uint32_t type) {
    CAN_CHN_HANDLE channel = nullptr;
    EXPECT_EQ(CAN_ChnCreate(port, type, 0, &channel), E_SUCCESS);
    return channel;
  }
  CAN_STATUS configure(CAN_CHN_HANDLE channel, uint8_t address, const std::string &start = "",
                       uint32_t echoWord = 0) {
    std::vector<uint8_t> frame = bytesOf(start);
    CAN_ChnConfigRec config = {};
    config.ecuAddress = address;
    config.echoByte1 = 0xB1;
    config.echoByte2 = 0xB2;
    config.echoWord = echoWord;
    config.startFrameLength = static_cast<uint32_t>(frame.size());
    config.startFrame = frame.data();
    return CAN_ChnConfig(channel, &config);
  }
  // A channel of `type`, configured for `address`, its session opened.
  CAN_CHN_HANDLE openChannel(uint32_t type, uint8_t address, const std::string &start = "") {
    CAN_CHN_HANDLE channel = create(type);
    EXPECT_EQ(configure(channel, address, start), E_SUCCESS);
    EXPECT_EQ(CAN_ChnOpenSession(channel), E_SUCCESS);
    return channel;
  }
  CAN_STATUS send(CAN_CHN_HANDLE channel, const std::string &hex, uint32_t header = 0) {
    std::vector<uint8_t> bytes = bytesOf(hex);
    bytes.push_back(0); // a valid pointer for an empty request too
    const CAN_DiagMsg request = {header, static_cast<uint32_t>(hex.size() / 2), bytes.data()};
    return CAN_ChnSendDiag(channel, &request);
  }
  // The next channel event; a zeroed record when none came.
  ChannelEvent nextEvent(CAN_CHN_HANDLE channel, uint32_t timeoutMs = 1000) {
    return queues::next<CAN_EventChn>(channel, timeoutMs);
  }
  bool channelQueueIsEmpty(CAN_CHN_HANDLE channel) {
    return queues::isEmpty<CAN_EventChn>(channel);
  }
};

} // namespace channel_test
