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
  while (taken < 2 * kPerThread)
    if (fifo.popWait(out, 1000) == 0)
      ++taken;
  a.join();
  b.join();
  EXPECT_TRUE(fifo.isEmpty());
}
