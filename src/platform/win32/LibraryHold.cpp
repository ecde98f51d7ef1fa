// A hold on the module that holds this code: one more reference to the DLL
// (for a program linked statically, to the program itself).
#include "platform/LibraryHooks.h"

#include <windows.h>

void *holdLibrary() {
  HMODULE module = nullptr;
  if (!::GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS,
                            reinterpret_cast<LPCWSTR>(&holdLibrary), &module))
    return nullptr;
  return module;
}

void releaseLibrary(void *hold) {
  if (hold != nullptr)
    ::FreeLibrary(static_cast<HMODULE>(hold));
}
