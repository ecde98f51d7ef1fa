#include "platform/AppendBuffer.h"

namespace {

// The buffers of the process (the log file and the bus trace); constant-
// initialised, so that registration works from any static constructor.
const std::size_t kMaxBuffers = 4;
std::atomic<AppendBuffer *> buffers[kMaxBuffers] = {};
std::atomic<std::size_t> bufferCount{0};

} // namespace

AppendBuffer::AppendBuffer() {
  const std::size_t slot = bufferCount.fetch_add(1);
  if (slot < kMaxBuffers)
    buffers[slot].store(this);
}

std::FILE *AppendBuffer::attach(std::FILE *next) {
  std::lock_guard<std::mutex> guard(lock);
  flushLocked();
  std::FILE *previous = file;
  file = next;
  // Without a file the buffer gives its memory back.
  if (next == nullptr)
    std::string().swap(pending);
  open.store(next != nullptr, std::memory_order_relaxed);
  return previous;
}

bool AppendBuffer::flush() {
  std::lock_guard<std::mutex> guard(lock);
  return flushLocked();
}

bool AppendBuffer::flushLocked() {
  waiting.store(false, std::memory_order_relaxed);
  if (pending.empty())
    return true;
  bool written = file != nullptr;
  if (written)
    written = std::fwrite(pending.data(), 1, pending.size(), file) == pending.size() &&
              std::fflush(file) == 0;
  pending.clear();
  if (!written && file != nullptr)
    failed.store(true);
  return written;
}

void AppendBuffer::flushAll() {
  const std::size_t count = bufferCount.load() < kMaxBuffers ? bufferCount.load() : kMaxBuffers;
  for (std::size_t i = 0; i < count; ++i) {
    AppendBuffer *buffer = buffers[i].load();
    if (buffer != nullptr && buffer->waiting.load(std::memory_order_acquire))
      buffer->flush();
  }
}
