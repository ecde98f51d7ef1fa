// The driver event queue as a host sees it through the exports.
#include "cansimu/cansimu.h"
#include "support/EventRecords.h"

#include <gtest/gtest.h>

#include <chrono>
#include <thread>

namespace {

using Clock = std::chrono::steady_clock;

class DriverQueue : public ::testing::Test {
protected:
  CAN_EventDrv *event = nullptr;
  uint32_t pending = 99;
  void SetUp() override { ASSERT_EQ(CAN_DrvInit(nullptr), E_SUCCESS); }
  void TearDown() override { CAN_DrvEnd(); }
  CAN_STATUS read(uint32_t timeoutMs) { return CAN_DrvRxMsg(&event, &pending, timeoutMs); }
  uint32_t readType() {
    EXPECT_EQ(read(1000), E_SUCCESS);
    const uint32_t type = event == nullptr ? 0xDEAD : event->type;
    CAN_DrvFreeRxMsg(event);
    return type;
  }
};

} // namespace

TEST_F(DriverQueue, NullPointersGive21BeforeTheTimeoutCheckGives4) {
  EXPECT_EQ(CAN_DrvRxMsg(nullptr, &pending, 10), E_NULL_POINTER);
  EXPECT_EQ(CAN_DrvRxMsg(&event, nullptr, 10), E_NULL_POINTER);
  EXPECT_EQ(CAN_DrvRxMsg(nullptr, &pending, 0), E_NULL_POINTER);
  EXPECT_EQ(CAN_DrvRxMsg(&event, &pending, 0), E_INVALID);
  EXPECT_EQ(pending, 99u) << "a refused call writes nothing";
}

TEST_F(DriverQueue, AnEmptyQueueTimesOutWith3AfterTheTimeout) {
  event = reinterpret_cast<CAN_EventDrv *>(this);
  const auto start = Clock::now();
  EXPECT_EQ(read(200), E_NO_EVENT);
  EXPECT_GE(std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - start).count(),
            195);
  EXPECT_EQ(event, nullptr);
  EXPECT_EQ(pending, 0u);
}

TEST_F(DriverQueue, RecordsComeOldestFirstWithTheCountOfThoseLeftBehind) {
  setNextCANStatus("CAN_DrvRxMsg", 100, 1);
  CAN_DrvEndFifo();
  setNextCANStatus("CAN_DrvRxMsg", 101, 2);
  const uint32_t expectedTypes[] = {100, 0, 101};
  for (uint32_t i = 0; i < 3; ++i) {
    ASSERT_EQ(read(60000), E_SUCCESS);
    EXPECT_EQ(event->type, expectedTypes[i]);
    EXPECT_EQ(pending, 2 - i);
    CAN_DrvFreeRxMsg(event);
  }
}

TEST_F(DriverQueue, EndFifoFromAnotherThreadWakesABlockedReaderWithAllZeroWords) {
  std::thread other([] {
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
    CAN_DrvEndFifo();
  });
  const CAN_STATUS status = read(60000);
  other.join();
  ASSERT_EQ(status, E_SUCCESS);
  EXPECT_TRUE(isEndMarker(*event));
  EXPECT_EQ(pending, 0u);
  CAN_DrvFreeRxMsg(event);
}

TEST_F(DriverQueue, AReadAfterOneThatDidNotWaitReturns3AtOnceOnTheStaleSignal) {
  CAN_DrvEndFifo();
  ASSERT_EQ(read(60000), E_SUCCESS);
  CAN_DrvFreeRxMsg(event);
  // Had this read waited, it would receive the marker pushed later.
  std::thread later([] {
    std::this_thread::sleep_for(std::chrono::milliseconds(500));
    CAN_DrvEndFifo();
  });
  EXPECT_EQ(read(60000), E_NO_EVENT);
  later.join();
  EXPECT_EQ(readType(), 0u) << "the queue goes on working after an end marker";
}

TEST(DriverLifecycle, EndTwiceAndEndWithoutADriverAreHarmless) {
  int anything = 0;
  setLogCriticalMethod(&anything); // log setters accept anything
  setLogWarningMethod(nullptr);
  EXPECT_EQ(CAN_DrvFreeRxMsg(nullptr), E_SUCCESS);
  CAN_DrvEnd();
  CAN_DrvEnd();
  ASSERT_EQ(CAN_DrvEndFifo(), E_SUCCESS) << "creates a driver";
  CAN_DrvEnd();
  CAN_DrvEnd();
  CAN_EventDrv *event = nullptr;
  uint32_t pending = 0;
  EXPECT_EQ(CAN_DrvRxMsg(&event, &pending, 10), E_NO_EVENT) << "a fresh driver has no marker";
  CAN_DrvEnd();
}
