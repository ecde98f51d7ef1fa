#include "ecu/SecurityAccess.h"
#include "core/NumberText.h"

#include <algorithm>

namespace {

const unsigned char kService = 0x27;

SecurityAccess::Bytes negative(unsigned char code) { return {0x7F, kService, code}; }

bool startsWith(const ACE_WString &text, const wchar_t *prefix, ACE_WString &rest) {
  const ACE_WString head(prefix);
  if (text.length() < head.length() || text.substring(0, head.length()) != head)
    return false;
  rest = text.substring(head.length());
  return true;
}

} // namespace

SecurityAccess::Bytes SecurityAccess::KeyRule::keyFor(const Bytes &seed) const {
  Bytes key = seed;
  switch (kind) {
  case Kind::Fixed:
    return operand;
  case Kind::Xor:
    for (size_t i = 0; i < key.size() && i < operand.size(); ++i)
      key[i] ^= operand[i];
    return key;
  case Kind::Add: {
    unsigned carry = 0;
    for (size_t i = key.size(); i-- > 0;) {
      const unsigned sum = key[i] + (i < operand.size() ? operand[i] : 0) + carry;
      key[i] = static_cast<unsigned char>(sum & 0xFF);
      carry = sum >> 8;
    }
    return key;
  }
  case Kind::Not:
    for (unsigned char &byte : key)
      byte = static_cast<unsigned char>(~byte);
    return key;
  }
  return key;
}

bool SecurityAccess::readKeyRule(const ACE_WString &text, size_t seedLength, KeyRule &rule,
                                 ACE_WString &why) {
  ACE_WString operand;
  if (text == L"not") {
    rule.kind = KeyRule::Kind::Not;
    rule.operand.clear();
    return true;
  }
  if (startsWith(text, L"xor:", operand))
    rule.kind = KeyRule::Kind::Xor;
  else if (startsWith(text, L"add:", operand))
    rule.kind = KeyRule::Kind::Add;
  else {
    rule.kind = KeyRule::Kind::Fixed;
    operand = text;
  }
  if (!readHexBytes(operand, rule.operand) || rule.operand.empty()) {
    why = L"is neither hex bytes nor xor:HEX, add:HEX or not";
    return false;
  }
  if (rule.kind != KeyRule::Kind::Fixed && rule.operand.size() != seedLength) {
    why = L"has an operand of " + decimalText(rule.operand.size()) + L" bytes for seeds of " +
          decimalText(seedLength);
    return false;
  }
  return true;
}

void SecurityAccess::read(const TDomData &state, std::vector<StateProblem> &problems) {
  ACE_Array<TDomData> found;
  state.getSubNodesByTagName(ACE_WString(L"SECURITY"), found, true);
  for (size_t i = 0; i < found.size(); ++i) {
    const TDomData &node = found[i];
    ACE_WString text;
    Level level;
    node.getAttributeValue(ACE_WString(L"level"), text);
    if (!readHexByte(text, level.level) || level.level % 2 == 0 || level.level > 0x7D) {
      problems.push_back({node, L"level=\"" + text + L"\" is not an odd level 01 to 7D: ignored"});
      continue;
    }
    if (levelFor(level.level) != nullptr) {
      problems.push_back({node, L"level " + text + L" is declared twice: ignored"});
      continue;
    }
    text.clear();
    node.getAttributeValue(ACE_WString(L"seed"), text);
    std::vector<unsigned char> all;
    bool seedsRead = text.length() != 0;
    size_t start = 0;
    while (seedsRead && start < text.length()) {
      size_t end = start;
      while (end < text.length() && text[end] != L' ')
        ++end;
      Bytes seed;
      if (end > start) {
        seedsRead = readHexBytes(text.substring(start, end - start), seed) && !seed.empty() &&
                    (level.seeds.empty() || seed.size() == level.seeds[0].size());
        level.seeds.push_back(seed);
      }
      start = end + 1;
    }
    if (!seedsRead || level.seeds.empty()) {
      problems.push_back({node, L"seed=\"" + text +
                                    L"\" is not one or more hex seeds of one length: level "
                                    L"ignored"});
      continue;
    }
    text.clear();
    node.getAttributeValue(ACE_WString(L"key"), text);
    ACE_WString why;
    if (!readKeyRule(text, level.seeds[0].size(), level.key, why)) {
      problems.push_back({node, L"key=\"" + text + L"\" " + why + L": level ignored"});
      continue;
    }
    const struct {
      const wchar_t *name;
      unsigned *field;
    } numbers[] = {{L"attempts", &level.attempts}, {L"lockout", &level.lockoutMs}};
    for (const auto &number : numbers) {
      text.clear();
      if (node.getAttributeValue(ACE_WString(number.name), text), text.length() == 0)
        continue;
      if (!readMilliseconds(text, *number.field))
        problems.push_back({node, ACE_WString(number.name) + L"=\"" + text +
                                      L"\" is not a number: the default is used"});
    }
    if (level.attempts == 0)
      level.attempts = 1;
    text.clear();
    node.getAttributeValue(ACE_WString(L"sessions"), text);
    if (text.length() != 0 && !readHexByteList(text, level.sessions))
      problems.push_back(
          {node, L"sessions=\"" + text + L"\" is not a list of hex bytes: every session"});
    levels.push_back(level);
  }
}

