#include "core/NumberText.h"

#include <gtest/gtest.h>

#include <cmath>
#include <string>

TEST(NumberText, HexReadsAsStrtolBase16ClampedToTheSigned32BitRange) {
  const std::pair<const wchar_t *, ACE_UINT32> cases[] = {
      {L"7E0", 0x7E0},
      {L"0x7E0", 0x7E0},
      {L"7e0", 0x7E0},
      {L" \t7E0", 0x7E0},
      {L"7E0zz", 0x7E0},
      {L"+0X1f", 0x1F},
      {L"-10", 0xFFFFFFF0},
      {L"zz", 0},
      {L"0x", 0},
      {L"7FFFFFFF", 0x7FFFFFFF},
      {L"FFFFFFFFF", 0x7FFFFFFF},
      {L"-FFFFFFFFF", 0x80000000},
  };
  for (const auto &[text, value] : cases)
    EXPECT_EQ(hexNumber(text), value) << std::wstring(text).size();
}
