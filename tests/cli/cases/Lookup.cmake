# Where a copied program finds its library: next to itself, then in ../lib,
# then at CANSIMU_LIBRARY (a file or its folder); never in the build tree it
# came from. LIBRARY is the built library, LIBRARY_NAME the name it is
# installed under.
include(${CMAKE_CURRENT_LIST_DIR}/../CliCase.cmake)
get_filename_component(program_name "${PROGRAM}" NAME)
set(root ${WORK}/installed)
file(REMOVE_RECURSE ${root})
file(MAKE_DIRECTORY ${root}/bin ${root}/lib ${root}/elsewhere)
file(COPY ${PROGRAM} DESTINATION ${root}/bin)
set(PROGRAM ${root}/bin/${program_name})
set(bench ${EXAMPLES}/bench.xml)

# Alone, it leaves the name to the system and says where it looked.
cli_case(EXIT 0 ARGS --version EXPECT "^cansimu [0-9.]+\nlibrary ${LIBRARY_NAME}\n"
  "by name, through the system's search" "not next to the program nor in .*lib"
  "CANSIMU_LIBRARY not set")

file(COPY_FILE ${LIBRARY} ${root}/elsewhere/${LIBRARY_NAME})
cli_case(EXIT 0 ARGS --version ENV CANSIMU_LIBRARY=${root}/elsewhere/${LIBRARY_NAME}
  EXPECT "elsewhere/${LIBRARY_NAME}\n  \\(CANSIMU_LIBRARY\\)")
cli_case(EXIT 0 ARGS info ${bench} ENV CANSIMU_LIBRARY=${root}/elsewhere EXPECT "SIMU-0001")

# ../lib comes before the variable, and beside the program before ../lib.
file(COPY_FILE ${LIBRARY} ${root}/lib/${LIBRARY_NAME})
cli_case(EXIT 0 ARGS --version ENV CANSIMU_LIBRARY=${root}/elsewhere EXPECT "\\(in ../lib\\)")
cli_case(EXIT 0 ARGS info ${bench} EXPECT "SIMU-0001")
file(COPY_FILE ${LIBRARY} ${root}/bin/${LIBRARY_NAME})
# Windows prints the path it built with backslashes.
cli_case(EXIT 0 ARGS --version EXPECT "bin[/\\]${LIBRARY_NAME}\n  \\(next to the program\\)")
file(REMOVE_RECURSE ${root})
