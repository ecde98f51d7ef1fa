#include "platform/LibraryHooks.h"

namespace {
__attribute__((constructor)) void onLoad() { cansimuLibraryLoaded(); }
__attribute__((destructor)) void onUnload() { cansimuLibraryUnloading(); }
} // namespace
