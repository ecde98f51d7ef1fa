#include "core/LogText.h"
#include "platform/CodePage.h"

#include <gtest/gtest.h>

#include <string>

// A line built from pieces is the line a formatting buffer of the capacity
// holds: whole when shorter, else cut to capacity - 1 characters, anywhere.
TEST(LogText, FittedLine_JoinsItsPiecesAndCutsThemLikeOneLine) {
  const ACE_WString frame(L"22F190");
  const struct {
    size_t capacity;
    const char *expected;
  } cases[] = {{100, "Response [22F190]"},
               {18, "Response [22F190]"},
               {17, "Response [22F190"},
               {12, "Response [2"},
               {10, "Response "},
               {1, ""},
               {0, ""}};
  for (const auto &c : cases) {
    const ACE_WString joined = fittedLine({L"Response [", frame, L"]"}, c.capacity);
    EXPECT_EQ(std::string(toAnsiString(joined).c_str()), c.expected) << c.capacity;
    EXPECT_TRUE(joined == fittedLine(ACE_WString(L"Response [22F190]"), c.capacity)) << c.capacity;
  }
}
