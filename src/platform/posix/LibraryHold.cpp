// A hold on the shared object that holds this code: one more reference taken
// through the dynamic loader (for a program linked statically, a reference
// to the program, which is never unloaded anyway).
#include "platform/LibraryHooks.h"

#include <dlfcn.h>

void *holdLibrary() {
  Dl_info info;
  if (::dladdr(reinterpret_cast<void *>(&holdLibrary), &info) == 0 || info.dli_fname == nullptr)
    return nullptr;
  return ::dlopen(info.dli_fname, RTLD_LAZY | RTLD_NOLOAD);
}

void releaseLibrary(void *hold) {
  if (hold != nullptr)
    ::dlclose(hold);
}
