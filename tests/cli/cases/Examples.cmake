# examples into a folder that holds the bench already: an unchanged copy is
# written again, an edited file stops the write until --force.
include(${CMAKE_CURRENT_LIST_DIR}/../CliCase.cmake)
set(folder ${WORK}/examples-edited)
file(REMOVE_RECURSE ${folder})
cli_case(EXIT 0 ARGS examples ${folder} EXPECT "bench.xml")
cli_case(EXIT 0 ARGS examples ${folder} EXPECT "bench.xml")
file(APPEND ${folder}/engine.xml "<!-- edited -->\n")
file(READ ${folder}/engine.xml edited)
cli_case(EXIT 1 ARGS examples ${folder} EXPECT
  "^cansimu: .*examples-edited/engine.xml differs from the example: not replaced\n"
  "cansimu: nothing written; --force replaces it\n$")
file(READ ${folder}/engine.xml kept)
if(NOT kept STREQUAL edited)
  message(FATAL_ERROR "examples without --force replaced the edited engine.xml")
endif()
cli_case(EXIT 0 ARGS examples ${folder} --force EXPECT "engine.xml")
file(READ ${folder}/engine.xml replaced)
file(READ ${EXAMPLES}/engine.xml example)
if(NOT replaced STREQUAL example)
  message(FATAL_ERROR "examples --force did not write the example's engine.xml")
endif()
file(REMOVE_RECURSE ${folder})
