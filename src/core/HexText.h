// Hex text: the written form of frames in scenario files, requests and log
// lines. Two upper-case hex digits per byte, no separator.
#pragma once

#include <ace/SString.h>

#include <cstddef>

// Writes each byte with "%02X"; no bytes give the empty text.
ACE_CString bytesToHex(const unsigned char *bytes, size_t count);
// The same text as wide characters, written directly (requests are looked
// up in scenarios as wide text).
ACE_WString bytesToWideHex(const unsigned char *bytes, size_t count);

// Makes floor(length / 2) bytes from narrow hex text, dropping a last odd
// character. Each character c counts c - 0x30 when c <= '9' and c - 0x37
// otherwise, so only '0'-'9' and 'A'-'F' give meaningful bytes; others are
// converted by the same formula without error. The bytes are allocated with
// malloc, also when there are none, and belong to the caller (free). Null
// text gives an empty allocation. Null only when the allocation failed.
unsigned char *hexToBytes(const char *text, size_t &count);
