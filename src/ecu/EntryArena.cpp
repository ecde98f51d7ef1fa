#include "ecu/EntryArena.h"

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <new>
#include <utility>

namespace {

// Blocks start small, so that the many ECUs of a large bench whose
// scenarios hold a few entries each reserve little, and double up to a
// ceiling as a scenario grows.
const size_t kFirstBlockSize = 4 * 1024;
const size_t kBlockSize = 256 * 1024;
const size_t kAlignment = alignof(std::max_align_t);

size_t roundedUp(size_t nbytes) { return (nbytes + kAlignment - 1) / kAlignment * kAlignment; }

} // namespace

void *EntryArena::malloc(size_t nbytes) {
  const size_t size = roundedUp(nbytes == 0 ? 1 : nbytes);
  if (size < nbytes)
    return nullptr;
  // A request larger than a block gets a block of its own, leaving the
  // current block's remainder for the next small ones.
  if (size > kBlockSize) {
    std::unique_ptr<char[]> own(new (std::nothrow) char[size]);
    if (!own)
      return nullptr;
    blocks_.push_back(std::move(own));
    return blocks_.back().get();
  }
  if (size > left_) {
    const size_t blockSize = std::max(size, blocks_.empty() ? kFirstBlockSize : nextBlockSize_);
    std::unique_ptr<char[]> block(new (std::nothrow) char[blockSize]);
    if (!block)
      return nullptr;
    blocks_.push_back(std::move(block));
    next_ = blocks_.back().get();
    left_ = blockSize;
    nextBlockSize_ = std::min(kBlockSize, 2 * blockSize);
  }
  void *given = next_;
  next_ += size;
  left_ -= size;
  return given;
}

void *EntryArena::calloc(size_t nbytes, char initial_value) {
  void *given = malloc(nbytes);
  if (given != nullptr)
    std::memset(given, initial_value, nbytes);
  return given;
}

void *EntryArena::calloc(size_t n_elem, size_t elem_size, char initial_value) {
  if (elem_size != 0 && n_elem > static_cast<size_t>(-1) / elem_size)
    return nullptr;
  return calloc(n_elem * elem_size, initial_value);
}

void EntryArena::free(void *) {}

void EntryArena::release() {
  blocks_.clear();
  next_ = nullptr;
  left_ = 0;
  nextBlockSize_ = 0;
}
