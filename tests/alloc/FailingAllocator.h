// A test build's allocator that counts allocations and makes a chosen one
// fail: malloc, calloc and realloc (wrapped at link time) return null, and
// operator new throws std::bad_alloc (its nothrow form returns null). It
// sees the allocations of our code and of ACE; the XML parser's own are not
// counted.
#pragma once

#include <cstddef>

namespace failing_allocator {
// Starts counting allocations from 0; when `failAt` is not 0, the failAt-th
// allocation from now fails (only that one).
void arm(long failAt);
// Stops counting and failing; returns the number of allocations counted.
long disarm();
// The allocations counted since arm().
long counted();
// True when the armed failure has happened.
bool failed();

// While one lives, the allocations of its thread are neither counted nor
// failed: the test's own bookkeeping between the calls it makes.
class Paused {
public:
  Paused();
  ~Paused();
  Paused(const Paused &) = delete;
  Paused &operator=(const Paused &) = delete;
};
} // namespace failing_allocator
