// The diagnostic services and negative response codes a tester meets, by
// their ISO 14229 names, from one table.
#pragma once

#include <cstdint>

// "ReadDataByIdentifier" for 0x22; null for a byte that names no service.
const char *serviceName(uint8_t serviceId);
// "serviceNotSupported" for 0x11; null for a code without a name.
const char *negativeResponseName(uint8_t code);
