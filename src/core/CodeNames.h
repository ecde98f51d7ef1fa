// The names of the interface's codes, one table per set: statuses, the event
// types of each queue and the result codes of a channel result. The library
// reads them in benches and scenarios; the command-line program prints them
// and reads them from what a tester types.
#pragma once

#include <ace/Basic_Types.h>

#include <cstddef>

struct CodeName {
  const char *name;
  ACE_UINT32 value;
};

// A table of names, in the order of the interface's header.
struct CodeTable {
  const CodeName *names;
  size_t count;
  const CodeName *begin() const { return names; }
  const CodeName *end() const { return names + count; }
};

namespace CodeNames {
// The sixteen CAN_STATUS codes.
CodeTable statuses();
// What baud-rate detection can answer from a DETBAUDRATE text.
CodeTable detectionOutcomes();
CodeTable driverEventTypes();
CodeTable deviceEventTypes();
CodeTable portEventTypes();
// The fourteen CHN_TYPE_ names a scenario's typed answer may give.
CodeTable channelEventTypes();
// The named result codes of a channel result; 15 to 19, 25 to 29 and 33 to
// 63 have no name.
CodeTable resultCodes();
} // namespace CodeNames
