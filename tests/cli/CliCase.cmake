# cli_case(EXIT status [ARGS ...] [EXPECT regex...] [REJECT regex] [INPUT file]
#          [ENV name=value...])
# runs the cansimu program once and checks how it ended:
#   PROGRAM, EMULATOR (variables) the program, and what runs it when it was
#             cross-compiled (may be empty)
#   EXIT      the exit status it must end with
#   ARGS      its arguments
#   EXPECT    regular expressions that must match its output (standard
#             output, then standard error) in this order
#   REJECT    a regular expression that must not match it
#   INPUT     a file for its standard input
#   ENV       environment variables set for it
function(cli_case)
  cmake_parse_arguments(C "" "EXIT;REJECT;INPUT" "ARGS;EXPECT;ENV" ${ARGN})
  set(input_option "")
  if(C_INPUT)
    set(input_option INPUT_FILE "${C_INPUT}")
  endif()
  execute_process(COMMAND ${CMAKE_COMMAND} -E env ${C_ENV} ${EMULATOR} "${PROGRAM}" ${C_ARGS}
    ${input_option}
    RESULT_VARIABLE status OUTPUT_VARIABLE out ERROR_VARIABLE err TIMEOUT 60)
  set(output "${out}${err}")
  # Windows programs end their lines with CR LF.
  string(REPLACE "\r" "" output "${output}")
  list(JOIN C_ARGS " " joined)
  set(case "cansimu ${joined}")
  if(NOT "${status}" STREQUAL "${C_EXIT}")
    message(FATAL_ERROR "${case}: exit status ${status}, expected ${C_EXIT}; output:\n${output}")
  endif()
  set(rest "${output}")
  foreach(expected IN LISTS C_EXPECT)
    string(REGEX MATCH "${expected}" found "${rest}")
    if(found STREQUAL "")
      message(FATAL_ERROR "${case}: no match for '${expected}' (in order) in:\n${output}")
    endif()
    string(FIND "${rest}" "${found}" at)
    string(LENGTH "${found}" length)
    math(EXPR after "${at} + ${length}")
    string(SUBSTRING "${rest}" ${after} -1 rest)
  endforeach()
  if(C_REJECT AND output MATCHES "${C_REJECT}")
    message(FATAL_ERROR "${case}: '${C_REJECT}' should not appear in:\n${output}")
  endif()
endfunction()
