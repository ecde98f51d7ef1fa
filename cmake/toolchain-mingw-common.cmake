# The part of the MinGW-w64 toolchain files that both targets share. The
# including file sets CANSIMU_MINGW_TARGET, CMAKE_SYSTEM_PROCESSOR and
# CANSIMU_WINE_CANDIDATES (the Wine loaders that can run its executables,
# first found wins) before including this one.
#
# Libraries and headers (ACE, pugixml, GoogleTest) are searched only in the
# static dependency prefix made by cmake/windows-deps.sh and in the MinGW
# sysroot. The prefix defaults to the path that script prints; set
# CANSIMU_DEPS_PREFIX (as a -D cache entry or in the environment) to use
# another one.
#
# Everything is linked with -static, so the DLL and the test executables
# import only Windows system DLLs: no libstdc++, libgcc or libwinpthread DLL
# has to travel with them.

set(CMAKE_SYSTEM_NAME Windows)

set(CMAKE_C_COMPILER ${CANSIMU_MINGW_TARGET}-gcc-posix)
set(CMAKE_CXX_COMPILER ${CANSIMU_MINGW_TARGET}-g++-posix)
set(CMAKE_RC_COMPILER ${CANSIMU_MINGW_TARGET}-windres)

# The prefix name is derived from the dependency set id in windows-deps.sh so
# that the two never disagree about where a given set of libraries lives.
if(NOT CANSIMU_DEPS_PREFIX)
  if(DEFINED ENV{CANSIMU_DEPS_PREFIX} AND NOT "$ENV{CANSIMU_DEPS_PREFIX}" STREQUAL "")
    set(CANSIMU_DEPS_PREFIX "$ENV{CANSIMU_DEPS_PREFIX}")
  else()
    file(STRINGS "${CMAKE_CURRENT_LIST_DIR}/windows-deps.sh" _cansimu_deps_id
         REGEX "^CANSIMU_WINDEPS_ID=" LIMIT_COUNT 1)
    string(REGEX REPLACE "^CANSIMU_WINDEPS_ID=\"?([^\"]*)\"?.*$" "\\1"
           _cansimu_deps_id "${_cansimu_deps_id}")
    if(DEFINED ENV{XDG_CACHE_HOME} AND NOT "$ENV{XDG_CACHE_HOME}" STREQUAL "")
      set(_cansimu_cache "$ENV{XDG_CACHE_HOME}")
    else()
      set(_cansimu_cache "$ENV{HOME}/.cache")
    endif()
    set(CANSIMU_DEPS_PREFIX
        "${_cansimu_cache}/cansimu/windeps-${_cansimu_deps_id}-${CANSIMU_MINGW_TARGET}")
  endif()
endif()
# try_compile() projects read this file again; hand them the same prefix.
list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES CANSIMU_DEPS_PREFIX)

set(CMAKE_FIND_ROOT_PATH "${CANSIMU_DEPS_PREFIX}" /usr/${CANSIMU_MINGW_TARGET})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

set(CMAKE_EXE_LINKER_FLAGS_INIT "-static")
set(CMAKE_SHARED_LINKER_FLAGS_INIT "-static")
set(CMAKE_MODULE_LINKER_FLAGS_INIT "-static")

if(NOT CMAKE_CROSSCOMPILING_EMULATOR)
  foreach(_cansimu_wine IN LISTS CANSIMU_WINE_CANDIDATES)
    if(EXISTS "${_cansimu_wine}")
      set(CMAKE_CROSSCOMPILING_EMULATOR "${_cansimu_wine}")
      break()
    endif()
  endforeach()
endif()
