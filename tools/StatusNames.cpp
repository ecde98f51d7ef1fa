#include "StatusNames.h"

#include <cerrno>
#include <cstdlib>

namespace {

struct NamedCode {
  uint32_t value;
  const char *name;
};

const NamedCode kStatuses[] = {
    {E_SUCCESS, "E_SUCCESS"},
    {E_BOARD_ERROR_1, "E_BOARD_ERROR_1"},
    {E_BOARD_ERROR_2, "E_BOARD_ERROR_2"},
    {E_NO_EVENT, "E_NO_EVENT"},
    {E_INVALID, "E_INVALID"},
    {E_ALREADY_RESERVED, "E_ALREADY_RESERVED"},
    {E_DISCONNECTED, "E_DISCONNECTED"},
    {E_NOMEM, "E_NOMEM"},
    {E_NOT_FOUND, "E_NOT_FOUND"},
    {E_BAD_FILE, "E_BAD_FILE"},
    {E_RECONF_PROGRESS, "E_RECONF_PROGRESS"},
    {E_DENIED_KERNEL_ACCESS, "E_DENIED_KERNEL_ACCESS"},
    {E_NULL_POINTER, "E_NULL_POINTER"},
    {E_KERNEL_RW_ERROR, "E_KERNEL_RW_ERROR"},
    {E_CHANNEL_REFUSED, "E_CHANNEL_REFUSED"},
    {E_BUSOFF, "E_BUSOFF"},
};

const NamedCode kDriverEvents[] = {
    {DRV_TYPE_ENDFIFO, "DRV_TYPE_ENDFIFO"},
    {DRV_TYPE_DEVICE_100, "DRV_TYPE_DEVICE_100"},
    {DRV_TYPE_DEVICE_101, "DRV_TYPE_DEVICE_101"},
};

const NamedCode kDeviceEvents[] = {
    {DEV_TYPE_ENDFIFO, "DEV_TYPE_ENDFIFO"},     {DEV_TYPE_DISCONNECTED, "DEV_TYPE_DISCONNECTED"},
    {DEV_TYPE_CONNECTED, "DEV_TYPE_CONNECTED"}, {DEV_TYPE_STATUS_PAIR, "DEV_TYPE_STATUS_PAIR"},
    {DEV_TYPE_CONFIG, "DEV_TYPE_CONFIG"},       {DEV_TYPE_TENSION, "DEV_TYPE_TENSION"},
    {DEV_TYPE_STATUS, "DEV_TYPE_STATUS"},       {DEV_TYPE_MODE, "DEV_TYPE_MODE"},
    {DEV_TYPE_RESET, "DEV_TYPE_RESET"},         {DEV_TYPE_PROGRESS, "DEV_TYPE_PROGRESS"},
};

template <size_t N> const char *nameOf(const NamedCode (&table)[N], uint32_t value) {
  for (const NamedCode &entry : table)
    if (entry.value == value)
      return entry.name;
  return nullptr;
}

template <size_t N>
bool valueOf(const NamedCode (&table)[N], const std::string &name, uint32_t &value) {
  for (const NamedCode &entry : table)
    if (name == entry.name) {
      value = entry.value;
      return true;
    }
  return false;
}

bool parseNumber(const std::string &text, uint32_t &value) {
  if (text.empty() || text[0] == '-' || text[0] == '+')
    return false;
  // Decimal, or hexadecimal after 0x; a leading 0 does not mean octal.
  const bool hexadecimal = text.size() > 2 && text[0] == '0' && (text[1] == 'x' || text[1] == 'X');
  char *end = nullptr;
  errno = 0;
  const unsigned long long number = std::strtoull(text.c_str(), &end, hexadecimal ? 16 : 10);
  if (errno != 0 || *end != '\0' || number > UINT32_MAX)
    return false;
  value = static_cast<uint32_t>(number);
  return true;
}

} // namespace

const char *statusName(CAN_STATUS status) { return nameOf(kStatuses, status); }

std::string statusText(CAN_STATUS status) {
  const char *name = statusName(status);
  if (name == nullptr)
    return "status " + std::to_string(status);
  return std::string(name) + " (" + std::to_string(status) + ")";
}

const char *driverEventName(uint32_t type) { return nameOf(kDriverEvents, type); }
const char *deviceEventName(uint32_t type) { return nameOf(kDeviceEvents, type); }

std::string eventTypeText(const char *name, uint32_t type) {
  if (name == nullptr)
    return "type " + std::to_string(type);
  return std::string(name) + " (" + std::to_string(type) + ")";
}

bool parseCode(const std::string &text, uint32_t &value) {
  return parseNumber(text, value) || valueOf(kStatuses, text, value) ||
         valueOf(kDriverEvents, text, value) || valueOf(kDeviceEvents, text, value);
}
