# inject: the INJECT element appended to a copy of the example bench, what
# the program says each read of the bench does with it, the names and values
# it refuses (leaving the file as it was), check's word on the result, the
# fault a host then meets, and the library's lines that --log gets.
include(${CMAKE_CURRENT_LIST_DIR}/../CliCase.cmake)
set(folder ${WORK}/inject)
set(bench ${folder}/bench.xml)
file(REMOVE_RECURSE ${folder})
file(COPY ${EXAMPLES}/ DESTINATION ${folder})

file(TIMESTAMP ${bench} before "%s" UTC)
cli_case(EXIT 0 ARGS inject ${bench} CAN_ChnSendDiag E_INVALID EXPECT
  "bench.xml:[0-9]+: <INJECT export=\"CAN_ChnSendDiag\" status=\"E_INVALID\" detail=\"0\"/>\n"
  "  each read arms it: the next CAN_ChnSendDiag answers E_INVALID \\(4\\)\n"
  "  a running host reads it at its next CAN_DrvRxMsg\n$")
file(TIMESTAMP ${bench} first "%s" UTC)
# Saved again within the same second, the file still looks changed.
cli_case(EXIT 0 ARGS inject ${bench} CAN_ChnSendDiag 7 300 EXPECT
  "  line [0-9]+ arms CAN_ChnSendDiag first: each read drops this one\n"
  "  detail 300 is more than a byte: the library keeps 44\n")
file(TIMESTAMP ${bench} second "%s" UTC)
if(NOT first GREATER before OR NOT second GREATER first)
  message(FATAL_ERROR "modification times ${before}, ${first}, ${second} do not move on")
endif()
cli_case(EXIT 0 ARGS inject ${bench} CAN_DevRxMsg DEV_TYPE_RESET 0x33 EXPECT
  "each read queues DEV_TYPE_RESET \\(205\\) on the device queue, detail 51\n")

# Refused: nothing is written.
file(READ ${bench} written)
foreach(refusal
    "CAN_DevGetVersoin;4@is not an export of the library \\(did you mean CAN_DevGetVersion\\?\\)"
    "CAN_DrvInit;4@CAN_DrvInit takes no injection"
    "CAN_DevRxMsg;PRT_TYPE_FRAME@'PRT_TYPE_FRAME' is neither a number nor a device event type"
    "CAN_DevRxMsg;150@the device queue takes no event of type 150"
    "CAN_DevGetMode;4294967296@'4294967296' is out of range \\(0 to 4294967295\\)"
    "CAN_DevGetMode;4;E_BUSY@detail 'E_BUSY' is neither a number nor a status name")
  string(REPLACE "@" ";" parts "${refusal}")
  list(POP_BACK parts message)
  cli_case(EXIT 2 ARGS inject ${bench} ${parts} EXPECT "^cansimu: .*${message}")
endforeach()
file(READ ${bench} unchanged)
if(NOT unchanged STREQUAL written)
  message(FATAL_ERROR "a refused injection changed ${bench}")
endif()
string(REGEX MATCH "(  <INJECT[^\n]*\n)+</BENCH>" elements "${written}")
if(elements STREQUAL "")
  message(FATAL_ERROR "the elements are not the root's last children:\n${written}")
endif()
cli_case(EXIT 1 ARGS check ${bench} EXPECT
  "bench.xml:[0-9]+: warning: INJECT: line [0-9]+ arms CAN_ChnSendDiag first, so each read drops")
cli_case(EXIT 3 ARGS inject ${folder}/application.bin CAN_DevGetMode 4 EXPECT
  "application.bin is not an XML file")
cli_case(EXIT 3 ARGS inject ${folder}/none.xml CAN_DevGetMode 4 EXPECT
  "cannot read the bench .*none.xml")

cli_case(EXIT 1 ARGS ask ${bench} engine 22F190 1003 3E00 EXPECT "CAN_ChnSendDiag +E_INVALID \\(4\\)"
  "cansimu: not sent after that refusal: 10 03, 3E 00\n$")
cli_case(EXIT 0 ARGS inject ${bench} CAN_DevGetTension E_BUSOFF)
cli_case(EXIT 1 ARGS info ${bench} EXPECT "voltages +CAN_DevGetTension answered E_BUSOFF")

# --log on the untouched example bench.
cli_case(EXIT 0 ARGS --log ${folder}/cansimu.log ask ${EXAMPLES}/bench.xml engine 22F190)
file(READ ${folder}/cansimu.log log)
if(NOT log MATCHES "Call to CAN_ChnSendDiag\\(\\)")
  message(FATAL_ERROR "the log file lacks the library's lines:\n${log}")
endif()
file(REMOVE_RECURSE ${folder})
