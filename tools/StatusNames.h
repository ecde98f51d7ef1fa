// Status codes and event types by name, for people: "E_DISCONNECTED (7)",
// "DEV_TYPE_RESET (205)"; and back from a name typed by a tester.
#pragma once

#include "cansimu/cansimu.h"

#include <cstdint>
#include <string>

// The name of a status code, or null for a value only an injection gives.
const char *statusName(CAN_STATUS status);
// "E_DISCONNECTED (7)"; "status 300" for a value without a name.
std::string statusText(CAN_STATUS status);

// The event type names of each queue; null for a type without a name.
const char *driverEventName(uint32_t type);
const char *deviceEventName(uint32_t type);
// "DEV_TYPE_RESET (205)"; "type 150" for a type without a name.
std::string eventTypeText(const char *name, uint32_t type);

// Reads a number (decimal or 0x hexadecimal), a status name or an event
// type name, as a tester writes them for an injection. False for anything
// else.
bool parseCode(const std::string &text, uint32_t &value);
