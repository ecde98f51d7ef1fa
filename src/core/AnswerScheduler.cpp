#include "core/AnswerScheduler.h"

#include "core/LogMessage.h"
#include "platform/AppendBuffer.h"

#include <new>
#include <system_error>
#include <vector>

AnswerScheduler::~AnswerScheduler() { stop(); }

bool AnswerScheduler::schedule(Clock::time_point due, std::unique_ptr<Delayed> record) {
  std::lock_guard<std::mutex> guard(lock);
  if (stopped)
    return false;
  if (!worker.joinable()) {
    try {
      worker = std::thread(&AnswerScheduler::run, this);
    } catch (const std::system_error &) {
      logMessage(L"Delayed answers: no thread could be started: answer dropped");
      return false;
    }
  }
  try {
    records.emplace(due, std::move(record));
  } catch (const std::bad_alloc &) {
    return false;
  }
  wake.notify_one();
  return true;
}

size_t AnswerScheduler::cancel(const void *owner) {
  // Destroyed after the lock is left: a record's release takes no lock of
  // ours, but it need not run under it either.
  std::vector<std::unique_ptr<Delayed>> dropped;
  {
    std::lock_guard<std::mutex> guard(lock);
    for (auto at = records.begin(); at != records.end();) {
      if (at->second->owner == owner) {
        dropped.push_back(std::move(at->second));
        at = records.erase(at);
      } else {
        ++at;
      }
    }
  }
  return dropped.size();
}

void AnswerScheduler::stop() {
  std::multimap<Clock::time_point, std::unique_ptr<Delayed>> dropped;
  {
    std::lock_guard<std::mutex> guard(lock);
    stopped = true;
    dropped.swap(records);
    wake.notify_one();
  }
  if (worker.joinable())
    worker.join();
}

size_t AnswerScheduler::waiting() const {
  std::lock_guard<std::mutex> guard(lock);
  return records.size();
}

void AnswerScheduler::run() {
  std::unique_lock<std::mutex> guard(lock);
  while (!stopped) {
    if (records.empty()) {
      wake.wait(guard);
      continue;
    }
    const auto first = records.begin();
    // A copy: while the thread waits, cancel() may erase the record whose
    // time this is.
    const Clock::time_point due = first->first;
    if (Clock::now() < due) {
      wake.wait_until(guard, due);
      continue;
    }
    // Delivered under the lock, so that cancel() never races a push.
    std::unique_ptr<Delayed> record = std::move(first->second);
    records.erase(first);
    record->deliver();
    // Lines the answer logged, outside any host call.
    AppendBuffer::callEnds();
  }
}
