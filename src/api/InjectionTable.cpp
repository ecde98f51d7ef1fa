#include "api/InjectionTable.h"

#include <ace/Functor_String.h>
#include <ace/Hash_Map_Manager_T.h>
#include <ace/SString.h>
#include <ace/Thread_Mutex.h>

#include <atomic>
#include <new>

namespace {

// The table's own lock makes each arming and each look-up whole, so a
// harness may arm while host threads call exports.
using Table = ACE_Hash_Map_Manager_Ex<ACE_CString, InjectedStatus, ACE_Hash<ACE_CString>,
                                      ACE_Equal_To<ACE_CString>, ACE_Thread_Mutex>;

// A fixed number of buckets; the table never grows.
constexpr size_t kBuckets = 32;

Table *table = nullptr;
// Entries armed and not yet taken: with none, a look-up needs no string.
std::atomic<long> armedCount{0};

} // namespace

void InjectionTable::create() {
  if (table != nullptr)
    return;
  table = new (std::nothrow) Table(kBuckets);
  // Without memory for its buckets the table stays empty for good.
  if (table != nullptr && table->total_size() == 0) {
    delete table;
    table = nullptr;
  }
}

void InjectionTable::destroy() {
  delete table;
  table = nullptr;
  armedCount = 0;
}

bool InjectionTable::arm(const char *name, InjectedStatus entry) {
  if (table == nullptr)
    return false;
  // bind() keeps an existing entry and reports 1, a failure to add -1.
  if (table->bind(ACE_CString(name == nullptr ? "" : name), entry) != 0)
    return false;
  ++armedCount;
  return true;
}

bool takeInjectedStatus(const char *name, ACE_UINT32 &status, ACE_UINT8 &detail) {
  if (table == nullptr || armedCount.load() == 0)
    return false;
  InjectedStatus entry;
  if (table->unbind(ACE_CString(name), entry) != 0)
    return false;
  --armedCount;
  status = entry.status;
  detail = entry.detail;
  return true;
}
