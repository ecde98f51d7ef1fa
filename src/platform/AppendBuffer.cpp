#include "platform/AppendBuffer.h"

#include "platform/FileSystem.h"
#include "platform/LibraryHooks.h"

#include <chrono>
#include <condition_variable>
#include <new>
#include <system_error>
#include <thread>

namespace {

// The buffers of the process (the log file and the bus trace); constant-
// initialised, so that registration works from any static constructor.
const std::size_t kMaxBuffers = 4;
std::atomic<AppendBuffer *> buffers[kMaxBuffers] = {};
std::atomic<std::size_t> bufferCount{0};

} // namespace

bool AppendBuffer::anyWaiting() {
  const std::size_t count = bufferCount.load() < kMaxBuffers ? bufferCount.load() : kMaxBuffers;
  for (std::size_t i = 0; i < count; ++i) {
    AppendBuffer *buffer = buffers[i].load();
    if (buffer != nullptr && buffer->waiting.load())
      return true;
  }
  return false;
}

AppendBuffer::AppendBuffer() {
  const std::size_t slot = bufferCount.fetch_add(1);
  if (slot < kMaxBuffers)
    buffers[slot].store(this);
}

std::FILE *AppendBuffer::attach(std::FILE *next) {
  std::unique_lock<std::mutex> writing(writeLock, std::defer_lock);
  if (next != nullptr) {
    writing.lock();
  } else {
    // A process that ends on Windows ends its other threads before the
    // library's unload: one ended while it wrote leaves this lock taken.
    // After a while the file is left as it is rather than waited for.
    for (int tries = 0; !writing.try_lock(); ++tries) {
      if (tries == 200)
        return nullptr;
      std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
  }
  writeOut();
  std::lock_guard<std::mutex> guard(lock);
  std::FILE *previous = file;
  file = next;
  // Without a file the buffer gives its memory back.
  if (next == nullptr) {
    std::string().swap(pending);
    std::string().swap(spare);
  }
  open.store(next != nullptr, std::memory_order_relaxed);
  return previous;
}

bool AppendBuffer::flush() {
  std::lock_guard<std::mutex> writing(writeLock);
  return writeOut();
}

bool AppendBuffer::writeOut() {
  // The text changes hands under the lock and is written outside it: a
  // thread that logs meanwhile fills the other string and never waits for
  // the system.
  std::FILE *target = nullptr;
  {
    std::lock_guard<std::mutex> guard(lock);
    waiting.store(false, std::memory_order_relaxed);
    if (pending.empty())
      return true;
    pending.swap(spare);
    target = file;
  }
  const bool written = target != nullptr &&
                       std::fwrite(spare.data(), 1, spare.size(), target) == spare.size() &&
                       std::fflush(target) == 0;
  spare.clear();
  if (!written && target != nullptr)
    failed.store(true);
  return written;
}

bool AppendBuffer::flushAll() {
  const std::size_t count = bufferCount.load() < kMaxBuffers ? bufferCount.load() : kMaxBuffers;
  bool wrote = false;
  for (std::size_t i = 0; i < count; ++i) {
    AppendBuffer *buffer = buffers[i].load();
    if (buffer != nullptr && buffer->waiting.load()) {
      buffer->flush();
      wrote = true;
    }
  }
  return wrote;
}

namespace {

// How long text may wait in a buffer while the writer runs, and how many
// quiet periods pass before the writer sleeps until the next line.
const std::chrono::milliseconds kWriterPeriod(2);
const unsigned kQuietPeriodsBeforeDozing = 40;

struct Writer {
  std::mutex lock;
  std::condition_variable wake;
  std::thread thread;
  bool stopping = false;
  bool woken = false;
};

// Built in place on first use and never destroyed, like the buffers.
Writer &writer() {
  alignas(Writer) static unsigned char storage[sizeof(Writer)];
  static Writer *instance = new (storage) Writer;
  return *instance;
}

// Starts and stops are serialised apart from the writer's own lock, which
// the thread takes.
std::mutex startLock;

} // namespace

void AppendBuffer::startWriter() {
  std::lock_guard<std::mutex> starting(startLock);
  Writer &state = writer();
  if (state.thread.joinable() || environmentValue("CANSIMU_FLUSH") == ACE_WString(L"call"))
    return;
  state.stopping = false;
  void *hold = holdLibrary();
  try {
    state.thread = std::thread([&state, hold] {
      unsigned quiet = 0;
      std::unique_lock<std::mutex> guard(state.lock);
      while (!state.stopping) {
        if (quiet < kQuietPeriodsBeforeDozing) {
          state.wake.wait_for(guard, kWriterPeriod);
        } else {
          // A line added before the writer says it dozes is seen by the
          // look at the buffers below; one added after it wakes the writer.
          writerDozing.store(true);
          state.wake.wait(guard, [&state] {
            return state.woken || state.stopping || anyWaiting();
          });
          writerDozing.store(false);
          quiet = 0;
        }
        state.woken = false;
        guard.unlock();
        const bool wrote = flushAll();
        quiet = wrote ? 0 : quiet + 1;
        guard.lock();
      }
      guard.unlock();
      releaseLibrary(hold);
    });
  } catch (const std::system_error &) {
    releaseLibrary(hold);
    return; // each call writes what it logged, as without the writer
  }
  writerRunning.store(true);
}

void AppendBuffer::stopWriter() {
  std::lock_guard<std::mutex> stopping(startLock);
  Writer &state = writer();
  if (!state.thread.joinable())
    return;
  // Calls that end from now on write for themselves.
  writerRunning.store(false);
  {
    std::lock_guard<std::mutex> guard(state.lock);
    state.stopping = true;
  }
  state.wake.notify_one();
  state.thread.join();
  flushAll();
}

void AppendBuffer::wakeWriter() {
  Writer &state = writer();
  {
    std::lock_guard<std::mutex> guard(state.lock);
    state.woken = true;
  }
  state.wake.notify_one();
}
