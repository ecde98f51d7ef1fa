#include "core/ThrowingAllocator.h"

#include <ace/Malloc_Allocator.h>

#include <new>

namespace {

// ACE's default allocator (plain new and delete), so that memory taken
// before the install and released after it, or the reverse, goes back to
// where it came from.
class ThrowingAllocator : public ACE_New_Allocator {
public:
  void *malloc(size_t bytes) override { return checked(ACE_New_Allocator::malloc(bytes), bytes); }
  void *calloc(size_t bytes, char initial) override {
    return checked(ACE_New_Allocator::calloc(bytes, initial), bytes);
  }
  void *calloc(size_t count, size_t size, char initial) override {
    return checked(ACE_New_Allocator::calloc(count, size, initial), count * size);
  }

private:
  // ACE asks for zero bytes at times and gets null for them, as before.
  static void *checked(void *memory, size_t bytes) {
    if (memory == nullptr && bytes != 0)
      throw std::bad_alloc();
    return memory;
  }
};

// Built on first use and never destroyed: the library's load hook may run
// before this file's static objects are constructed, and ACE may still call
// it while the process tears down.
ThrowingAllocator &theAllocator() {
  alignas(ThrowingAllocator) static unsigned char storage[sizeof(ThrowingAllocator)];
  static ThrowingAllocator *made = new (storage) ThrowingAllocator;
  return *made;
}
ACE_Allocator *previous = nullptr;

} // namespace

void throwing_allocator::install() {
  ACE_Allocator *replaced = ACE_Allocator::instance(&theAllocator());
  if (replaced != &theAllocator())
    previous = replaced;
}

void throwing_allocator::remove() {
  if (ACE_Allocator::instance() == &theAllocator())
    ACE_Allocator::instance(previous);
  previous = nullptr;
}
