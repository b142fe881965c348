# Turns a file into the C++ source of its bytes, with CMake alone:
#
#   cmake -D FILE=page.html -D ARRAY=Page -D HEADER=page/page.h -D OUTPUT=page.cpp -P embedFile.cmake
#
# The header declares `extern const unsigned char <array>[]` and `extern const std::size_t
# <array>Size`.

file(READ "${FILE}" bytes HEX)
string(LENGTH "${bytes}" digits)
math(EXPR size "${digits} / 2")
# Sixteen bytes a line.
string(REGEX REPLACE "(................................)" "\\1\n" bytes "${bytes}")
string(REGEX REPLACE "([0-9a-f][0-9a-f])" "0x\\1," bytes "${bytes}")

get_filename_component(fileName "${FILE}" NAME)
file(WRITE "${OUTPUT}" "// Made from ${fileName} by embedFile.cmake.
#include \"${HEADER}\"

const unsigned char ${ARRAY}[] = {
${bytes}};
const std::size_t ${ARRAY}Size = ${size};
")
