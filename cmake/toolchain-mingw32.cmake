# Cross-compiles cansimu as a 32-bit Windows DLL with Debian's MinGW-w64 GCC
# (posix thread model).
#
#   cmake/windows-deps.sh i686-w64-mingw32 >/dev/null
#   cmake -S . -B build/win32 -DCMAKE_TOOLCHAIN_FILE=cmake/toolchain-mingw32.cmake
#   cmake --build build/win32 -j2
#
# wine64 cannot start 32-bit executables; Debian needs the i386 wine32
# package for that. When it is installed (/usr/lib/wine/wine exists) it
# becomes the emulator and ctest runs the 32-bit tests too, otherwise the
# 32-bit build is compile- and link-only.

set(CANSIMU_MINGW_TARGET i686-w64-mingw32)
set(CMAKE_SYSTEM_PROCESSOR x86)
set(CANSIMU_WINE_CANDIDATES /usr/lib/wine/wine /usr/lib32/wine/wine)
include(${CMAKE_CURRENT_LIST_DIR}/toolchain-mingw-common.cmake)
