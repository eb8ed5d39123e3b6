# SPDX-License-Identifier: Apache-2.0
# Writes a C++ file that defines the text of INPUT as a constant.
# Usage: cmake -DINPUT=file -DOUTPUT=file -DNAME=constant -P embed_text.cmake
file(READ "${INPUT}" hex HEX)
string(REGEX REPLACE "(..)" "'\\\\x\\1'," bytes "${hex}")
string(REGEX REPLACE "('.x0a',)" "\\1\n    " bytes "${bytes}")
file(WRITE "${OUTPUT}.new" "// Made from ${INPUT}; do not edit.
#include \"Scenario.h\"

namespace lyn::simulator {

namespace {

constexpr char kText[] = {
    ${bytes}'\\0'};

}  // namespace

const char* const ${NAME} = kText;

}  // namespace lyn::simulator
")
file(RENAME "${OUTPUT}.new" "${OUTPUT}")
