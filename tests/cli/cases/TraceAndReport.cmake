# The files a host run leaves: the bus trace, read back by python-can and
# converted by can-utils (two readers we did not write), and the session
# report, printed, turned into JUnit and judged by --fail-on; then the
# report of a host killed before CAN_DrvEnd.
include(${CMAKE_CURRENT_LIST_DIR}/../CliCase.cmake)
set(bench ${EXAMPLES}/bench.xml)
set(work ${WORK}/trace-and-report)
file(REMOVE_RECURSE ${work})
file(MAKE_DIRECTORY ${work})

# The engine answers 22F190 with 20 bytes: a first frame, the tester's flow
# control and two consecutive frames; 2201 gets the negative fallback.
cli_case(EXIT 0 ARGS --trace ${work}/bus.log --report ${work}/report.json
  ask ${bench} engine 22F190 2201 EXPECT
  "> 22 F1 90" "from entry engine.xml:[0-9]+ 22F190, response 1 of 1"
  "> 22 01" "from no entry: negative fallback")

execute_process(COMMAND ${PYTHON} ${CMAKE_CURRENT_LIST_DIR}/../read_trace.py ${work}/bus.log
  RESULT_VARIABLE status OUTPUT_VARIABLE frames ERROR_VARIABLE problem)
if(NOT status EQUAL 0)
  message(FATAL_ERROR "python-can could not read the trace (${status}):\n${frames}${problem}")
endif()
set(expected "7E0#0322F190\n7E8#101462F190564631\n7E0#300000\n7E8#2153494D55303030\n"
  "7E8#2230303030303432\n7E0#022201\n7E8#037F2211\n")
string(CONCAT expected ${expected})
if(NOT frames STREQUAL expected)
  message(FATAL_ERROR "trace frames:\n${frames}expected:\n${expected}")
endif()

execute_process(COMMAND ${LOG2ASC} -I ${work}/bus.log -O ${work}/bus.asc can0
  RESULT_VARIABLE status ERROR_VARIABLE problem)
file(STRINGS ${work}/bus.asc asc REGEX " 7E8 ")
list(LENGTH asc count)
if(NOT status EQUAL 0 OR NOT count EQUAL 4)
  message(FATAL_ERROR "log2asc: status ${status}, ${count} frames of 7E8 in bus.asc ${problem}")
endif()

# The report for a person, as JUnit, and as an exit status.
cli_case(EXIT 0 ARGS report ${work}/report.json --junit ${work}/junit.xml EXPECT
  "^Session report .*report.json\n" "at CAN_DrvEnd"
  "ECU 7e0/7e8 \\(engine.xml\\)\n +2 answers, 1 negative, 0 dialog refusals"
  "engine.xml:[0-9]+  1003  0 hits \\(never asked\\)" "engine.xml:[0-9]+  22F190  1 hit\n"
  "unscripted 2201  1x, first at 20[0-9-]+T")
file(READ ${work}/junit.xml junit)
foreach(expected "<testsuite name=\"ECU 7e0/7e8 \\(engine.xml\\)\" tests=\"[0-9]+\" failures=\"1\""
    "name=\"22F190 \\(engine.xml:[0-9]+\\)\"><system-out>1 hits"
    "<skipped message=\"never asked\"/>"
    "name=\"unscripted 2201\"><failure message=\"no scenario entry matched, 1 times")
  if(NOT junit MATCHES "${expected}")
    message(FATAL_ERROR "junit.xml lacks '${expected}':\n${junit}")
  endif()
endforeach()
cli_case(EXIT 1 ARGS report ${work}/report.json --fail-on unscripted EXPECT "unscripted 2201")
cli_case(EXIT 2 ARGS report ${work}/report.json --fail-on everything EXPECT
  "--fail-on takes unscripted and unused, not 'everything'")
cli_case(EXIT 3 ARGS report ${bench} EXPECT "bench.xml is not a session report")

# A host killed while it runs (the shell's script sleeps until the time-out
# ends the program) leaves the report of its last write: valid JSON, not
# ended, with the request it sent.
file(WRITE ${work}/steps.txt
  "reserve\nmode 1\nport\nassoc\nchannel engine\nopen\nsend 22F190\nsleep 60000\n")
# Killed, the program cannot remove the log it would make in the temporary
# folder: it writes one here instead.
set(ENV{CANSIMU_LOG} ${work}/killed.log)
execute_process(COMMAND ${EMULATOR} ${PROGRAM} --report ${work}/killed.json shell ${bench}
  INPUT_FILE ${work}/steps.txt OUTPUT_QUIET ERROR_QUIET TIMEOUT 5)
unset(ENV{CANSIMU_LOG})
cli_case(EXIT 0 ARGS report ${work}/killed.json EXPECT
  "\\(the host had not ended\\)" "engine.xml:[0-9]+  22F190  1 hit\n")
