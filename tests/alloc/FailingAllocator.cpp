#include "FailingAllocator.h"

#include <atomic>
#include <cstdlib>
#include <new>

#include <time.h>

extern "C" {
void *__real_malloc(size_t size);
void *__real_calloc(size_t count, size_t size);
void *__real_realloc(void *pointer, size_t size);
}

namespace {
std::atomic<bool> counting{false};
std::atomic<long> countedSoFar{0};
std::atomic<long> failAtCount{0};
std::atomic<bool> hasFailed{false};
thread_local int pausedDepth = 0;

// True when this allocation is the one that must fail.
bool failsNow() {
  if (!counting.load() || pausedDepth != 0)
    return false;
  const long number = ++countedSoFar;
  if (number != failAtCount.load())
    return false;
  hasFailed = true;
  return true;
}
} // namespace

void failing_allocator::arm(long failAt) {
  countedSoFar = 0;
  hasFailed = false;
  failAtCount = failAt;
  counting = true;
}

long failing_allocator::disarm() {
  counting = false;
  return countedSoFar.load();
}

long failing_allocator::counted() { return countedSoFar.load(); }

bool failing_allocator::failed() { return hasFailed.load(); }

failing_allocator::Paused::Paused() { ++pausedDepth; }
failing_allocator::Paused::~Paused() { --pausedDepth; }

extern "C" {
// The firmware download's 50 ms steps pass at once in this program, so that
// each allocation of a whole session can fail in turn within seconds.
int __wrap_nanosleep(const struct timespec *, struct timespec *) { return 0; }

void *__wrap_malloc(size_t size) { return failsNow() ? nullptr : __real_malloc(size); }
void *__wrap_calloc(size_t count, size_t size) {
  return failsNow() ? nullptr : __real_calloc(count, size);
}
void *__wrap_realloc(void *pointer, size_t size) {
  return failsNow() ? nullptr : __real_realloc(pointer, size);
}
}

void *operator new(size_t size) {
  void *memory = failsNow() ? nullptr : __real_malloc(size == 0 ? 1 : size);
  if (memory == nullptr)
    throw std::bad_alloc();
  return memory;
}
void *operator new[](size_t size) { return operator new(size); }
void *operator new(size_t size, const std::nothrow_t &) noexcept {
  return failsNow() ? nullptr : __real_malloc(size == 0 ? 1 : size);
}
void *operator new[](size_t size, const std::nothrow_t &tag) noexcept {
  return operator new(size, tag);
}
void operator delete(void *memory) noexcept { std::free(memory); }
void operator delete[](void *memory) noexcept { std::free(memory); }
void operator delete(void *memory, size_t) noexcept { std::free(memory); }
void operator delete[](void *memory, size_t) noexcept { std::free(memory); }
