#include "core/NumberText.h"

#include "platform/ClassicNumbers.h"
#include "platform/CodePage.h"

#include <ace/OS_NS_stdlib.h>

#include <cerrno>
#include <cfloat>
#include <cmath>

ACE_UINT32 hexNumber(const ACE_WString &text) {
  const ACE_CString narrow = toAnsiString(text);
  long value = ACE_OS::strtol(narrow.c_str(), nullptr, 16);
  // Where long is wider than 32 bits, strtol's own clamping happens here.
  if (value > static_cast<long>(ACE_INT32_MAX))
    value = ACE_INT32_MAX;
  if (value < static_cast<long>(ACE_INT32_MIN))
    value = ACE_INT32_MIN;
  return static_cast<ACE_UINT32>(static_cast<ACE_INT32>(value));
}

DecimalReading readDecimal(const ACE_WString &text) {
  const ACE_CString narrow = toAnsiString(text);
  char *end = nullptr;
  errno = 0;
  const double value = classicStrtod(narrow.c_str(), &end);
  // A number beyond even a double comes back infinite with ERANGE.
  const bool overflowed = errno == ERANGE && std::isinf(value);
  DecimalReading reading = {0.0f, end != narrow.c_str(), false};
  // Narrowing a finite double beyond the float range is undefined; it reads
  // as the infinity of its sign.
  if (overflowed || (std::isfinite(value) && std::fabs(value) > FLT_MAX)) {
    reading.beyondFloat = true;
    reading.value = value > 0 ? HUGE_VALF : -HUGE_VALF;
  } else {
    reading.value = static_cast<float>(value);
  }
  return reading;
}
