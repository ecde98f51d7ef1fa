// Load and unload of the Windows DLL.
#include "platform/LibraryHooks.h"

#include <windows.h>

extern "C" BOOL WINAPI DllMain(HINSTANCE, DWORD reason, LPVOID) {
  if (reason == DLL_PROCESS_ATTACH)
    cansimuLibraryLoaded();
  else if (reason == DLL_PROCESS_DETACH)
    cansimuLibraryUnloading();
  return TRUE;
}
