// What happens when the library is loaded and unloaded: ACE is initialised,
// the injection table built empty and the stored configuration path emptied;
// at unload the reverse. A driver the host never ended is left as it is.
#include "api/InjectionTable.h"
#include "core/SimuDriver.h"
#include "platform/LibraryHooks.h"

#include <ace/Init_ACE.h>

void cansimuLibraryLoaded() {
  ACE::init();
  InjectionTable::create();
  SimuDriver::processAttach();
}

void cansimuLibraryUnloading() {
  SimuDriver::processDetach();
  InjectionTable::destroy();
  ACE::fini();
}
