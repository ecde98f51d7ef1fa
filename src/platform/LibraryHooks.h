// Library load and unload. The platform calls these two functions, which the
// library defines, once when the library is loaded and once when it is
// unloaded: DllMain for the Windows DLL, constructor and destructor functions
// for the Linux library and for programs that link the library statically.
#pragma once

void cansimuLibraryLoaded();
void cansimuLibraryUnloading();
