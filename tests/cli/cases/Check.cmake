# check: silent on the examples, one finding per mistake with its line, and
# files it cannot read.
include(${CMAKE_CURRENT_LIST_DIR}/../CliCase.cmake)

# Run from elsewhere, the relative scenario paths of the bench get a note
# naming both folders they could be found from; notes are no warnings.
cli_case(EXIT 0 ARGS check ${EXAMPLES} REJECT "warning")
cli_case(EXIT 0 ARGS check ${EXAMPLES}/bench.xml REJECT "warning" EXPECT
  "bench.xml:[0-9]+: note: scenario 'engine.xml' is a relative path: cansimu opens it from the "
  "bench's folder \\(.*examples\\), a host from its working directory \\(here .*\\)\n")

# The bench first, then the scenario it names, each finding in line order.
set(bench "check-bench.xml:")
set(scenario "check-scenario.xml:")
cli_case(EXIT 1 ARGS check --frame ${DATA}/check-bench.xml EXPECT
  "${bench} warning: no CAN_FIRMWAREVERSION element: the box reports empty firmware versions"
  "${bench}5: warning: DETBAUDRATE 'E_SUCESS' is no status name: the detection answers E_INVALID"
  "${bench}6: warning: DETBAUDRATE 'E_NOT_FOUND' is no outcome of a detection"
  "${bench}7: warning: NEGATIVE_RESPONSE '0x11' is not upper-case hex"
  "${bench}9: warning: UCE without targetAddress is skipped"
  "${bench}10: warning: idTx 7E0 already belongs to the ECU of line 8"
  "${bench}11: warning: targetAddress 0x10 already belongs to the ECU of line 8"
  "${bench}11: warning: scenario 'missing.xml' cannot be read"
  "${bench}12: warning: idTx '7G3' is not a hex identifier: the library reads it as 7\n"
  "${bench}12: warning: targetAddress 'ENGINE' is no one-byte hex address"
  "${bench}12: warning: UCE without scenario: this ECU never answers"
  "${bench}13: warning: TRACEFILE '.*no-such-folder/bus.log': its folder does not exist"
  "${scenario}4: warning: OPENDIALOG answers FALSE"
  "${scenario}5: warning: EVENEMENT without REQUETE is skipped"
  "${scenario}6: warning: REQUETE without an element inside"
  "${scenario}7: warning: EVENEMENT without REPONSE is skipped"
  "${scenario}8: warning: REPONSE without TRAME: request '1003'"
  "${scenario}9: warning: request '22f190' has lower-case hex digits: it never matches"
  "${scenario}10: warning: request '\\?2F190' has a wildcard in its first two characters"
  "${scenario}12: warning: request '22F187' is already matched by '22F1\\*' \\(line 11\\)"
  "${scenario}14: warning: request '3E\\*' hides the earlier, more specific '3E00' \\(line 13\\)"
  "${scenario}16: warning: request '1101' is written twice \\(first at line 15\\)"
  "${scenario}18: warning: typed answer 'CHN_TYPE_RCV_FAILED_TIMOUT,00,cTimeOut' names no event type"
  "${scenario}19: warning: typed answer 'CHN_TYPE_RCV_FAILED_TIMEOUT,00,cTimeout' names no result code"
  "${scenario}20: warning: typed answer 'CHN_TYPE_RCV_SUCCESS,,cOk': its frame 'cOk' is not even-length"
  "${scenario}21: warning: answer 'CHN_TYPE_RCV_NO_RESPONSE' is no event type"
  "${scenario}24: warning: answer '67011234567' is not even-length upper-case hex"
  "${scenario}25: warning: answer '670112345678AABBCC' is 9 bytes long: the raw frame path sends its first 8"
  "${scenario}27: warning: request '19021' has an odd number of characters"
  "${scenario}27: warning: empty answer: the host gets a frame without a byte"
  "\n33 warnings\n$")

# Identifiers in two roles, a misspelt element, values the box cannot
# report, a negative code of two bytes.
set(slips "slips-bench.xml:")
cli_case(EXIT 1 ARGS check ${DATA}/slips-bench.xml EXPECT
  "${slips} warning: no CAN_FIRMWAREVERSION element"
  "${slips}5: warning: element CAN_FIRMWAREVERSON is read by nothing: CAN_FIRMWAREVERSION misspelt"
  "${slips}6: warning: VOLTAGES VBatt '1e39' is no voltage a float holds: the box reports inf"
  "${slips}6: warning: VOLTAGES APCKelmora 'nan' is no voltage a float holds: the box reports nan"
  "${slips}6: warning: VOLTAGES APCDravik 'five' is not a number: the library reads 0"
  "${slips}7: warning: NEGATIVE_RESPONSE '1122' is 2 bytes: a negative response carries one code"
  "${slips}8: warning: idRx and idTx are both 7E0"
  "${slips}10: warning: idRx 7E9 already belongs to the ECU of line 9"
  "${slips}11: warning: idRx 7E1 is the idTx of the ECU of line 9"
  "${slips}12: warning: idTx 7E9 is the idRx of the ECU of line 9")

# Files it cannot read: each named on its line, and exit status 3.
cli_case(EXIT 3 ARGS check ${DATA}/no-such-file.xml ${DATA}/not-xml.xml EXPECT
  "^cansimu: cannot read .*no-such-file.xml\ncansimu: .*not-xml.xml(:1)?: not an XML file: [A-Za-z]")
