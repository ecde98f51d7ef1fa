# Checks a Windows DLL with objdump -p: its PE format, an export table of
# exactly the .def file's names, and imports of Windows system DLLs only.
#   cmake -DLIBRARY=<dll> -DDEF=<cansimu.def> -DOBJDUMP=<objdump> -DFORMAT=<PE32|PE32+>
#         -P CheckDll.cmake
cmake_minimum_required(VERSION 3.25)
include(${CMAKE_CURRENT_LIST_DIR}/ReadDefExports.cmake)
read_def_exports(${DEF} expected)
execute_process(COMMAND ${OBJDUMP} -p ${LIBRARY} OUTPUT_VARIABLE listing RESULT_VARIABLE failed)
if(failed)
  message(FATAL_ERROR "${OBJDUMP} failed on ${LIBRARY}")
endif()

string(REGEX MATCH "Magic[ \t]+[0-9a-fA-F]+[ \t]+\\(([A-Z0-9+]+)\\)" magic "${listing}")
if(NOT CMAKE_MATCH_1 STREQUAL FORMAT)
  message(FATAL_ERROR "${LIBRARY}: format ${CMAKE_MATCH_1}, expected ${FORMAT}")
endif()

# The export table lists "[   n] name" rows after its heading.
string(REPLACE ";" "," listing "${listing}")
string(REPLACE "\n" ";" lines "${listing}")
set(actual "")
set(in_table FALSE)
foreach(line IN LISTS lines)
  if(line MATCHES "Ordinal/Name Pointer. Table")
    set(in_table TRUE)
  elseif(in_table AND line MATCHES "^[ \t]*.[ 0-9]+.[ \t]+([A-Za-z_][A-Za-z0-9_]*)[ \t]*$")
    list(APPEND actual ${CMAKE_MATCH_1})
  elseif(in_table AND actual)
    set(in_table FALSE)
  endif()
endforeach()
compare_exports(expected actual ${LIBRARY})

# Only DLLs every Windows has: nothing of the compiler's runtime travels along.
set(imports "")
foreach(line IN LISTS lines)
  if(line MATCHES "DLL Name: ([^ \t]+)")
    list(APPEND imports ${CMAKE_MATCH_1})
  endif()
endforeach()
set(allowed KERNEL32.dll msvcrt.dll WS2_32.dll ADVAPI32.dll USER32.dll MSWSOCK.dll
    IPHLPAPI.DLL NETAPI32.dll)
string(TOUPPER "${allowed}" allowed)
foreach(dll IN LISTS imports)
  string(TOUPPER "${dll}" upper)
  if(NOT upper IN_LIST allowed AND NOT upper MATCHES "^API-MS-WIN-")
    message(FATAL_ERROR "${LIBRARY} imports ${dll}, not a Windows system DLL")
  endif()
endforeach()
message(STATUS "${LIBRARY}: ${FORMAT}, imports ${imports}")
