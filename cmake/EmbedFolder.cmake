# SPDX-License-Identifier: Apache-2.0
# Writes the source file OUTPUT, which defines NAME: a table with a zt::EmbeddedFile for each of FILES
# (names in FOLDER, separated by commas). HEADER declares it.
string(REPLACE "," ";" names "${FILES}")
set(arrays "")
set(rows "")
set(count 0)
foreach(name IN LISTS names)
  file(READ "${FOLDER}/${name}" bytes HEX)
  string(REGEX REPLACE "(..)" "'\\\\x\\1'," bytes "${bytes}")
  string(REGEX REPLACE "(('....',)('....',)('....',)('....',)('....',)('....',)('....',)('....',))" "\\1\n    "
                       bytes "${bytes}")
  string(APPEND arrays "// ${name}\nconstexpr char kBytes${count}[] = {\n    ${bytes}'\\0'};\n\n")
  string(APPEND rows "    {\"${name}\", {kBytes${count}, sizeof(kBytes${count}) - 1}},\n")
  math(EXPR count "${count} + 1")
endforeach()
file(
  WRITE "${OUTPUT}"
  "#include \"${HEADER}\"

#include <array>

namespace {

${arrays}constexpr std::array<zt::EmbeddedFile, ${count}> kFiles{{
${rows}}};

}  // namespace

const std::span<const zt::EmbeddedFile> ${NAME}(kFiles);
")
