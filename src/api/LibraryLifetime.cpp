// What happens when the library is loaded and unloaded: the log file that
// CANSIMU_LOG names is opened, ACE is initialised and given the allocator
// that throws when memory runs out, the injection table built empty and the
// stored configuration path emptied; at unload the reverse. A driver the
// host never ended is left as it is.
#include "api/InjectionTable.h"
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
}

void cansimuLibraryUnloading() {
  SimuDriver::processDetach();
  InjectionTable::destroy();
  throwing_allocator::remove();
  ACE::fini();
  LogFile::close();
}
