// Lets Ctrl-C end a wait in an ...RxMsg the way a host ends its own reader:
// a watcher thread sees the interrupt and queues an end marker (the level's
// ...EndFifo) on the queue being read, which wakes the blocked reader. The
// reader recognises that marker as the end of its wait and takes it back,
// so no stray marker is left for the next read.
#pragma once

#include "cansimu/cansimu.h"

#include <condition_variable>
#include <cstdint>
#include <functional>
#include <mutex>
#include <thread>

class CancellableWait {
public:
  // `active`: Ctrl-C cuts waits short (the interactive shell); an inactive
  // one never does and starts no thread.
  explicit CancellableWait(bool active);
  ~CancellableWait();
  CancellableWait(const CancellableWait &) = delete;
  CancellableWait &operator=(const CancellableWait &) = delete;

  // Before a read: `wake` queues an end marker on the queue it waits on.
  // False when the reading is over (Ctrl-C came and no marker of ours waits
  // in a queue): the reader stops without reading.
  bool beforeRead(std::function<void()> wake);
  // After a read, with the type of the event it returned (none: no event).
  // True when that event is the marker Ctrl-C queued: the reader frees it
  // and stops. After any other outcome a marker of ours may still wait in
  // the queue, and the next beforeRead lets the reader go on to fetch it.
  bool afterRead(bool gotEvent, uint32_t type);
  // True once Ctrl-C has cut this wait short.
  bool cancelled() const;

private:
  void watch();

  bool active_;
  mutable std::mutex mutex_;
  std::condition_variable stop_;
  bool stopping_ = false;
  bool cancelled_ = false;
  bool markerQueued_ = false;
  std::function<void()> wake_;
  std::thread watcher_;
};

// One read of a queue through `read(event, pending)`, which `wait` (null:
// none) may cut short by calling `wake`. Gives the read's status and event;
// `cut` is true, with no event, when Ctrl-C ended the wait (the marker that
// woke the reader is already freed with `release`).
template <class Event, class Read, class Release>
CAN_STATUS readCancellable(CancellableWait *wait, const std::function<void()> &wake,
                           const Read &read, const Release &release, Event **event,
                           uint32_t *pending, bool &cut) {
  cut = false;
  // A read that returned nothing just as Ctrl-C came leaves the marker for
  // one more read.
  for (int attempt = 0; attempt < 2; ++attempt) {
    if (wait != nullptr && !wait->beforeRead(wake))
      break;
    const CAN_STATUS status = read(event, pending);
    const bool got = status == E_SUCCESS && *event != nullptr;
    if (wait != nullptr && wait->afterRead(got, got ? (*event)->type : 0)) {
      release(*event);
      break;
    }
    if (got || wait == nullptr || !wait->cancelled())
      return status;
  }
  *event = nullptr;
  *pending = 0;
  cut = true;
  return E_NO_EVENT;
}
