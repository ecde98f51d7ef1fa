# Cross-compiles cansimu as a 64-bit Windows DLL with Debian's MinGW-w64 GCC
# (posix thread model) and runs the resulting executables under wine64.
#
#   cmake/windows-deps.sh x86_64-w64-mingw32 >/dev/null
#   cmake -S . -B build/win64 -DCMAKE_TOOLCHAIN_FILE=cmake/toolchain-mingw64.cmake
#   cmake --build build/win64 -j2
#   WINEDEBUG=-all WINEPREFIX=/tmp/wine64 ctest --test-dir build/win64

set(CANSIMU_MINGW_TARGET x86_64-w64-mingw32)
set(CMAKE_SYSTEM_PROCESSOR x86_64)
set(CANSIMU_WINE_CANDIDATES /usr/lib/wine/wine64 /usr/bin/wine64 /usr/lib64/wine/wine64)
include(${CMAKE_CURRENT_LIST_DIR}/toolchain-mingw-common.cmake)
