# Writes OUTPUT, a C++ source that holds every file of FILES (a list) as a
# byte array, with the table that EmbeddedExamples.h declares.
# Run with: cmake -DOUTPUT=... -DFILES=a;b -P EmbedExamples.cmake
set(body "// Generated from examples/ by EmbedExamples.cmake; do not edit.\n")
string(APPEND body "#include \"EmbeddedExamples.h\"\n\nnamespace {\n")
set(table "")
set(index 0)
foreach(file IN LISTS FILES)
  get_filename_component(name "${file}" NAME)
  file(READ "${file}" hex HEX)
  string(LENGTH "${hex}" digits)
  math(EXPR size "${digits} / 2")
  string(REGEX REPLACE "([0-9a-f][0-9a-f])" "0x\\1," bytes "${hex}")
  # One line of bytes per 64 of them keeps the source readable by tools.
  string(REGEX REPLACE "((0x[0-9a-f][0-9a-f],){64})" "\\1\n  " bytes "${bytes}")
  string(APPEND body "const unsigned char file${index}[] = {\n  ${bytes}0};\n")
  string(APPEND table "    {\"${name}\", file${index}, ${size}},\n")
  math(EXPR index "${index} + 1")
endforeach()
string(APPEND body "} // namespace\n\nconst EmbeddedFile kEmbeddedExamples[] = {\n${table}};\n")
string(APPEND body "const size_t kEmbeddedExampleCount = ${index};\n")
file(WRITE "${OUTPUT}.tmp" "${body}")
file(COPY_FILE "${OUTPUT}.tmp" "${OUTPUT}" ONLY_IF_DIFFERENT)
file(REMOVE "${OUTPUT}.tmp")
