#include "api/InjectionTable.h"

#include <ace/Guard_T.h>
#include <ace/Thread_Mutex.h>

#include <atomic>
#include <functional>
#include <map>
#include <new>
#include <string>

namespace {

// One entry per exact name. A standard map rather than ACE's: ACE's hash
// map loses an entry's memory when copying the key fails, and names are
// looked up here without copying them. The table's own lock makes each
// arming and each look-up whole, so a harness may arm while host threads
// call exports.
using Table = std::map<std::string, InjectedStatus, std::less<>>;

struct Guarded {
  ACE_Thread_Mutex lock;
  Table entries;
};

Guarded *table = nullptr;
// Entries armed and not yet taken: with none, a look-up takes no lock.
std::atomic<long> armedCount{0};

} // namespace

void InjectionTable::create() {
  if (table != nullptr)
    return;
  // Without memory the table stays empty for good.
  table = new (std::nothrow) Guarded;
}

void InjectionTable::destroy() {
  delete table;
  table = nullptr;
  armedCount = 0;
}

bool InjectionTable::arm(const char *name, InjectedStatus entry) {
  if (table == nullptr)
    return false;
  ACE_GUARD_RETURN(ACE_Thread_Mutex, guard, table->lock, false);
  // An existing entry stays; without memory for a new one nothing is armed.
  try {
    if (!table->entries.emplace(name == nullptr ? "" : name, entry).second)
      return false;
  } catch (const std::bad_alloc &) {
    return false;
  }
  ++armedCount;
  return true;
}

bool takeInjectedStatus(const char *name, ACE_UINT32 &status, ACE_UINT8 &detail) {
  if (table == nullptr || armedCount.load() == 0 || name == nullptr)
    return false;
  ACE_GUARD_RETURN(ACE_Thread_Mutex, guard, table->lock, false);
  const auto found = table->entries.find(name);
  if (found == table->entries.end())
    return false;
  status = found->second.status;
  detail = found->second.detail;
  table->entries.erase(found);
  --armedCount;
  return true;
}
