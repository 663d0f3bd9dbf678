# SPDX-License-Identifier: Apache-2.0
# cmake -DTEXT=<Markdown file> -DPROGRAM=<C++ file> [-DPROJECT=<CMake file>] -P CutExample.cmake
#
# Writes the first C++ block of a Markdown file, and its first CMake block, into separate files. The
# compiler's messages refer to the lines of the Markdown file.

file(READ "${TEXT}" text)
string(FIND "${text}" "\n```cpp\n" begin)
if(begin EQUAL -1)
  message(FATAL_ERROR "${TEXT} has no C++ block")
endif()
string(SUBSTRING "${text}" 0 ${begin} before)
string(REGEX REPLACE "[^\n]" "" line_ends "${before}")
string(LENGTH "${line_ends}" line)
math(EXPR begin "${begin} + 8")
math(EXPR line "${line} + 3")
string(SUBSTRING "${text}" ${begin} -1 program)
string(FIND "${program}" "\n```\n" end)
string(SUBSTRING "${program}" 0 ${end} program)
file(WRITE "${PROGRAM}" "#line ${line} \"${TEXT}\"\n${program}\n")

if(PROJECT)
  if(NOT text MATCHES "\n```cmake\n([^`]*)```\n")
    message(FATAL_ERROR "${TEXT} has no CMake block")
  endif()
  file(WRITE "${PROJECT}" "${CMAKE_MATCH_1}")
endif()
