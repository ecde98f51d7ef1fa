#include "StatusNames.h"

namespace {
const char *statusName(CAN_STATUS status) {
  switch (status) {
  case E_SUCCESS:
    return "E_SUCCESS";
  case E_BOARD_ERROR_1:
    return "E_BOARD_ERROR_1";
  case E_BOARD_ERROR_2:
    return "E_BOARD_ERROR_2";
  case E_NO_EVENT:
    return "E_NO_EVENT";
  case E_INVALID:
    return "E_INVALID";
  case E_ALREADY_RESERVED:
    return "E_ALREADY_RESERVED";
  case E_DISCONNECTED:
    return "E_DISCONNECTED";
  case E_NOMEM:
    return "E_NOMEM";
  case E_NOT_FOUND:
    return "E_NOT_FOUND";
  case E_BAD_FILE:
    return "E_BAD_FILE";
  case E_RECONF_PROGRESS:
    return "E_RECONF_PROGRESS";
  case E_DENIED_KERNEL_ACCESS:
    return "E_DENIED_KERNEL_ACCESS";
  case E_NULL_POINTER:
    return "E_NULL_POINTER";
  case E_KERNEL_RW_ERROR:
    return "E_KERNEL_RW_ERROR";
  case E_CHANNEL_REFUSED:
    return "E_CHANNEL_REFUSED";
  case E_BUSOFF:
    return "E_BUSOFF";
  default:
    return "injected status";
  }
}
} // namespace

std::string statusText(CAN_STATUS status) {
  return std::string(statusName(status)) + " (" + std::to_string(status) + ")";
}
