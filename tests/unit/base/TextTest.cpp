// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

#include "ztportal/base/Text.h"

namespace {

using namespace std::string_view_literals;

TEST(TextTest, AppendsAllPiecesInOrder) {
  const std::string longPiece(100'000, 'x');
  std::string text = "old\r\n";
  zt::appendText(text, "<", std::string("name"), "> "sv, "", "a\0b"sv, "\xff\xfe\x80"sv, longPiece);
  zt::appendText(text, "!");
  EXPECT_EQ(text, std::string("old\r\n<name> a\0b\xff\xfe\x80"sv) + longPiece + "!");
}

// The null pointer of such a view used to be passed to memcpy, which is undefined behaviour.
TEST(TextTest, AppendsNothingForAViewWithoutBytes) {
  std::string text = "text";
  zt::appendText(text, std::string_view(), "a", std::string_view());
  EXPECT_EQ(text, "texta");
}

TEST(TextTest, TakesALineAtATime) {
  const struct {
    std::string_view text;
    std::vector<std::string_view> lines;
  } table[] = {
      {"", {}},
      {"\n", {""}},
      {"one", {"one"}},
      {"one\n", {"one"}},
      {"one\r\n\ntwo", {"one\r", "", "two"}},
  };
  for (const auto& row : table) {
    std::vector<std::string_view> lines;
    for (std::string_view rest = row.text; !rest.empty();) lines.push_back(zt::takeLine(rest));
    EXPECT_EQ(lines, row.lines) << testing::PrintToString(row.text);
  }
}

TEST(TextTest, TrimsEveryKindOfWhiteSpaceFromBothEnds) {
  constexpr std::string_view kBlanks[] = {
      "\t",           "\n",           "\v",
      "\f",           "\r",           " ",
      "\xC2\x85",      // U+0085 next line
      "\xC2\xA0",      // U+00A0 no-break space
      "\xE1\x9A\x80",  // U+1680 ogham space mark
      "\xE2\x80\x80",  // U+2000 to U+200A: spaces of many widths
      "\xE2\x80\x81", "\xE2\x80\x82", "\xE2\x80\x83",
      "\xE2\x80\x84", "\xE2\x80\x85", "\xE2\x80\x86",
      "\xE2\x80\x87", "\xE2\x80\x88", "\xE2\x80\x89",
      "\xE2\x80\x8A",
      "\xE2\x80\xA8",  // U+2028 line separator
      "\xE2\x80\xA9",  // U+2029 paragraph separator
      "\xE2\x80\xAF",  // U+202F narrow no-break space
      "\xE2\x81\x9F",  // U+205F medium mathematical space
      "\xE3\x80\x80",  // U+3000 ideographic space
  };
  for (const std::string_view blank : kBlanks) {
    const std::string around(blank);
    for (const std::string& text :
         {around + "true", "true" + around, around + around + "true" + around + around}) {
      EXPECT_EQ(zt::trimmed(text), "true") << testing::PrintToString(blank);
    }
    EXPECT_EQ(zt::trimmed(around), "") << testing::PrintToString(blank);
  }
}

TEST(TextTest, TrimsTheEndsOnly) {
  const struct {
    std::string_view text;
    std::string_view trimmed;
  } table[] = {
      {" \r\n\t\xC2\xA0 1.0 \xE3\x80\x80\n", "1.0"},
      {" \t\r\n\xE2\x80\xA8 ", ""},
      {" a b\tc\r\nd\xC2\xA0 e ", "a b\tc\r\nd\xC2\xA0 e"},
      {"text", "text"},
      {"", ""},
      {{}, ""},
  };
  for (const auto& row : table) EXPECT_EQ(zt::trimmed(row.text), row.trimmed);

  const std::string text = "  part ";
  EXPECT_EQ(zt::trimmed(text).data(), text.data() + 2) << "a view, not a copy";
}

TEST(TextTest, DoesNotTrimWhatOnlyLooksLikeWhiteSpace) {
  const std::string_view table[] = {
      "\0"sv,            // a control character
      "\x1C"sv,          // the separators of ASCII do not have the property
      "\x1F"sv,          //
      "\x7F"sv,          //
      "\xC2"sv,          // the first byte of a blank alone
      "\xA0"sv,          // the last byte of a blank alone
      "\x85"sv,          //
      "\xE2\x80"sv,      //
      "\x80\x80"sv,      //
      "\xC3\xA0"sv,      // U+00E0, a letter that ends like a blank
      "\xC2\x84"sv,      // U+0084 and U+0086, the neighbours of a blank
      "\xC2\x86"sv,      //
      "\xE1\xA0\x8E"sv,  // U+180E mongolian vowel separator
      "\xE2\x80\x8B"sv,  // U+200B zero width space
      "\xE2\x81\xA0"sv,  // U+2060 word joiner
      "\xEF\xBB\xBF"sv,  // U+FEFF byte order mark
  };
  for (const std::string_view text : table) {
    EXPECT_EQ(zt::trimmed(text), text) << testing::PrintToString(text);
  }
}

TEST(TextTest, RemovesTrailingSlashes) {
  EXPECT_EQ(zt::withoutTrailingSlashes("/a/b//"), "/a/b");
  EXPECT_EQ(zt::withoutTrailingSlashes("/a"), "/a");
  EXPECT_EQ(zt::withoutTrailingSlashes("//"), "/");
  EXPECT_EQ(zt::withoutTrailingSlashes(""), "");
}

TEST(TextTest, ComparesAWordInAnyLetterCase) {
  EXPECT_TRUE(zt::equalsAnyCase("yes", "yes"));
  EXPECT_TRUE(zt::equalsAnyCase("YeS", "yes"));
  EXPECT_TRUE(zt::equalsAnyCase("", ""));
  EXPECT_FALSE(zt::equalsAnyCase("ye", "yes"));
  EXPECT_FALSE(zt::equalsAnyCase("yes ", "yes"));
  EXPECT_FALSE(zt::equalsAnyCase("yE3", "yes"));
  EXPECT_FALSE(zt::equalsAnyCase("@", "`")) << "no letters, though as far apart as letters are";
}

TEST(TextTest, FindsAWordInAnyLetterCase) {
  EXPECT_TRUE(zt::containsAnyCase("<return>TRUE</return>", "true"));
  EXPECT_TRUE(zt::containsAnyCase("true", "true"));
  EXPECT_FALSE(zt::containsAnyCase("tru e", "true"));
  EXPECT_FALSE(zt::containsAnyCase("", "true"));
}

}  // namespace
