#include "output/Records.h"

#include "names/StatusNames.h"
#include "output/FrameText.h"

#include <cmath>
#include <cstdint>
#include <cstdio>

namespace {

// A bench may give a value beyond a float (1e39) or "nan": no voltage.
std::string volts(float value) {
  if (std::isnan(value))
    return "no voltage (nan)";
  if (std::isinf(value))
    return value > 0 ? "no voltage (inf)" : "no voltage (-inf)";
  char text[32];
  std::snprintf(text, sizeof text, "%.2f V", static_cast<double>(value));
  return text;
}

// "2.45-3.55 V"
std::string voltRange(float low, float high) {
  if (!std::isfinite(low) || !std::isfinite(high))
    return volts(low) + " to " + volts(high);
  char text[48];
  std::snprintf(text, sizeof text, "%.2f-%.2f V", static_cast<double>(low),
                static_cast<double>(high));
  return text;
}

std::string firmware(const std::string &version, const std::string &date,
                     const std::string &checkSum) {
  return version + " (" + date + ", " + checkSum + ")";
}

// The payload of a device event, by type; empty when it has none.
std::string devicePayload(const CAN_EventDev &event) {
  if (event.type == DEV_TYPE_PROGRESS)
    return std::to_string(progressValue(event)) + " %";
  if (event.data == nullptr)
    return "";
  const auto *bytes = static_cast<const uint8_t *>(event.data);
  switch (event.type) {
  case DEV_TYPE_DISCONNECTED:
  case DEV_TYPE_CONNECTED:
    return "device " + describeDevice(*static_cast<const CAN_EnumDev *>(event.data));
  case DEV_TYPE_STATUS_PAIR:
    return "values " + hexByte(bytes[0]) + ", " + hexByte(bytes[1]);
  case DEV_TYPE_STATUS:
  case DEV_TYPE_RESET:
    return "value " + hexByte(bytes[0]);
  case DEV_TYPE_CONFIG:
    return describeVersions(*static_cast<const CAN_VersionDev *>(event.data));
  case DEV_TYPE_TENSION:
    return describeTension(*static_cast<const CAN_TensionDev *>(event.data));
  case DEV_TYPE_MODE:
    return describeMode(static_cast<const CAN_ModeDev *>(event.data)->mode);
  default:
    return "";
  }
}

} // namespace

std::string describeBootVersion(const CAN_VersionDev &version) {
  return firmware(fieldText(version.bootVersion), fieldText(version.bootDate),
                  fieldText(version.bootCheckSum));
}

std::string describeApplicationVersion(const CAN_VersionDev &version) {
  return firmware(fieldText(version.appVersion), fieldText(version.appDate),
                  fieldText(version.appCheckSum));
}

std::string describeVersions(const CAN_VersionDev &version) {
  return "boot " + describeBootVersion(version) + ", application " +
         describeApplicationVersion(version);
}

std::string describeTension(const CAN_TensionDev &tension) {
  return "battery " + volts(tension.batteryVoltage) + ", APC Kelmora " + volts(tension.apcKelmora) +
         ", APC Dravik " + volts(tension.apcDravik);
}

const char *modeName(uint32_t mode) {
  switch (mode) {
  case 0:
    return "firmware download";
  case 1:
    return "CAN parameters";
  case 2:
    return "raw frames";
  case 3:
    return "physical measures";
  default:
    return "no such mode on the box";
  }
}

std::string describeMode(uint32_t mode) {
  return "mode " + std::to_string(mode) + " (" + modeName(mode) + ")";
}

std::string describeDevice(const CAN_EnumDev &device) {
  return "\"" + fieldText(device.name) + "\", " + (device.reserved ? "reserved" : "free") + ", " +
         (device.disconnected ? "disconnected" : "connected");
}

uint32_t progressValue(const CAN_EventDev &event) {
  return static_cast<uint32_t>(reinterpret_cast<uintptr_t>(event.data));
}

std::string describeDriverEvent(const CAN_EventDrv &event) {
  std::string text = eventTypeText(driverEventName(event.type), event.type);
  if (event.type != DRV_TYPE_ENDFIFO)
    text += ", detail " + std::to_string(event.detail);
  if (event.data != nullptr)
    text += ", device " + describeDevice(*static_cast<const CAN_EnumDev *>(event.data));
  return text;
}

std::string describeDeviceEvent(const CAN_EventDev &event) {
  const std::string payload = devicePayload(event);
  const std::string type = eventTypeText(deviceEventName(event.type), event.type);
  return payload.empty() ? type : type + ", " + payload;
}

std::string describeMeasures(const CAN_MesPhysPort &values) {
  return "battery " + volts(values.batteryVoltage) + ", CAN high " +
         voltRange(values.canHmin, values.canHmax) + ", low " +
         voltRange(values.canLmin, values.canLmax);
}

EventText describePortEvent(const CAN_EventPort &event, size_t width) {
  EventText text{eventTypeText(portEventName(event.type), event.type), {}};
  if (event.data == nullptr)
    return text;
  switch (event.type) {
  case PRT_TYPE_FRAME: {
    const auto &frame = *static_cast<const CAN_FramePort *>(event.data);
    const size_t length = frame.length < 8 ? frame.length : 8;
    text.details = answerLines("from " + canIdText(frame.canId), frame.bytes, length, width);
    break;
  }
  case PRT_TYPE_MES_PHYS:
    text.summary += ", " + describeMeasures(*static_cast<const CAN_MesPhysPort *>(event.data));
    break;
  case PRT_TYPE_CAN_PARAM: {
    const auto &params = *static_cast<const CAN_ParamPort *>(event.data);
    text.summary += ", parameters " + std::to_string(params.param1) + " " +
                    std::to_string(params.param2) + " " + std::to_string(params.param3) + " " +
                    std::to_string(params.param4) + " " + std::to_string(params.param5) + " " +
                    std::to_string(params.param6);
    break;
  }
  case PRT_TYPE_STATE:
    break;
  default:
    // The injected types carry the injected value in their first byte.
    text.summary += ", value " + hexByte(*static_cast<const uint8_t *>(event.data));
  }
  return text;
}

EventText describeChannelEvent(const CAN_EventChn &event, size_t width) {
  EventText text{eventTypeText(channelEventName(event.type), event.type), {}};
  if (event.data != nullptr) {
    const auto &result = *static_cast<const CAN_ChnResult *>(event.data);
    const std::string head =
        "ECU " + hexByte(result.responderAddress) + ", " + resultCodeText(result.resultCode);
    if (channelResultOf(event.type) == ChannelResult::Frame)
      text.details = answerLines(head, result.frameData, result.frameLength, width);
    else
      text.details.push_back(head);
  }
  if (event.request != nullptr) {
    const auto &request = *static_cast<const CAN_DiagMsg *>(event.request);
    const size_t shown = request.length < 8 ? request.length : 8;
    const std::string meaning = requestMeaning(request.data, request.length);
    text.details.push_back("with the request " + spacedHex(request.data, shown) +
                           (shown < request.length ? " ..." : "") +
                           (meaning.empty() ? "" : " (" + meaning + ")"));
  }
  return text;
}
