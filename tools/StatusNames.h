// Status codes by name, for people: "E_DISCONNECTED (7)".
#pragma once

#include "cansimu/cansimu.h"

#include <string>

std::string statusText(CAN_STATUS status);
