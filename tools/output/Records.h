// The library's records in plain words, one short phrase each.
#pragma once

#include "cansimu/cansimu.h"

#include <string>
#include <vector>

// A record's fixed-size text field as a string (it may lack its zero).
template <size_t N> std::string fieldText(const char (&field)[N]) {
  size_t length = 0;
  while (length < N && field[length] != '\0')
    ++length;
  return std::string(field, length);
}

// "boot B1.04 (12/03/24, A5C3), application A3.17 (02/09/25, 7E21)"
std::string describeVersions(const CAN_VersionDev &version);
// One of them: "B1.04 (12/03/24, A5C3)".
std::string describeBootVersion(const CAN_VersionDev &version);
std::string describeApplicationVersion(const CAN_VersionDev &version);
// "battery 12.60 V, APC Kelmora 12.40 V, APC Dravik 5.00 V"
std::string describeTension(const CAN_TensionDev &tension);
// "mode 0 (firmware download)"
std::string describeMode(uint32_t mode);
// "firmware download"
const char *modeName(uint32_t mode);
// "\"SIMU-0001\", free, connected"
std::string describeDevice(const CAN_EnumDev &device);

// One event with its type name and what its payload says.
std::string describeDriverEvent(const CAN_EventDrv &event);
std::string describeDeviceEvent(const CAN_EventDev &event);
// The value a DEV_TYPE_PROGRESS event carries in its data word.
uint32_t progressValue(const CAN_EventDev &event);

// "battery 12.60 V, CAN high 2.45-3.55 V, low 1.45-2.55 V"
std::string describeMeasures(const CAN_MesPhysPort &values);

// An event of the port or a channel: its type (and a short payload) as the
// summary, and the lines that decode an answer it carries, at most `width`
// columns wide where they can be.
struct EventText {
  std::string summary;
  std::vector<std::string> details;
};
EventText describePortEvent(const CAN_EventPort &event, size_t width);
EventText describeChannelEvent(const CAN_EventChn &event, size_t width);
