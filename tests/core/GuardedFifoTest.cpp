// Order, timeouts, the stale signal and a woken reader are checked through
// CAN_DrvRxMsg (tests/host); here, what only many threads show.
#include "core/GuardedFifo.h"

#include <gtest/gtest.h>

#include <thread>

TEST(GuardedFifo, ConcurrentProducersLoseNoRecord) {
  GuardedFifo<int> fifo;
  constexpr int kPerThread = 2000;
  auto produce = [&] {
    for (int i = 0; i < kPerThread; ++i)
      fifo.push(i);
  };
  std::thread a(produce), b(produce);
  int taken = 0, out = 0;
  // A lost record shows as a wait that times out, not as a test that hangs.
  while (taken < 2 * kPerThread) {
    const int result = fifo.popWait(out, 1000);
    if (result == 1)
      break;
    if (result == 0)
      ++taken;
  }
  a.join();
  b.join();
  EXPECT_EQ(taken, 2 * kPerThread);
  EXPECT_TRUE(fifo.isEmpty());
}
