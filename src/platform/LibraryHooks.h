// Library load and unload. The platform calls these two functions, which the
// library defines, once when the library is loaded and once when it is
// unloaded (DllMain on Windows, constructor and destructor functions on
// POSIX).
#pragma once

void cansimuLibraryLoaded();
void cansimuLibraryUnloading();
