#include "ecu/EntryArena.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <utility>
#include <vector>

TEST(EntryArenaTest, Allocations_AreAlignedDisjointFilledAndSurviveFreesUntilRelease) {
  EntryArena arena;
  // Sizes from tiny to larger than a whole block, interleaved.
  const size_t sizes[] = {1, 64, 0, 28, 4096, 3, 1 << 20, 17, 256 * 1024, 40};
  std::vector<std::pair<char *, size_t>> given;
  for (int round = 0; round < 200; ++round)
    for (size_t size : sizes) {
      char *block = static_cast<char *>(arena.malloc(size));
      ASSERT_NE(block, nullptr);
      EXPECT_EQ(reinterpret_cast<std::uintptr_t>(block) % alignof(std::max_align_t), 0u);
      std::memset(block, static_cast<int>(given.size() & 0x7F), size);
      given.emplace_back(block, size);
      if (round % 2)
        arena.free(block);
    }
  // Every byte still holds what its own allocation wrote: nothing overlaps
  // and free() gave nothing back early.
  for (size_t i = 0; i < given.size(); ++i) {
    const auto [block, size] = given[i];
    const char expected = static_cast<char>(i & 0x7F);
    EXPECT_TRUE(std::all_of(block, block + size, [&](char c) { return c == expected; })) << i;
  }
  arena.release();
  EXPECT_NE(arena.malloc(8), nullptr) << "usable again after a release";
  // calloc fills with the given value; sizes that overflow are refused.
  char *filled = static_cast<char *>(arena.calloc(10, size_t{3}, 'x'));
  ASSERT_NE(filled, nullptr);
  EXPECT_EQ(std::string(filled, 30), std::string(30, 'x'));
  EXPECT_EQ(arena.calloc(static_cast<size_t>(-1) / 2, size_t{4}, 'z'), nullptr);
  EXPECT_EQ(arena.malloc(static_cast<size_t>(-1) - 3), nullptr);
}
