// The driver event queue as a host sees it through the exports. Injected
// events and their order are checked with the bench injections (host).
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
  // Pushes the end marker after `delay` from another thread.
  static std::thread endFifoAfter(std::chrono::milliseconds delay) {
    return std::thread([delay] {
      std::this_thread::sleep_for(delay);
      CAN_DrvEndFifo();
    });
  }
};

} // namespace

TEST_F(DriverQueue, AnEmptyQueueGives3AfterTheTimeoutOrAtOnceOnTheStaleSignal) {
  event = reinterpret_cast<CAN_EventDrv *>(this);
  const auto start = Clock::now();
  EXPECT_EQ(read(200), E_NO_EVENT);
  EXPECT_GE(std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - start).count(),
            195);
  EXPECT_EQ(event, nullptr);
  EXPECT_EQ(pending, 0u);

  // A read that took a record without waiting leaves the push's signal set,
  // so the next read on the empty queue wakes at once with nothing (without
  // the stale signal it would wait out its timeout and fail the test's).
  CAN_DrvEndFifo();
  ASSERT_EQ(read(60000), E_SUCCESS);
  CAN_DrvFreeRxMsg(event);
  EXPECT_EQ(read(200000), E_NO_EVENT);
  // That read reset the signal: this one waits for a marker pushed later.
  std::thread later = endFifoAfter(std::chrono::milliseconds(200));
  ASSERT_EQ(read(60000), E_SUCCESS);
  later.join();
  EXPECT_TRUE(isEndMarker(*event));
  CAN_DrvFreeRxMsg(event);
}

// Each end destroys the driver with its queue; a driver made later starts empty.
TEST_F(DriverQueue, EndTwiceIsHarmlessAndTheNextDriverHasNoOldRecord) {
  ASSERT_EQ(CAN_DrvEndFifo(), E_SUCCESS);
  CAN_DrvEnd();
  CAN_DrvEnd();
  EXPECT_EQ(read(10), E_NO_EVENT);
}