SecurityAccess::Level *SecurityAccess::levelFor(unsigned char subFunction) {
  const unsigned char level = subFunction % 2 == 1 ? subFunction : subFunction - 1;
  for (Level &declared : levels)
    if (declared.level == level)
      return &declared;
  return nullptr;
}

const SecurityAccess::Level *SecurityAccess::levelFor(unsigned char subFunction) const {
  return const_cast<SecurityAccess *>(this)->levelFor(subFunction);
}

bool SecurityAccess::handles(const Bytes &request) const {
  return request.size() >= 2 && request[0] == kService && request[1] != 0 &&
         levelFor(request[1]) != nullptr;
}

SecurityAccess::Bytes SecurityAccess::answer(const Bytes &request, unsigned char session,
                                             Clock::time_point now) {
  Level &level = *levelFor(request[1]);
  if (request[1] % 2 == 1)
    return requestSeed(level, request, session, now);
  return sendKey(level, request, now);
}

SecurityAccess::Bytes SecurityAccess::requestSeed(Level &level, const Bytes &request,
                                                  unsigned char session, Clock::time_point now) {
  if (request.size() != 2)
    return negative(0x13);
  if (!level.sessions.empty() &&
      std::find(level.sessions.begin(), level.sessions.end(), session) == level.sessions.end())
    return negative(0x7E);
  if (now < level.lockedUntil)
    return negative(0x37);
  Bytes positive{0x67, request[1]};
  // An unlocked level answers with a seed of zeros, as ECUs do.
  if (unlocked(level.level)) {
    positive.resize(2 + level.seeds[0].size(), 0);
    return positive;
  }
  level.seedSent = level.seeds[level.nextSeed];
  level.nextSeed = (level.nextSeed + 1) % level.seeds.size();
  level.seedOut = true;
  positive.insert(positive.end(), level.seedSent.begin(), level.seedSent.end());
  return positive;
}

SecurityAccess::Bytes SecurityAccess::sendKey(Level &level, const Bytes &request,
                                              Clock::time_point now) {
  if (now < level.lockedUntil)
    return negative(0x37);
  if (!level.seedOut)
    return negative(0x24);
  const Bytes expected = level.key.keyFor(level.seedSent);
  const Bytes key(request.begin() + 2, request.end());
  if (key.size() != expected.size())
    return negative(0x13);
  // Right or wrong, a key uses up its seed.
  level.seedOut = false;
  if (key == expected) {
    level.failures = 0;
    unlockedLevel = level.level;
    return {0x67, request[1]};
  }
  if (++level.failures < level.attempts)
    return negative(0x35);
  level.failures = 0;
  level.lockedUntil = now + std::chrono::milliseconds(level.lockoutMs);
  return negative(0x36);
}

void SecurityAccess::lock() {
  unlockedLevel = 0;
  for (Level &level : levels)
    level.seedOut = false;
}

ACE_WString SecurityAccess::describe(Clock::time_point now) const {
  ACE_WString text;
  for (const Level &level : levels) {
    if (text.length() != 0)
      text += L", ";
    text += L"level " + byteText(level.level);
    if (unlocked(level.level))
      text += L" unlocked";
    else if (now < level.lockedUntil)
      text += L" locked out";
    else
      text += L" locked";
  }
  return text;
}

std::vector<unsigned char> SecurityAccess::declaredLevels() const {
  std::vector<unsigned char> declared;
  for (const Level &level : levels)
    declared.push_back(level.level);
  return declared;
}
