# Checks that a Linux shared library exports exactly the names of the .def file.
#   cmake -DLIBRARY=<file> -DDEF=<cansimu.def> -DTOOL=<nm> -P CheckExports.cmake
cmake_minimum_required(VERSION 3.25)
include(${CMAKE_CURRENT_LIST_DIR}/ReadDefExports.cmake)
read_def_exports(${DEF} expected)
execute_process(COMMAND ${TOOL} -D --defined-only ${LIBRARY} OUTPUT_VARIABLE listing
                RESULT_VARIABLE failed)
if(failed)
  message(FATAL_ERROR "${TOOL} failed on ${LIBRARY}")
endif()
string(REGEX MATCHALL "[0-9a-fA-F]+ [A-Za-z] [^\n]+" rows "${listing}")
set(actual "")
foreach(row IN LISTS rows)
  string(REGEX REPLACE "^[0-9a-fA-F]+ [A-Za-z] " "" name "${row}")
  list(APPEND actual ${name})
endforeach()
compare_exports(expected actual ${LIBRARY})
