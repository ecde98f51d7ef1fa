# ask: what the example ECUs answer on a one-to-one channel, on a broadcast
# channel and to raw frames, and the command lines it refuses.
include(${CMAKE_CURRENT_LIST_DIR}/../CliCase.cmake)
set(bench ${EXAMPLES}/bench.xml)

cli_case(EXIT 0 ARGS ask ${bench} engine 22F190 280301 22F195 EXPECT
  "^ECU 0x10 engine, one-to-one channel on 7E0/7E8\n"
  "> 22 F1 90  ReadDataByIdentifier\n< CHN_TYPE_RCV_SUCCESS \\(2008\\)\n"
  "    ECU 0x10, cOk \\(0\\), 20 bytes: positive ReadDataByIdentifier\n"
  "    62 F1 90 56 46 31 53 49 4D 55 30 30 30 30 30 30  b..VF1SIMU000000\n"
  "  from entry engine.xml:38 22F190, response 1 of 1\n"
  "> 28 03 01  CommunicationControl\n"
  "    ECU 0x10, cOk \\(0\\): 7F 28 11\n"
  "    negative CommunicationControl: serviceNotSupported \\(0x11\\)\n"
  "  from no entry: negative fallback\n"
  "< CHN_TYPE_RCV_CORRUPTED_FRAME \\(2004\\)\n"
  "    ECU 0x10, cLongueurTrameFausse \\(69\\): 62 F1  positive ReadDataByIdentifier\n"
  "  from entry engine.xml:66 22F195, response 1 of 1\n$")
# Bytes written apart, as requests are shown, are one request.
cli_case(EXIT 0 ARGS ask ${bench} engine 22 F1 90 EXPECT
  "^ECU 0x10 engine, one-to-one channel on 7E0/7E8\n> 22 F1 90  ReadDataByIdentifier\n"
  "from entry engine.xml:38 22F190, response 1 of 1\n$")
# Named by idTx; a typed answer without a frame carries the request back.
cli_case(EXIT 0 ARGS ask ${bench} 7E0 3101FF00 EXPECT
  "< CHN_TYPE_RCV_FAILED_TIMEOUT \\(2007\\)\n    with the request 31 01 FF 00 \\(RoutineControl\\)")
# Every ECU answers the tester present, then the closing event; a service
# that no scenario knows gets the closing event alone, and the exit says so.
cli_case(EXIT 1 ARGS ask ${bench} --broadcast 3E00 3F00 EXPECT
  "^every ECU, on a broadcast channel\n"
  "ECU 0x10, cOk \\(0\\): 7E 00  positive TesterPresent" "ECU 0x01" "ECU 0x40"
  "< CHN_TYPE_END_OF_RCV \\(2011\\)\n  from ECU 7e0/7e8: entry engine.xml:[0-9]+ 3E00"
  "> 3F 00\n< CHN_TYPE_END_OF_RCV \\(2011\\)\n"
  "  from ECU 7e0/7e8: no entry: not answered on this channel\n"
  "  from ECU 710/77a: no entry: not answered on this channel\n"
  "  from ECU 745/765: no entry: not answered on this channel\n$")
# Raw frames carry 8 bytes at most; 7D0 reaches every ECU.
cli_case(EXIT 0 ARGS ask ${bench} 40 --frame 22F187 EXPECT
  "^ECU 0x40 body, raw frames on 745/765\n> 745: 22 F1 87  ReadDataByIdentifier\n"
  "< PRT_TYPE_FRAME \\(323\\)\n    from 765, 8 bytes: positive ReadDataByIdentifier\n"
  "    62 F1 87 42 43 4D 2D 34 +b..BCM-4\n"
  "  from entry body.xml:[0-9]+ 22F187, response 1 of 1\n$")
cli_case(EXIT 0 ARGS ask ${bench} --broadcast --frame 3E00 EXPECT
  "raw frames on 7D0" "from 7E8: 7E 00" "from 765: 7E 00" "from 77A: 7E 00")
# A scenario that is no XML: a word first, then the negative answers.
cli_case(EXIT 0 ARGS ask ${DATA}/broken-scenario.xml 10 1001 EXPECT
  "7F 10 80  negative DiagnosticSessionControl: code \\(0x80\\)\n"
  "from no entry: negative fallback \\(the scenario not-xml.xml does not parse: line 1: "
  "No document element found\\)\n"
  "cansimu: .*not-xml.xml is not an XML file \\(line 1: No document element found\\): ECU 0x10 "
  "not-xml answers every request as unknown")

# Bad input: one line naming the argument or the file.
cli_case(EXIT 2 ARGS ask ${bench} nobody 1001 EXPECT
  "^cansimu: unknown ECU 'nobody' \\(the bench's ECUs: 0x10 engine, 0x01 gateway, 0x40 body\\)")
cli_case(EXIT 2 ARGS ask ${bench} engine --frame 22F190AABBCCDDEEFF EXPECT
  "^cansimu: request '22F190AABBCCDDEEFF' is longer than a CAN frame \\(8 bytes\\)")
cli_case(EXIT 2 ARGS ask ${bench} engine EXPECT
  "^cansimu: missing arguments: cansimu ask CONFIG ECU REQUEST")
cli_case(EXIT 3 ARGS ask ${DATA}/failing-upload.xml engine 1001 EXPECT
  "^cansimu: .*failing-upload.xml has no usable UCE element: no ECU to ask\n$")
cli_case(EXIT 3 ARGS ask /no/such/bench.xml engine 1001 EXPECT
  "^cansimu: cannot read the configuration /no/such/bench.xml\n$")
