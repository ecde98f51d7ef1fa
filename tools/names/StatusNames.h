// names/: status, event type, result code, service and injection names, read and printed.
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
// The status a name stands for; false for any other text.
bool statusValue(const std::string &name, uint32_t &status);
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
// The type a driver, device or port event type name stands for; false for
// any other text, a name of another level's types too.
bool driverEventType(const std::string &name, uint32_t &type);
bool deviceEventType(const std::string &name, uint32_t &type);
bool portEventType(const std::string &name, uint32_t &type);
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

// How a number typed by a tester reads.
enum class NumberReading { Read, NotANumber, OutOfRange };
// Reads a whole number, decimal or hexadecimal after 0x (a leading 0 is not
// octal), from 0 to `most`. A negative number is out of range. The value is
// written only when the text reads.
NumberReading readNumber(const std::string &text, uint32_t most, uint32_t &value);
// "'4294967296' is out of range (0 to 4294967295)" or "'12x' is not a
// number", for a text that did not read.
std::string numberProblem(const std::string &text, NumberReading reading, uint32_t most);
