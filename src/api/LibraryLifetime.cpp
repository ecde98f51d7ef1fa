// What happens when the library is loaded and unloaded: the log file that
// CANSIMU_LOG names is opened, ACE is initialised and given the allocator
// that throws when memory runs out, the injection table built empty (each
// read of the configuration fills it from the bench's INJECT elements) and
// the stored configuration path emptied, then the bus trace and the session
// report that CANSIMU_TRACE and CANSIMU_REPORT name are started; at unload
// the reverse, the report written a last time. A driver the host never
// ended is left as it is.
#include "api/BenchInjections.h"
#include "api/InjectionTable.h"
#include "core/BusTrace.h"
#include "core/SessionReport.h"
#include "core/SimuDriver.h"
#include "core/ThrowingAllocator.h"
#include "platform/LibraryHooks.h"
#include "platform/LogFile.h"

#include <ace/Init_ACE.h>

void cansimuLibraryLoaded() {
  LogFile::openFromEnvironment();
  ACE::init();
  throwing_allocator::install();
  InjectionTable::create();
  SimuDriver::processAttach();
  SimuDriver::setLastConfigurationStep(&BenchInjections::apply);
  BusTrace::openFromEnvironment();
  SessionReport::openFromEnvironment();
}

void cansimuLibraryUnloading() {
  SessionReport::close();
  BusTrace::close();
  SimuDriver::processDetach();
  InjectionTable::destroy();
  throwing_allocator::remove();
  ACE::fini();
  LogFile::close();
}
