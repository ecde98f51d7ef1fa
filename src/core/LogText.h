// Pieces of log lines that several subsystems write the same way.
#pragma once

#include <ace/Basic_Types.h>
#include <ace/SString.h>

#include <cstddef>

// A CAN identifier as "%x" writes it: lower-case hex, no leading zeros.
ACE_WString identifierText(ACE_UINT32 id);

// The line as a formatting buffer of `capacity` wide characters holds it:
// cut to its first capacity - 1 characters.
ACE_WString fittedLine(const ACE_WString &line, size_t capacity);
