#include "names/StatusNames.h"

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

// What baud-rate detection can answer from a DETBAUDRATE text.
const CAN_STATUS kDetectionOutcomes[] = {E_SUCCESS,         E_BOARD_ERROR_1, E_BOARD_ERROR_2,
                                         E_BUSOFF,          E_DISCONNECTED,  E_DENIED_KERNEL_ACCESS,
                                         E_KERNEL_RW_ERROR, E_NOMEM,         E_RECONF_PROGRESS};

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

const NamedCode kPortEvents[] = {
    {PRT_TYPE_ENDFIFO, "PRT_TYPE_ENDFIFO"}, {PRT_TYPE_CAN_PARAM, "PRT_TYPE_CAN_PARAM"},
    {PRT_TYPE_STATE, "PRT_TYPE_STATE"},     {PRT_TYPE_MES_PHYS, "PRT_TYPE_MES_PHYS"},
    {PRT_TYPE_FRAME, "PRT_TYPE_FRAME"},
};

const NamedCode kChannelEvents[] = {
    {CHN_TYPE_ENDFIFO, "CHN_TYPE_ENDFIFO"},
    {CHN_TYPE_CRSNDDIAGFRAME, "CHN_TYPE_CRSNDDIAGFRAME"},
    {CHN_TYPE_SEND_FAILED_LOSSOFCOM, "CHN_TYPE_SEND_FAILED_LOSSOFCOM"},
    {CHN_TYPE_SEND_FAILED_CRNEG, "CHN_TYPE_SEND_FAILED_CRNEG"},
    {CHN_TYPE_SEND_FAILED_TIMEOUT, "CHN_TYPE_SEND_FAILED_TIMEOUT"},
    {CHN_TYPE_SEND_FAILED_INTERNAL_DRIVER_ERROR, "CHN_TYPE_SEND_FAILED_INTERNAL_DRIVER_ERROR"},
    {CHN_TYPE_RCV_CORRUPTED_FRAME, "CHN_TYPE_RCV_CORRUPTED_FRAME"},
    {CHN_TYPE_RCV_STARTOK_NOTCOMPLIANT, "CHN_TYPE_RCV_STARTOK_NOTCOMPLIANT"},
    {CHN_TYPE_REQ_1_0_EMITTED, "CHN_TYPE_REQ_1_0_EMITTED"},
    {CHN_TYPE_RCV_FAILED_TIMEOUT, "CHN_TYPE_RCV_FAILED_TIMEOUT"},
    {CHN_TYPE_RCV_SUCCESS, "CHN_TYPE_RCV_SUCCESS"},
    {CHN_TYPE_RCV_SUCCESS_BUT_UNEXPECTED, "CHN_TYPE_RCV_SUCCESS_BUT_UNEXPECTED"},
    {CHN_TYPE_RCV_FAILED_NO_RESPONSE, "CHN_TYPE_RCV_FAILED_NO_RESPONSE"},
    {CHN_TYPE_END_OF_RCV, "CHN_TYPE_END_OF_RCV"},
};

// The result codes of a channel result; 15 to 19, 25 to 29 and 33 to 63
// have no name.
const NamedCode kResultCodes[] = {
    {0, "cOk"},
    {1, "cNok"},
    {2, "cTimeOut"},
    {3, "cErreurParametre"},
    {4, "cCodeCommandeInvalide"},
    {5, "cCommandeNonImplementee"},
    {6, "cLongueurDonneesInvalide"},
    {7, "cParametreInvalide"},
    {8, "cErreurEcriture"},
    {9, "cErreurLecture"},
    {10, "cIdCanInvalide"},
    {11, "cOctetFiInvalide"},
    {12, "cBusOff"},
    {13, "cErreurPassiveBus"},
    {14, "cModeIncompatible"},
    {20, "cBrpInvalide"},
    {21, "cTseg1Invalide"},
    {22, "cTseg2Invalide"},
    {23, "cSamInvalide"},
    {24, "cSjwInvalide"},
    {30, "cMTypeInvalide"},
    {31, "cTaTypeInvalide"},
    {32, "cAbonneInconnu"},
    {64, "cErreurUsb"},
    {65, "cTimeOutOctet"},
    {66, "cTimeOutTrame"},
    {67, "cErreurCypress"},
    {68, "cLongueursIncoherentes"},
    {69, "cLongueurTrameFausse"},
    {70, "cLongueurTrameInvalide"},
    {71, "cTypeTrameInvalide"},
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

template <size_t N> bool named(const NamedCode (&table)[N], const std::string &name) {
  uint32_t ignored = 0;
  return valueOf(table, name, ignored);
}

std::string numbered(const char *name, const char *unnamed, uint32_t value) {
  if (name == nullptr)
    return std::string(unnamed) + " " + std::to_string(value);
  return std::string(name) + " (" + std::to_string(value) + ")";
}

} // namespace

const char *statusName(CAN_STATUS status) { return nameOf(kStatuses, status); }

std::string statusText(CAN_STATUS status) { return numbered(statusName(status), "status", status); }

bool isStatusName(const std::string &name) { return named(kStatuses, name); }

bool statusValue(const std::string &name, uint32_t &status) {
  return valueOf(kStatuses, name, status);
}

bool isDetectionOutcome(const std::string &name) {
  uint32_t status = 0;
  if (!valueOf(kStatuses, name, status))
    return false;
  for (CAN_STATUS outcome : kDetectionOutcomes)
    if (outcome == status)
      return true;
  return false;
}

const char *driverEventName(uint32_t type) { return nameOf(kDriverEvents, type); }
const char *deviceEventName(uint32_t type) { return nameOf(kDeviceEvents, type); }
const char *portEventName(uint32_t type) { return nameOf(kPortEvents, type); }
const char *channelEventName(uint32_t type) { return nameOf(kChannelEvents, type); }

std::string eventTypeText(const char *name, uint32_t type) { return numbered(name, "type", type); }

bool driverEventType(const std::string &name, uint32_t &type) {
  return valueOf(kDriverEvents, name, type);
}
bool deviceEventType(const std::string &name, uint32_t &type) {
  return valueOf(kDeviceEvents, name, type);
}
bool portEventType(const std::string &name, uint32_t &type) {
  return valueOf(kPortEvents, name, type);
}

bool channelEventType(const std::string &name, uint32_t &type) {
  return valueOf(kChannelEvents, name, type);
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

const char *resultCodeName(uint32_t code) { return nameOf(kResultCodes, code); }

std::string resultCodeText(uint32_t code) { return numbered(resultCodeName(code), "result", code); }

bool isResultCodeName(const std::string &name) { return named(kResultCodes, name); }

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
