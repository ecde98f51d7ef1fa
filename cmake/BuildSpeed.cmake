# Faster builds from scratch: ./dev test builds six trees. The third-party
# headers are most of each file's compile time, under MinGW above all: ACE
# brings <windows.h> and Winsock, about 150 000 lines a file. The
# ThreadSanitizer build compiles one file a unit, so that a library file that
# lacks an include of its own still fails to build there.
# - CANSIMU_UNITY: the library's and the program's files are compiled eight
#   to a unit, so that the headers they share are parsed once a unit.
# - CANSIMU_PCH: the test programs, each a few files, share one precompiled
#   header: ACE's, GoogleTest's and the standard headers they use.
option(CANSIMU_UNITY "Compile the library and the program eight files to a unit" OFF)
option(CANSIMU_PCH "Precompile the headers shared by the test programs" OFF)

function(cansimu_unity target)
  if(CANSIMU_UNITY)
    set_target_properties(${target} PROPERTIES UNITY_BUILD ON UNITY_BUILD_BATCH_SIZE 8)
  endif()
endfunction()

set(cansimu_test_headers
  <ace/SString.h> <ace/Basic_Types.h> <ace/Guard_T.h> <ace/Recursive_Thread_Mutex.h>
  <ace/Containers_T.h> <ace/Time_Value.h> <gtest/gtest.h> <algorithm> <atomic> <chrono>
  <cstring> <filesystem> <fstream> <map> <memory> <sstream> <string> <thread> <vector>)

# cansimu_test_precompile(TARGET): TARGET's C++ files include the test
# headers first, precompiled.
function(cansimu_test_precompile target)
  if(CANSIMU_PCH)
    list(TRANSFORM cansimu_test_headers PREPEND "$<$<COMPILE_LANGUAGE:CXX>:" OUTPUT_VARIABLE headers)
    list(TRANSFORM headers APPEND ">")
    target_precompile_headers(${target} PRIVATE ${headers})
  endif()
endfunction()

# cansimu_reuse_precompiled(TARGET FROM): TARGET uses FROM's headers as built.
function(cansimu_reuse_precompiled target from)
  if(CANSIMU_PCH)
    target_precompile_headers(${target} REUSE_FROM ${from})
  endif()
endfunction()
