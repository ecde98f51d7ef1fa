#include "session/CancellableWait.h"

#include "system/Console.h"

#include <chrono>

namespace {
// How often the watcher looks for Ctrl-C.
constexpr std::chrono::milliseconds kWatchPeriod{20};
} // namespace

CancellableWait::CancellableWait(bool active) : active_(active) {
  if (active_)
    watcher_ = std::thread([this] { watch(); });
}

CancellableWait::~CancellableWait() {
  if (!active_)
    return;
  {
    std::lock_guard<std::mutex> lock(mutex_);
    stopping_ = true;
  }
  stop_.notify_all();
  watcher_.join();
}

void CancellableWait::watch() {
  std::unique_lock<std::mutex> lock(mutex_);
  while (!stopping_) {
    stop_.wait_for(lock, kWatchPeriod);
    if (cancelled_ || !interrupted())
      continue;
    cancelled_ = true;
    // Only a reader waiting on a queue needs waking; between reads the
    // reader sees `cancelled_` itself.
    if (wake_) {
      wake_();
      markerQueued_ = true;
    }
  }
}

bool CancellableWait::beforeRead(std::function<void()> wake) {
  std::lock_guard<std::mutex> lock(mutex_);
  if (cancelled_)
    return markerQueued_;
  wake_ = std::move(wake);
  return true;
}

bool CancellableWait::afterRead(bool gotEvent, uint32_t type) {
  std::lock_guard<std::mutex> lock(mutex_);
  wake_ = nullptr;
  if (!markerQueued_ || !gotEvent || type != 0)
    return false;
  markerQueued_ = false;
  return true;
}

bool CancellableWait::cancelled() const {
  std::lock_guard<std::mutex> lock(mutex_);
  return cancelled_;
}
