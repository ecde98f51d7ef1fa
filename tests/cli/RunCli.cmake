# Runs the cansimu program once, as cli_case does (CliCase.cmake), with the
# case given on the command line: PROGRAM, EMULATOR, EXIT, INPUT, REJECT,
# and ARGS and EXPECT as lists separated by @@.
include(${CMAKE_CURRENT_LIST_DIR}/CliCase.cmake)
string(REPLACE "@@" ";" arguments "${ARGS}")
string(REPLACE "@@" ";" expectations "${EXPECT}")
cli_case(EXIT "${EXIT}" ARGS ${arguments} EXPECT ${expectations} REJECT "${REJECT}"
  INPUT "${INPUT}")
