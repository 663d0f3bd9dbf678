// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <string>

#include "tools/common/Terminal.h"

namespace {

using zt::terminal::terminalText;

TEST(TerminalTextTest, ShowsTextAndEscapesTheRest) {
  const struct {
    std::string bytes;
    const char* shown;
  } rows[] = {
      {"", ""},
      {"Kelvane & <Sons>", "Kelvane & <Sons>"},
      {"Käse €uro 😀", "Käse €uro 😀"},
      {"\x1b[2J\x07", "\\x1b[2J\\x07"},
      {"a\r\nb\tc", "a\\x0d\\x0ab\\x09c"},
      {std::string("a\0b", 3), "a\\x00b"},
      {"\x7f", "\\x7f"},
      {"\xc2\x9b"
       "31m",
       "\\u{9b}31m"},
      {"\xe2\x80\xae"  // NOLINT(misc-misleading-bidirectional): shown by its escape
       "abc",
       "\\u{202e}abc"},
      {"\xe2\x80\xa8", "\\u{2028}"},
      {"\xef\xbb\xbfx", "\\u{feff}x"},
      {"\xf3\xa0\x81\x81", "\\u{e0041}"},
      {"\xff\xfe", "\\xff\\xfe"},
      {"\xc3", "\\xc3"},
      {"\xc3(", "\\xc3("},
      {"\x80z", "\\x80z"},
      {"\xc0\xaf", "\\xc0\\xaf"},
      {"\xe0\x80\xaf", "\\xe0\\x80\\xaf"},
      {"\xed\xa0\x80", "\\xed\\xa0\\x80"},
      {"\xf4\x90\x80\x80", "\\xf4\\x90\\x80\\x80"},
      {"\xf0\x9f\x98", "\\xf0\\x9f\\x98"},
  };
  for (const auto& row : rows) EXPECT_EQ(terminalText(row.bytes, 100), row.shown) << row.shown;
}

TEST(TerminalTextTest, CutsOffLongTexts) {
  const struct {
    const char* bytes;
    std::size_t longest;
    const char* shown;
  } rows[] = {
      {"abc", 3, "abc"},        {"abcd", 3, "ab…"},   {"äöüß", 3, "äö…"}, {"äöü", 3, "äöü"},
      {"ab\x1b", 6, "ab\\x1b"}, {"ab\x1b", 5, "ab…"}, {"a", 1, "a"},      {"ab", 1, "…"},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(terminalText(row.bytes, row.longest), row.shown) << row.shown;
  }
}

}  // namespace
