// The two number forms of the configuration file's attributes.
#pragma once

#include <ace/Basic_Types.h>
#include <ace/SString.h>
#include <string>

// Hexadecimal as strtol reads it with base 16 into a 32-bit long: leading
// white space, a sign, an optional 0x, digits of either case up to the first
// other character; no digits give 0, and values are clamped to the signed
// 32-bit range. The result is that value's 32 bits, unsigned.
ACE_UINT32 hexNumber(const ACE_WString &text);

// A decimal read as strtod reads it in the "C" locale, whatever the
// process's locale, narrowed to a float: text that does not begin with a
// number gives 0, a value beyond the float range the infinity of its sign.
struct DecimalReading {
  float value;
  bool isNumber;    // the text begins with a number
  bool beyondFloat; // the number written is beyond what a float holds
};
DecimalReading readDecimal(const ACE_WString &text);
inline float decimalNumber(const ACE_WString &text) { return readDecimal(text).value; }

// A number in decimal digits, for log lines.
inline ACE_WString decimalText(unsigned long long value) {
  return ACE_WString(std::to_wstring(value).c_str());
}
