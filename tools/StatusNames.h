// Status codes, event types and result codes by name, for people:
// "E_DISCONNECTED (7)", "DEV_TYPE_RESET (205)", "cTimeOut (2)"; and back
// from a name typed by a tester or written in a bench.
#pragma once

#include "cansimu/cansimu.h"

#include <cstdint>
#include <string>

// The name of a status code, or null for a value only an injection gives.
const char *statusName(CAN_STATUS status);
// "E_DISCONNECTED (7)"; "status 300" for a value without a name.
std::string statusText(CAN_STATUS status);
// True for the name of a status code ("E_BUSOFF").
bool isStatusName(const std::string &name);
// True for the status names a DETBAUDRATE text may give; baud-rate
// detection answers E_INVALID for any other text.
bool isDetectionOutcome(const std::string &name);

// The event type names of each queue; null for a type without a name.
const char *driverEventName(uint32_t type);
const char *deviceEventName(uint32_t type);
const char *portEventName(uint32_t type);
const char *channelEventName(uint32_t type);
// "DEV_TYPE_RESET (205)"; "type 150" for a type without a name.
std::string eventTypeText(const char *name, uint32_t type);
// The type of one of the fourteen channel event type names a scenario's
// typed answer may give ("CHN_TYPE_RCV_FAILED_TIMEOUT"); false for any
// other text.
bool channelEventType(const std::string &name, uint32_t &type);
// What a channel event of a type carries in its data: nothing, a short
// result (a result code) or a frame result (a result code and a frame).
enum class ChannelResult { None, Short, Frame };
ChannelResult channelResultOf(uint32_t type);

// The result code of a channel result ("cTimeOut"), or null.
const char *resultCodeName(uint32_t code);
// "cTimeOut (2)"; "result 15" for a code without a name.
std::string resultCodeText(uint32_t code);
// True for a result code name a typed answer may give.
bool isResultCodeName(const std::string &name);

// Reads a number (decimal or 0x hexadecimal), a status name or a driver,
// device or port event type name, as a tester writes them for an
// injection. False for anything else.
bool parseCode(const std::string &text, uint32_t &value);
