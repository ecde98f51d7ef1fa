# Script lines the shell refuses (after the steps before them): each stops
# the script at once with exit status 2 and one line that names the line and
# what is wrong.
include(${CMAKE_CURRENT_LIST_DIR}/../CliCase.cmake)
set(script ${WORK}/refused-line.txt)
foreach(refusal
    "sleep 3600001@'3600001' is out of range \\(0 to 3600000\\)"
    "rx 4294967296@'4294967296' is out of range \\(0 to 4294967295\\)"
    "sleep x@'x' is not a number"
    "expect E_SUCCESS@expect: no command has called the library yet"
    "expect E_FINE@'E_FINE' is neither a number nor a status name"
    "inject CAN_DevRxMsg 150@the device queue takes no event of type 150"
    "inject CAN_ChnRxMsg 4@CAN_ChnRxMsg takes no injection"
    "reserve A B@wrong number of arguments for reserve"
    "reserve\nport\nmode 2\nframe 20000000 00@'20000000' is above 1FFFFFFF, the highest CAN identifier")
  string(REPLACE "@" ";" parts "${refusal}")
  list(GET parts 0 line)
  list(GET parts 1 message)
  file(WRITE ${script} "${line}\nversion\n")
  cli_case(EXIT 2 ARGS shell ${EXAMPLES}/bench.xml INPUT ${script}
    EXPECT "\ncansimu: line [0-9]+: ${message}" REJECT "CAN_DevGetVersion|CAN_PrtSendTrame")
endforeach()
file(REMOVE ${script})
