// A first-in-first-out queue of event records shared between the host thread
// that produces events and the host thread that waits for them.
//
// Two recursive mutexes guard it: every operation takes entryLock, then
// queueLock, releases entryLock at once and works holding queueLock alone.
// An auto-reset event wakes a waiting reader; no lock is held while waiting.
// Because push signals even when nobody waits and only a waited read resets
// the event, a read that took a record without waiting leaves the signal set:
// the next read on an empty queue wakes at once and finds nothing (-1).
#pragma once

#include "platform/AppendBuffer.h"

#include <ace/OS_NS_Thread.h>
#include <ace/Recursive_Thread_Mutex.h>
#include <ace/Time_Value.h>
#include <ace/Unbounded_Queue.h>

#include <cstddef>
#include <cstdlib>
#include <new>

template <class T> class GuardedFifo {
public:
  // ACE's queue allocates a node, and its event the event's state, when they
  // are made; without memory either is unusable and would fail on first use.
  // A fifo whose parts could not be made says so (usable() false): it then
  // refuses every record and a read finds nothing at once. Owners check it
  // right after construction.
  GuardedFifo() {
    eventMade_ =
        ACE_OS::event_init(&signal_, 0 /* auto reset */, 0 /* not signalled */, USYNC_THREAD) == 0;
    // ACE's allocator throws where the library installed its own, and
    // otherwise leaves the queue without its node.
    try {
      queue_ = new Queue;
    } catch (const std::bad_alloc &) {
      return;
    }
    if (!queue_->hasNode()) {
      ::operator delete(queue_);
      queue_ = nullptr;
    }
  }
  virtual ~GuardedFifo() {
    if (eventMade_)
      ACE_OS::event_destroy(&signal_);
    delete queue_;
  }
  GuardedFifo(const GuardedFifo &) = delete;
  GuardedFifo &operator=(const GuardedFifo &) = delete;

  // False when construction ran out of memory.
  bool usable() const { return queue_ != nullptr && eventMade_; }

  // Appends a copy of the record and sets the signal (also when the append
  // failed). 0, or -1 when no memory was left for the list node.
  int push(const T &record) {
    if (!usable())
      return -1;
    QueueGuard guard(*this);
    int appended = -1;
    try {
      appended = queue_->enqueue_tail(record) == 0 ? 0 : -1;
    } catch (const std::bad_alloc &) {
      // The caller still owns the record and releases it.
    }
    ACE_OS::event_signal(&signal_);
    return appended;
  }

  // Takes the oldest record into `out`. When the queue is empty, waits up to
  // timeoutMs for a push. 0 = a record was taken, 1 = the wait timed out,
  // -1 = woken but the queue was empty (`out` untouched).
  int popWait(T &out, ACE_UINT32 timeoutMs) {
    if (!usable())
      return -1;
    if (!isEmpty()) {
      QueueGuard guard(*this);
      return queue_->dequeue_head(out) == 0 ? 0 : -1;
    }
    // The wait is computed in 64-bit microseconds so that every 32-bit
    // timeout waits exactly as long as it says.
    const ACE_UINT64 micros = static_cast<ACE_UINT64>(timeoutMs) * 1000u;
    const ACE_Time_Value relative(static_cast<time_t>(micros / 1000000u),
                                  static_cast<suseconds_t>(micros % 1000000u));
    ACE_Time_Value wait = relative;
    // What the call logged reaches the log file before it waits.
    AppendBuffer::callEnds();
    if (ACE_OS::event_timedwait(&signal_, &wait, 0 /* relative time */) != 0)
      return 1;
    QueueGuard guard(*this);
    const int taken = queue_->dequeue_head(out) == 0 ? 0 : -1;
    ACE_OS::event_reset(&signal_);
    return taken;
  }

  // The timed read behind every level's ...RxMsg: the oldest record, in a
  // calloc'd copy that the host owns until its level's ...FreeRxMsg, with the
  // number of records still queued behind it in `pending`. Null (and
  // `pending` 0) when no record came within the timeout. Without memory for
  // the copy the queue is left alone, so nothing is lost.
  T *popForHost(ACE_UINT32 timeoutMs, ACE_UINT32 &pending) {
    pending = 0;
    T *record = static_cast<T *>(std::calloc(1, sizeof(T)));
    if (record == nullptr)
      return nullptr;
    if (popWait(*record, timeoutMs) != 0) {
      std::free(record);
      return nullptr;
    }
    pending = static_cast<ACE_UINT32>(pendingCount());
    return record;
  }

  // Number of records queued.
  size_t pendingCount() {
    QueueGuard guard(*this);
    return usable() ? queue_->size() : 0;
  }

  bool isEmpty() {
    QueueGuard guard(*this);
    return !usable() || queue_->is_empty();
  }

  // Removes every queued record, handing each to `release` in queue order,
  // so an owner can free the payloads of records nobody will read.
  template <class Release> void drain(Release release) {
    QueueGuard guard(*this);
    T record;
    while (usable() && queue_->dequeue_head(record) == 0)
      release(record);
  }

private:
  // Takes entryLock, then queueLock, and gives entryLock back at once.
  class QueueGuard {
  public:
    explicit QueueGuard(GuardedFifo &fifo) : fifo_(fifo) {
      fifo_.entryLock_.acquire();
      acquireSoon(fifo_.queueLock_);
      fifo_.entryLock_.release();
    }
    ~QueueGuard() { fifo_.queueLock_.release(); }
    QueueGuard(const QueueGuard &) = delete;
    QueueGuard &operator=(const QueueGuard &) = delete;

  private:
    GuardedFifo &fifo_;
  };

  class Queue : public ACE_Unbounded_Queue<T> {
  public:
    bool hasNode() const { return this->head_ != nullptr; }
  };

  // A push signals the reader while it still holds queueLock, so a reader
  // woken by it finds queueLock held for the moment the push needs to
  // return. Trying a little before blocking spares that reader a sleep and a
  // second wake-up, which cost more than the wait itself.
  static void acquireSoon(ACE_Recursive_Thread_Mutex &lock) {
    for (int attempt = 0; attempt < 200; ++attempt)
      if (lock.tryacquire() == 0)
        return;
    lock.acquire();
  }

  ACE_Recursive_Thread_Mutex queueLock_;
  ACE_Recursive_Thread_Mutex entryLock_;
  Queue *queue_ = nullptr;
  // The auto-reset event that wakes a waiting reader.
  ACE_event_t signal_;
  bool eventMade_ = false;
};
