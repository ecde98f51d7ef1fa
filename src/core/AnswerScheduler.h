// Answers that become readable later: records built when the request came,
// held here until they are due, then pushed into their queue by one thread.
// The thread starts with the first delayed answer; the port owns the
// scheduler and stops it before its queues and channels go, so no record
// outlives what it is for.
//
// Records are delivered under the scheduler's lock: once cancel() returns,
// no record of that owner is being pushed, and the owner may be destroyed.
// The order of records due at the same time is the order of scheduling.
#pragma once

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <map>
#include <memory>
#include <mutex>
#include <thread>

class AnswerScheduler {
public:
  using Clock = std::chrono::steady_clock;

  // One record on its way: delivered once when due, or destroyed unread
  // (its destructor then releases what the record carries).
  class Delayed {
  public:
    explicit Delayed(const void *owner) : owner(owner) {}
    virtual ~Delayed() = default;
    // Pushes the record into its queue; the record then belongs there.
    virtual void deliver() = 0;
    const void *const owner;
  };

  AnswerScheduler() = default;
  ~AnswerScheduler();
  AnswerScheduler(const AnswerScheduler &) = delete;
  AnswerScheduler &operator=(const AnswerScheduler &) = delete;

  // Holds `record` until `due`. False when the scheduler is stopped or its
  // thread cannot start: the record is then destroyed undelivered.
  bool schedule(Clock::time_point due, std::unique_ptr<Delayed> record);
  // Destroys every record `owner` still waits for; returns how many.
  size_t cancel(const void *owner);
  // Destroys every waiting record and ends the thread; nothing more is
  // taken.
  void stop();
  // Records waiting now.
  size_t waiting() const;

private:
  void run();

  mutable std::mutex lock;
  std::condition_variable wake;
  std::multimap<Clock::time_point, std::unique_ptr<Delayed>> records;
  std::thread worker;
  bool stopped = false;
};
