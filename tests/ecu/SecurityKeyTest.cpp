// The keys a security level expects, by rule: the rule's text is read as a
// scenario writes it and applied to a seed.
#include "ecu/SecurityAccess.h"

#include <gtest/gtest.h>

#include <vector>

namespace {

struct KeyCase {
  const wchar_t *rule;
  std::vector<unsigned char> seed, key;
};

} // namespace

TEST(SecurityKey, EachRuleMakesTheKeyOfTheSeed) {
  const KeyCase cases[] = {
      {L"CAFE", {0x01, 0x02}, {0xCA, 0xFE}},
      {L"cafe01", {0x01, 0x02}, {0xCA, 0xFE, 0x01}}, // a fixed key of its own length
      {L"xor:A5A5", {0x11, 0x22}, {0xB4, 0x87}},
      {L"add:0001", {0x12, 0xFF}, {0x13, 0x00}}, // the carry moves left
      {L"add:0101", {0xFF, 0xFF}, {0x01, 0x00}}, // and past the top is dropped
      {L"not", {0x0F, 0xF0}, {0xF0, 0x0F}},
  };
  for (const KeyCase &c : cases) {
    SCOPED_TRACE(testing::Message() << c.rule);
    SecurityAccess::KeyRule rule;
    ACE_WString why;
    ASSERT_TRUE(SecurityAccess::readKeyRule(ACE_WString(c.rule), c.seed.size(), rule, why));
    EXPECT_EQ(rule.keyFor(c.seed), c.key);
  }
}
