#include "names/StatusNames.h"

#include "core/CodeNames.h"

#include <cerrno>
#include <cstdlib>

namespace {

// The library's tables (core/CodeNames.h): the names it reads in benches and
// scenarios are the names the program prints and reads.
const char *nameOf(CodeTable table, uint32_t value) {
  for (const CodeName &entry : table)
    if (entry.value == value)
      return entry.name;
  return nullptr;
}

bool valueOf(CodeTable table, const std::string &name, uint32_t &value) {
  for (const CodeName &entry : table)
    if (name == entry.name) {
      value = entry.value;
      return true;
    }
  return false;
}

bool named(CodeTable table, const std::string &name) {
  uint32_t ignored = 0;
  return valueOf(table, name, ignored);
}

std::string numbered(const char *name, const char *unnamed, uint32_t value) {
  if (name == nullptr)
    return std::string(unnamed) + " " + std::to_string(value);
  return std::string(name) + " (" + std::to_string(value) + ")";
}

} // namespace

const char *statusName(CAN_STATUS status) { return nameOf(CodeNames::statuses(), status); }

std::string statusText(CAN_STATUS status) { return numbered(statusName(status), "status", status); }

bool isStatusName(const std::string &name) { return named(CodeNames::statuses(), name); }

bool statusValue(const std::string &name, uint32_t &status) {
  return valueOf(CodeNames::statuses(), name, status);
}

bool isDetectionOutcome(const std::string &name) {
  return named(CodeNames::detectionOutcomes(), name);
}

const char *driverEventName(uint32_t type) { return nameOf(CodeNames::driverEventTypes(), type); }
const char *deviceEventName(uint32_t type) { return nameOf(CodeNames::deviceEventTypes(), type); }
const char *portEventName(uint32_t type) { return nameOf(CodeNames::portEventTypes(), type); }
const char *channelEventName(uint32_t type) { return nameOf(CodeNames::channelEventTypes(), type); }

std::string eventTypeText(const char *name, uint32_t type) { return numbered(name, "type", type); }

bool driverEventType(const std::string &name, uint32_t &type) {
  return valueOf(CodeNames::driverEventTypes(), name, type);
}
bool deviceEventType(const std::string &name, uint32_t &type) {
  return valueOf(CodeNames::deviceEventTypes(), name, type);
}
bool portEventType(const std::string &name, uint32_t &type) {
  return valueOf(CodeNames::portEventTypes(), name, type);
}

bool channelEventType(const std::string &name, uint32_t &type) {
  return valueOf(CodeNames::channelEventTypes(), name, type);
}

ChannelResult channelResultOf(uint32_t type) {
  switch (type) {
  case CHN_TYPE_CRSNDDIAGFRAME:
  case CHN_TYPE_SEND_FAILED_CRNEG:
    return ChannelResult::Short;
  case CHN_TYPE_RCV_CORRUPTED_FRAME:
  case CHN_TYPE_RCV_STARTOK_NOTCOMPLIANT:
  case CHN_TYPE_RCV_SUCCESS:
  case CHN_TYPE_RCV_SUCCESS_BUT_UNEXPECTED:
    return ChannelResult::Frame;
  default:
    return ChannelResult::None;
  }
}

const char *resultCodeName(uint32_t code) { return nameOf(CodeNames::resultCodes(), code); }

std::string resultCodeText(uint32_t code) { return numbered(resultCodeName(code), "result", code); }

bool isResultCodeName(const std::string &name) { return named(CodeNames::resultCodes(), name); }

NumberReading readNumber(const std::string &text, uint32_t most, uint32_t &value) {
  const bool negative = !text.empty() && text[0] == '-';
  const std::string unsigned_ = negative ? text.substr(1) : text;
  const bool hexadecimal =
      unsigned_.size() > 2 && unsigned_[0] == '0' && (unsigned_[1] == 'x' || unsigned_[1] == 'X');
  const std::string digits = hexadecimal ? unsigned_.substr(2) : unsigned_;
  const char *allowed = hexadecimal ? "0123456789abcdefABCDEF" : "0123456789";
  if (digits.empty() || digits.find_first_not_of(allowed) != std::string::npos)
    return NumberReading::NotANumber;
  errno = 0;
  const unsigned long long number = std::strtoull(digits.c_str(), nullptr, hexadecimal ? 16 : 10);
  if (negative ? number != 0 : errno != 0 || number > most)
    return NumberReading::OutOfRange;
  value = static_cast<uint32_t>(number);
  return NumberReading::Read;
}

std::string numberProblem(const std::string &text, NumberReading reading, uint32_t most) {
  if (reading == NumberReading::OutOfRange)
    return "'" + text + "' is out of range (0 to " + std::to_string(most) + ")";
  return "'" + text + "' is not a number";
}
