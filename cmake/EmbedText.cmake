# SPDX-License-Identifier: Apache-2.0
# Writes the source file OUTPUT, which defines NAME: a std::string_view of the bytes of INPUT. HEADER
# declares it.
file(READ "${INPUT}" bytes HEX)
string(REGEX REPLACE "(..)" "'\\\\x\\1'," bytes "${bytes}")
string(REGEX REPLACE "(('....',)('....',)('....',)('....',)('....',)('....',)('....',)('....',))" "\\1\n    "
                     bytes "${bytes}")
file(
  WRITE "${OUTPUT}"
  "#include \"${HEADER}\"

namespace {

constexpr char kBytes[] = {
    ${bytes}'\\0'};

}  // namespace

const std::string_view ${NAME}(kBytes, sizeof(kBytes) - 1);
")
