# flash reads the driver queue while the download runs, as a host's reader
# does: a bench saved unplugged during the download is read again, and the
# download shows the box unplugged and ends with exit status 1. The second
# command of the pipeline saves the bench 1.5 s after both start.
set(folder ${WORK}/unplug)
set(bench ${folder}/bench.xml)
set(serial "<CAN_SERIALNUMBER>SIMU-0001</CAN_SERIALNUMBER>")
if(SAVE)
  execute_process(COMMAND ${CMAKE_COMMAND} -E sleep 1.5)
  file(WRITE ${bench} "<BENCH><CAN_DEVICESTATE>UNPLUGGED</CAN_DEVICESTATE>${serial}</BENCH>\n")
  return()
endif()

file(REMOVE_RECURSE ${folder})
file(WRITE ${bench}
  "<BENCH><CAN_DEVICESTATE>DEV_TYPE_RCON</CAN_DEVICESTATE>${serial}</BENCH>\n")
execute_process(
  COMMAND ${CMAKE_COMMAND} -DWORK=${WORK} -DSAVE=ON -P ${CMAKE_CURRENT_LIST_FILE}
  COMMAND ${EMULATOR} ${PROGRAM} flash ${bench} ${EXAMPLES}/application.bin
  RESULT_VARIABLE status OUTPUT_VARIABLE output ERROR_VARIABLE errors TIMEOUT 60)
string(REPLACE "\r" "" output "${output}${errors}")
foreach(expected "100 %  50 events" "CAN_DevBoardTeleFirm\\(application.bin\\) +E_SUCCESS"
    "during the download: device DEV_TYPE_DISCONNECTED \\(101\\)" "the box was unplugged"
    "CAN_DevGetVersion\\(\\) +E_DISCONNECTED")
  if(NOT output MATCHES "${expected}")
    message(FATAL_ERROR "no match for '${expected}' in:\n${output}")
  endif()
endforeach()
if(NOT status EQUAL 1)
  message(FATAL_ERROR "exit status ${status}, expected 1:\n${output}")
endif()
file(REMOVE_RECURSE ${folder})
