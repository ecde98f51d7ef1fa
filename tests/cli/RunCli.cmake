# Runs the cansimu program once and checks how it ended:
#   PROGRAM   the program; EMULATOR runs it when cross-compiled (may be empty)
#   ARGS      its arguments, separated by @@
#   EXIT      the exit status it must end with
#   EXPECT    regular expressions, separated by @@, that must match its
#             output (standard output, then standard error) in this order
#   REJECT    a regular expression that must not match it (optional)
#   INPUT     a file for its standard input (optional)
string(REPLACE "@@" ";" arguments "${ARGS}")
string(REPLACE "@@" ";" expectations "${EXPECT}")
set(input_option "")
if(INPUT)
  set(input_option INPUT_FILE "${INPUT}")
endif()
execute_process(COMMAND ${EMULATOR} "${PROGRAM}" ${arguments}
  ${input_option}
  RESULT_VARIABLE status OUTPUT_VARIABLE out ERROR_VARIABLE err
  TIMEOUT 60)
set(output "${out}${err}")
# Windows programs end their lines with CR LF.
string(REPLACE "\r" "" output "${output}")
if(NOT "${status}" STREQUAL "${EXIT}")
  message(FATAL_ERROR "exit status ${status}, expected ${EXIT}; output:\n${output}")
endif()
set(rest "${output}")
foreach(expected IN LISTS expectations)
  string(REGEX MATCH "${expected}" found "${rest}")
  if(found STREQUAL "")
    message(FATAL_ERROR "no match for '${expected}' (in order) in:\n${output}")
  endif()
  string(FIND "${rest}" "${found}" at)
  string(LENGTH "${found}" length)
  math(EXPR after "${at} + ${length}")
  string(SUBSTRING "${rest}" ${after} -1 rest)
endforeach()
if(REJECT AND output MATCHES "${REJECT}")
  message(FATAL_ERROR "'${REJECT}' should not appear in:\n${output}")
endif()
