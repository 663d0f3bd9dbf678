// SPDX-License-Identifier: Apache-2.0
#include "tools/ztreport/doctor/ShellWord.h"

#include <array>
#include <cstdio>

#include "tools/common/Terminal.h"

namespace zt::tools {

namespace {

/// In the form $'…', with three octal digits for each byte that is not printable ASCII, and for
/// quotes and backslashes: without the latter it is one word for every shell.
std::string escapedWord(std::string_view text) {
  std::string word = "$'";
  for (const char character : text) {
    if (character >= ' ' && character <= '~' && character != '\'' && character != '\\') {
      word += character;
      continue;
    }
    std::array<char, 5> escape{};
    std::snprintf(escape.data(), escape.size(), "\\%03o", static_cast<unsigned char>(character));
    word += escape.data();
  }
  return word + '\'';
}

}  // namespace

std::string shellWord(std::string_view text) {
  if (terminal::terminalText(text) != text) return escapedWord(text);
  std::string word = "'";
  for (const char character : text) {
    if (character == '\'') {
      word += "'\\''";
    } else {
      word += character;
    }
  }
  return word + '\'';
}

}  // namespace zt::tools
