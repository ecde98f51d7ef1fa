#include "api/InjectionTable.h"

#include <ace/Functor_String.h>
#include <ace/Hash_Map_Manager_T.h>
#include <ace/SString.h>
#include <ace/Thread_Mutex.h>

namespace {

using Table = ACE_Hash_Map_Manager_Ex<ACE_CString, InjectedStatus, ACE_Hash<ACE_CString>,
                                      ACE_Equal_To<ACE_CString>, ACE_Thread_Mutex>;

// A fixed number of buckets; the table never grows.
constexpr size_t kBuckets = 32;

Table *table = nullptr;

} // namespace

void InjectionTable::create() {
  if (table == nullptr)
    table = new Table(kBuckets);
}

void InjectionTable::destroy() {
  delete table;
  table = nullptr;
}

bool InjectionTable::arm(const char *name, InjectedStatus entry) {
  if (table == nullptr)
    return false;
  // bind() keeps an existing entry and reports 1, a failure to add -1.
  return table->bind(ACE_CString(name == nullptr ? "" : name), entry) == 0;
}

bool takeInjectedStatus(const char *name, ACE_UINT32 &status, ACE_UINT8 &detail) {
  if (table == nullptr)
    return false;
  InjectedStatus entry;
  if (table->unbind(ACE_CString(name), entry) != 0)
    return false;
  status = entry.status;
  detail = entry.detail;
  return true;
}
