// Library load and unload. The platform calls these two functions, which the
// library defines, once when the library is loaded and once when it is
// unloaded: DllMain for the Windows DLL, constructor and destructor functions
// for the Linux library and for programs that link the library statically.
#pragma once

void cansimuLibraryLoaded();
void cansimuLibraryUnloading();

// A thread the library starts keeps the library loaded while it runs: it
// takes a hold when it is started and gives it back as its last act, so a
// host that unloads the library without ending the driver never unmaps code
// a thread still runs (the library then stays loaded until the process
// ends). Null when no hold could be taken.
void *holdLibrary();
void releaseLibrary(void *hold);
