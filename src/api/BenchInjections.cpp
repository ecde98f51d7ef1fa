#include "api/BenchInjections.h"

#include "api/StatusInjection.h"
#include "cansimu/cansimu.h"
#include "core/CodeNames.h"
#include "core/LogMessage.h"
#include "core/NumberText.h"
#include "platform/CodePage.h"
#include "platform/TDomData.h"

#include <ace/Containers_T.h>

#include <cctype>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <string>

namespace {

// The names a bench file may use for a value, with the words that describe
// them in a log line.
struct ValueNames {
  CodeTable codes;
  const wchar_t *description;
};

const ValueNames kStatusNames{CodeNames::statuses(), L"status"};

// What `status` means for an export: an event type of its level for the
// three receive exports, a status for every other.
ValueNames statusNamesFor(const ACE_CString &name) {
  if (name == "CAN_DrvRxMsg")
    return ValueNames{CodeNames::driverEventTypes(), L"DRV_TYPE_ event type"};
  if (name == "CAN_DevRxMsg")
    return ValueNames{CodeNames::deviceEventTypes(), L"DEV_TYPE_ event type"};
  if (name == "CAN_PrtRxMsg")
    return ValueNames{CodeNames::portEventTypes(), L"PRT_TYPE_ event type"};
  return kStatusNames;
}

ACE_WString attributeOf(const TDomData &element, const wchar_t *name) {
  ACE_WString value;
  element.getAttributeValue(name, value);
  return value;
}

// A whole unsigned 32-bit number: decimal, or hexadecimal after 0x. A
// leading 0 does not mean octal; signs and trailing text are refused.
bool readNumber(const char *text, ACE_UINT32 &value) {
  const bool hexadecimal = text[0] == '0' && (text[1] == 'x' || text[1] == 'X');
  const char *digits = hexadecimal ? text + 2 : text;
  const auto first = static_cast<unsigned char>(*digits);
  if (hexadecimal ? !std::isxdigit(first) : !std::isdigit(first))
    return false;
  char *end = nullptr;
  errno = 0;
  const unsigned long long number = std::strtoull(digits, &end, hexadecimal ? 16 : 10);
  if (errno != 0 || *end != '\0' || number > 0xFFFFFFFFull)
    return false;
  value = static_cast<ACE_UINT32>(number);
  return true;
}

// A number, or one of `names`; surrounding white space is ignored.
bool readCode(const ACE_WString &text, const ValueNames &names, ACE_UINT32 &value) {
  ACE_CString narrow = toAnsiString(text);
  const char *start = narrow.c_str();
  while (*start == ' ' || *start == '\t' || *start == '\n' || *start == '\r')
    ++start;
  size_t length = std::strlen(start);
  while (length > 0 && std::strchr(" \t\n\r", start[length - 1]) != nullptr)
    --length;
  const ACE_CString trimmed(start, length);
  if (readNumber(trimmed.c_str(), value))
    return true;
  for (const CodeName &code : names.codes)
    if (trimmed == code.name) {
      value = code.value;
      return true;
    }
  return false;
}

// Logs why an element is skipped; false, for the reader to return.
bool skip(const ACE_WString &exportName, const ACE_WString &why) {
  logMessage(ACE_WString(L"INJECT <") + exportName + ACE_WString(L">: ") + why +
             ACE_WString(L": skipped"));
  return false;
}

// One element's values, as setNextCANStatus takes them.
struct Injection {
  ACE_WString exportName;
  ACE_CString name;
  ACE_UINT32 status = 0;
  ACE_UINT32 detail = 0;
};

// Reads an element; false, with the log line that says why, when it cannot
// be applied.
bool readElement(const TDomData &element, Injection &injection) {
  injection.exportName = attributeOf(element, L"export");
  injection.name = toAnsiString(injection.exportName);
  const ACE_WString statusText = attributeOf(element, L"status");
  const ACE_WString detailText = attributeOf(element, L"detail");
  const ACE_WString &exportName = injection.exportName;
  if (exportName.empty()) {
    logMessage(ACE_WString(L"INJECT without an export attribute (status <") + statusText +
               ACE_WString(L">): skipped"));
    return false;
  }
  const char *name = injection.name.c_str();
  if (!StatusInjection::isReceiveName(name) && !StatusInjection::isArmableExport(name))
    return skip(exportName, L"no export of that name takes an injection");
  if (statusText.empty())
    return skip(exportName, L"no status attribute");
  const ValueNames statusNames = statusNamesFor(injection.name);
  if (!readCode(statusText, statusNames, injection.status))
    return skip(exportName, ACE_WString(L"status <") + statusText +
                                ACE_WString(L"> is neither a number nor a ") +
                                ACE_WString(statusNames.description) + ACE_WString(L" name"));
  if (!detailText.empty() && !readCode(detailText, kStatusNames, injection.detail))
    return skip(exportName, ACE_WString(L"detail <") + detailText +
                                ACE_WString(L"> is neither a number nor a status name"));
  return true;
}

// What the call did, in the words of the outcome.
void report(const Injection &injection, StatusInjection::Outcome outcome) {
  using Outcome = StatusInjection::Outcome;
  const wchar_t *what = outcome == Outcome::EventInjected ? L"event type " : L"status ";
  const wchar_t *result = outcome == Outcome::EventInjected ? L" injected"
                          : outcome == Outcome::Armed       ? L" armed"
                                                      : L" dropped: an earlier arming still waits";
  logMessage(ACE_WString(L"INJECT <") + injection.exportName + ACE_WString(L">: ") +
             ACE_WString(what) + decimalText(injection.status) + ACE_WString(L", detail ") +
             decimalText(injection.detail) + ACE_WString(result));
}

} // namespace

void BenchInjections::apply(const TDomData &document) {
  ACE_Array<TDomData> elements;
  document.getSubNodesByTagName(L"INJECT", elements, true);
  for (size_t i = 0; i < elements.size(); ++i) {
    Injection injection;
    if (readElement(elements[i], injection))
      report(injection, StatusInjection::injectNext(injection.name.c_str(), injection.status,
                                                    injection.detail));
  }
}
