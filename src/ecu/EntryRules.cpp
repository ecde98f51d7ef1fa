#include "ecu/EntryRules.h"

#include <cwchar>

namespace {

int digitValue(ACE_WCHAR_T c) {
  if (c >= L'0' && c <= L'9')
    return c - L'0';
  if (c >= L'A' && c <= L'F')
    return c - L'A' + 10;
  if (c >= L'a' && c <= L'f')
    return c - L'a' + 10;
  return -1;
}

const unsigned kLongestMs = 24u * 3600u * 1000u;

// Reads one attribute; false when the element does not carry it.
bool attribute(const TDomData &event, const wchar_t *name, ACE_WString &value) {
  value.clear();
  event.getAttributeValue(ACE_WString(name), value);
  return value.length() != 0;
}

void complain(std::vector<StateProblem> &problems, const TDomData &event, const wchar_t *name,
              const ACE_WString &value, const wchar_t *why) {
  problems.push_back(StateProblem{event, ACE_WString(name) + L"=\"" + value + L"\" " +
                                             ACE_WString(why) + L": ignored"});
}

} // namespace

bool readHexBytes(const ACE_WString &text, std::vector<unsigned char> &bytes) {
  const size_t length = text.length();
  if (length % 2 != 0)
    return false;
  bytes.clear();
  for (size_t i = 0; i < length; i += 2) {
    const int high = digitValue(text[i]), low = digitValue(text[i + 1]);
    if (high < 0 || low < 0)
      return false;
    bytes.push_back(static_cast<unsigned char>(high * 16 + low));
  }
  return true;
}

bool readHexByte(const ACE_WString &text, unsigned char &value) {
  std::vector<unsigned char> bytes;
  if (!readHexBytes(text, bytes) || bytes.size() != 1)
    return false;
  value = bytes[0];
  return true;
}

bool readHexByteList(const ACE_WString &text, std::vector<unsigned char> &values) {
  values.clear();
  size_t start = 0;
  const size_t length = text.length();
  while (start < length) {
    size_t end = start;
    while (end < length && text[end] != L' ' && text[end] != L',')
      ++end;
    if (end > start) {
      unsigned char value = 0;
      if (!readHexByte(text.substring(start, end - start), value))
        return false;
      values.push_back(value);
    }
    start = end + 1;
  }
  return !values.empty();
}

bool readMilliseconds(const ACE_WString &text, unsigned &value) {
  const size_t length = text.length();
  if (length == 0 || length > 8)
    return false;
  unsigned long total = 0;
  for (size_t i = 0; i < length; ++i) {
    if (text[i] < L'0' || text[i] > L'9')
      return false;
    total = total * 10 + static_cast<unsigned long>(text[i] - L'0');
  }
  if (total > kLongestMs)
    return false;
  value = static_cast<unsigned>(total);
  return true;
}

ACE_WString byteText(unsigned char value) {
  static const wchar_t kDigits[] = L"0123456789ABCDEF";
  const wchar_t text[3] = {kDigits[value >> 4], kDigits[value & 0x0F], L'\0'};
  return ACE_WString(text);
}

ACE_WString negativeAnswerTo(const ACE_WString &request, unsigned char code) {
  return ACE_WString(L"7F") + (request.length() >= 2 ? request.substring(0, 2) : request) +
         byteText(code);
}

std::shared_ptr<const EntryRules> EntryRules::read(const TDomData &event,
                                                   std::vector<StateProblem> &problems) {
  auto rules = std::make_shared<EntryRules>();
  bool any = false;
  ACE_WString value;
  if (attribute(event, L"sessions", value)) {
    any = true;
    if (!readHexByteList(value, rules->sessions))
      complain(problems, event, L"sessions", value, L"is not a list of hex bytes");
  }
  unsigned char byte = 0;
  if (attribute(event, L"security", value)) {
    any = true;
    if (readHexByte(value, byte) && byte != 0)
      rules->level = byte;
    else
      complain(problems, event, L"security", value, L"is not a security level (01 to FF)");
  }
  if (attribute(event, L"nrc", value)) {
    any = true;
    if (readHexByte(value, byte))
      rules->refusalCode = byte;
    else
      complain(problems, event, L"nrc", value, L"is not a hex byte");
  }
  if (attribute(event, L"enter", value)) {
    any = true;
    if (readHexByte(value, byte))
      rules->enters = byte;
    else
      complain(problems, event, L"enter", value, L"is not a session (a hex byte)");
  }
  const struct {
    const wchar_t *name;
    unsigned *field;
  } numbers[] = {{L"delay", &rules->timing.delayMs},
                 {L"pending", &rules->timing.pending},
                 {L"every", &rules->timing.everyMs}};
  for (const auto &number : numbers) {
    if (!attribute(event, number.name, value))
      continue;
    any = true;
    if (!readMilliseconds(value, *number.field)) {
      complain(problems, event, number.name, value, L"is not a number from 0 to 86400000");
    } else if (number.field == &rules->timing.pending && rules->timing.pending > 1000) {
      // A thousand pending answers is already far past any tester's patience.
      complain(problems, event, number.name, value, L"is above 1000");
      rules->timing.pending = 0;
    }
  }
  if (!any)
    return nullptr;
  return rules;
}
