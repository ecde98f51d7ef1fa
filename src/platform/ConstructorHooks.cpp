// Load and unload through the compiler's constructor and destructor
// functions: run when a shared library is loaded and unloaded, and when a
// program that links the library statically starts and exits.
#include "platform/LibraryHooks.h"

namespace {
__attribute__((constructor)) void onLoad() { cansimuLibraryLoaded(); }
__attribute__((destructor)) void onUnload() { cansimuLibraryUnloading(); }
} // namespace
