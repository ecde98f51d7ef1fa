#include "core/GuardedFifo.h"

#include <gtest/gtest.h>

#include <chrono>
#include <thread>

namespace {
struct Record {
  int value;
  int padding[5];
};
using Clock = std::chrono::steady_clock;
long long millisSince(Clock::time_point start) {
  return std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - start).count();
}
} // namespace

TEST(GuardedFifo, PopWait_ReturnsRecordsOldestFirstWithoutWaiting) {
  GuardedFifo<Record> fifo;
  for (int i = 1; i <= 3; ++i)
    ASSERT_EQ(fifo.push(Record{i, {}}), 0);
  EXPECT_EQ(fifo.pendingCount(), 3u);
  Record out{};
  for (int i = 1; i <= 3; ++i) {
    ASSERT_EQ(fifo.popWait(out, 60000), 0);
    EXPECT_EQ(out.value, i);
    EXPECT_EQ(fifo.pendingCount(), static_cast<size_t>(3 - i));
  }
  EXPECT_TRUE(fifo.isEmpty());
}

TEST(GuardedFifo, PopWait_OnAnEmptyQueueTimesOutAfterTheTimeout) {
  GuardedFifo<Record> fifo;
  Record out{42, {}};
  const auto start = Clock::now();
  EXPECT_EQ(fifo.popWait(out, 150), 1);
  EXPECT_GE(millisSince(start), 145);
  EXPECT_EQ(out.value, 42) << "a timed-out read leaves the record out untouched";
}

TEST(GuardedFifo, PopWait_AfterAReadThatDidNotWaitWakesAtOnceOnTheStaleSignal) {
  GuardedFifo<Record> fifo;
  fifo.push(Record{7, {}});
  Record out{};
  ASSERT_EQ(fifo.popWait(out, 60000), 0);
  // The push's signal is still set: the next read wakes, finds nothing.
  out.value = 99;
  EXPECT_EQ(fifo.popWait(out, 60000), -1);
  EXPECT_EQ(out.value, 99);
  // That read reset the signal: now the wait runs its course.
  EXPECT_EQ(fifo.popWait(out, 20), 1);
}

TEST(GuardedFifo, Push_FromAnotherThreadWakesABlockedReaderWhateverTheTimeout) {
  // 0xFFFFFFFF ms overflows a signed 32-bit microsecond count: the reader
  // still waits (and is woken), it does not return at once.
  for (const ACE_UINT32 timeout : {60000u, 0xFFFFFFFFu}) {
    GuardedFifo<Record> fifo;
    Record out{};
    std::thread producer([&] {
      std::this_thread::sleep_for(std::chrono::milliseconds(50));
      fifo.push(Record{5, {}});
    });
    EXPECT_EQ(fifo.popWait(out, timeout), 0);
    producer.join();
    EXPECT_EQ(out.value, 5);
  }
}

TEST(GuardedFifo, Drain_HandsEveryQueuedRecordToTheReleaseInOrder) {
  GuardedFifo<Record> fifo;
  fifo.push(Record{1, {}});
  fifo.push(Record{2, {}});
  std::vector<int> released;
  fifo.drain([&](Record &r) { released.push_back(r.value); });
  EXPECT_EQ(released, (std::vector<int>{1, 2}));
  EXPECT_TRUE(fifo.isEmpty());
}

TEST(GuardedFifo, ConcurrentProducersLoseNoRecord) {
  GuardedFifo<Record> fifo;
  constexpr int kPerThread = 2000;
  std::thread a([&] {
    for (int i = 0; i < kPerThread; ++i)
      fifo.push(Record{1, {}});
  });
  std::thread b([&] {
    for (int i = 0; i < kPerThread; ++i)
      fifo.push(Record{2, {}});
  });
  int taken = 0;
  Record out{};
  while (taken < 2 * kPerThread)
    if (fifo.popWait(out, 1000) == 0)
      ++taken;
  a.join();
  b.join();
  EXPECT_EQ(taken, 2 * kPerThread);
  EXPECT_TRUE(fifo.isEmpty());
}
