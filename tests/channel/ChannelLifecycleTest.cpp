// Channels from creation to free: the frame of the family, the create rules,
// how ECUs move between the free set and channels, the state table.
#include "ChannelFixture.h"
#include "port/SimuPort.h"
#include "support/EventRecords.h"

using namespace channel_test;
using ChannelLifecycle = ChannelTest;

TEST_F(ChannelLifecycle, ABroadcastChannelCanOnlyBeThePortsFirst) {
  startWith("", {});
  CAN_CHN_HANDLE out = &out;
  EXPECT_NE(create(CHN_BROADCAST), nullptr);
  EXPECT_EQ(CAN_ChnCreate(port, CHN_BROADCAST, 0, &out), E_CHANNEL_REFUSED);
  EXPECT_EQ(out, &out) << "no handle written";
  EXPECT_NE(create(CHN_ONE_TO_ONE), nullptr);
  EXPECT_NE(create(7), nullptr);
  CAN_DrvEnd();
  startWith("", {});
  create(CHN_ONE_TO_ONE);
  EXPECT_EQ(CAN_ChnCreate(port, CHN_BROADCAST, 0, &out), E_CHANNEL_REFUSED);
}

// One-to-one configurations take their ECU out of the free set (two may
// share it); a broadcast one takes all that is free; a free gives back; a
// reconfiguration drops the old ECUs without giving them back.
TEST_F(ChannelLifecycle, EcusMoveBetweenTheFreeSetAndTheChannels) {
  const ScenarioFile empty;
  startWith(
      ecu("7E0", "7E8", empty, "a") + ecu("7E1", "7E9", empty, "b") + ecu("7E2", "7EA", empty, "c"),
      {{0x10, 0x7E0, 0x7E8}, {0x11, 0x7E1, 0x7E9}, {0x10, 0x7E2, 0x7EA}, {0x33, 0x7FF, 0x7FF}});
  SimuPort &bus = simuPort();
  CAN_CHN_HANDLE first = create(CHN_ONE_TO_ONE);
  CAN_CHN_HANDLE second = create(CHN_ONE_TO_ONE);
  EXPECT_EQ(configure(first, 0x10), E_SUCCESS) << "the first entry of the address wins";
  EXPECT_EQ(configure(second, 0x10), E_SUCCESS) << "shared";
  EXPECT_EQ(bus.freeEcuCount(), 2u);
  EXPECT_EQ(configure(second, 0x11), E_SUCCESS);
  EXPECT_EQ(bus.freeEcuCount(), 1u) << "0x7E0 stays with the first channel";
  for (const uint8_t unknown : {0x33, 0x44}) {
    EXPECT_EQ(configure(first, unknown), E_INVALID);
    EXPECT_EQ(log.count("Warn : no simulation file found for ecu at addr $" +
                        std::string(unknown == 0x33 ? "33" : "44") +
                        " or ecu addr information not referenced in Assoc table"),
              1u);
  }
  EXPECT_EQ(bus.freeEcuCount(), 1u) << "0x7E0 was dropped, not given back";
  EXPECT_EQ(CAN_ChnFree(second), E_SUCCESS);
  EXPECT_EQ(bus.freeEcuCount(), 2u);
  EXPECT_EQ(CAN_ChnFree(first), E_SUCCESS);
  CAN_CHN_HANDLE broadcast = create(CHN_BROADCAST);
  EXPECT_EQ(configure(broadcast, 0x99), E_SUCCESS) << "takes what is free, any address";
  EXPECT_EQ(bus.freeEcuCount(), 0u);
  EXPECT_EQ(configure(broadcast, 0x99), E_INVALID) << "nothing left to take";
}

// Which operation each state allows; refusals change nothing.
TEST_F(ChannelLifecycle, TheStateTableDecidesEachOperation) {
  startWith(ecu("7E0", "7E8", ScenarioFile().event("3E", {"7E"}), "a"), {{0x10, 0x7E0, 0x7E8}});
  CAN_CHN_HANDLE channel = create(CHN_ONE_TO_ONE);
  // Created: only configure, end marker and free.
  EXPECT_EQ(CAN_ChnOpenSession(channel), E_INVALID);
  EXPECT_EQ(CAN_ChnCloseSession(channel), E_INVALID);
  EXPECT_EQ(send(channel, "3E"), E_INVALID);
  EXPECT_EQ(log.count("1-1 Request"), 0u);
  EXPECT_EQ(CAN_ChnEndFifo(channel), E_SUCCESS);
  EXPECT_TRUE(isEndMarker(*nextEvent(channel)));
  // Configured.
  ASSERT_EQ(configure(channel, 0x10), E_SUCCESS);
  EXPECT_EQ(CAN_ChnCloseSession(channel), E_INVALID);
  EXPECT_EQ(send(channel, "3E"), E_INVALID);
  // Open: sending, reconfiguring; no end marker, no free.
  ASSERT_EQ(CAN_ChnOpenSession(channel), E_SUCCESS);
  EXPECT_EQ(CAN_ChnEndFifo(channel), E_INVALID);
  EXPECT_EQ(CAN_ChnFree(channel), E_INVALID);
  EXPECT_EQ(configure(channel, 0x55), E_INVALID) << "fails, stays open without an ECU";
  EXPECT_EQ(send(channel, "3E"), E_SUCCESS);
  EXPECT_TRUE(channelQueueIsEmpty(channel)) << "no ECU left to answer";
  EXPECT_EQ(CAN_ChnOpenSession(channel), E_INVALID) << "no ECU accepts the dialog";
  EXPECT_EQ(send(channel, "3E"), E_INVALID) << "closed by the failed opening";
  EXPECT_EQ(configure(channel, 0x10), E_SUCCESS) << "found in the table, though no longer free";
  EXPECT_EQ(CAN_ChnCloseSession(channel), E_INVALID) << "still closed";
  EXPECT_EQ(CAN_ChnFree(channel), E_SUCCESS);
  EXPECT_EQ(simuPort().freeEcuCount(), 1u) << "given back";
}

TEST_F(ChannelLifecycle, EnumerationListsChannelsInCreationOrderWithTheirEchoes) {
  startWith(ecu("7E0", "7E8", ScenarioFile(), "a"), {{0x10, 0x7E0, 0x7E8}});
  CAN_CHN_HANDLE open = create(CHN_ONE_TO_ONE);
  create(CHN_ONE_TO_ONE);
  create(9);
  ASSERT_EQ(configure(open, 0x10, "", 0xA1B2C3D4), E_SUCCESS);
  ASSERT_EQ(CAN_ChnOpenSession(open), E_SUCCESS);
  CAN_EnumList list = {};
  ASSERT_EQ(CAN_ChnEnumerate(port, &list), E_SUCCESS);
  ASSERT_EQ(list.count, 3u);
  const auto *info = static_cast<CAN_ChnInfo *>(list.records);
  EXPECT_EQ(info[0].echoWord, 0xA1B2C3D4u);
  EXPECT_EQ(info[0].echoByte1 * 0x10000 + info[0].echoByte2 * 0x100 + info[0].ecuAddress, 0xB1B210);
  EXPECT_EQ(info[0].sessionOpen, 1u);
  EXPECT_EQ(info[1].ecuAddress + info[1].echoWord + info[1].sessionOpen, 0u) << "never configured";
  EXPECT_EQ(info[2].channelType, 9u);
  free(list.records);
}
