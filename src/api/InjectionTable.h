// The process-wide table of armed statuses: a test harness arms a status for
// an export name, and the next call of that export that passes its argument
// checks returns it instead of doing its work. One entry per name; names are
// compared exactly (case-sensitive). The table has a lock of its own: the
// library arms it too, when it re-reads the configuration on the thread in
// CAN_DrvRxMsg, while other host threads call exports that consult it.
#pragma once

#include <ace/Basic_Types.h>

struct InjectedStatus {
  ACE_UINT32 status;
  ACE_UINT8 detail;
};

namespace InjectionTable {
// Built empty when the library is loaded; destroyed, with any entries left,
// when it is unloaded.
void create();
void destroy();
// Arms `name`: true when the entry was added. An entry already armed under
// that name stays as it was (false, as when there is no memory to add one).
bool arm(const char *name, InjectedStatus entry);
} // namespace InjectionTable

// The injection step's one look-up: when `name` is armed, copies its status
// and detail out, removes the entry and returns true; otherwise writes
// nothing and returns false.
bool takeInjectedStatus(const char *name, ACE_UINT32 &status, ACE_UINT8 &detail);
