#include <gtest/gtest.h>

#include <string>
#include <string_view>

#include "ztportal/base/Trim.h"

namespace {

using namespace std::string_view_literals;

/// All characters with the Unicode property White_Space.
constexpr std::string_view kBlanks[] = {
    "\t",           "\n",           "\v",           "\f",           "\r",           " ",
    "\xC2\x85",      // U+0085 next line
    "\xC2\xA0",      // U+00A0 no-break space
    "\xE1\x9A\x80",  // U+1680 ogham space mark
    "\xE2\x80\x80",  // U+2000 to U+200A: spaces of many widths
    "\xE2\x80\x81", "\xE2\x80\x82", "\xE2\x80\x83", "\xE2\x80\x84", "\xE2\x80\x85", "\xE2\x80\x86",
    "\xE2\x80\x87", "\xE2\x80\x88", "\xE2\x80\x89", "\xE2\x80\x8A",
    "\xE2\x80\xA8",  // U+2028 line separator
    "\xE2\x80\xA9",  // U+2029 paragraph separator
    "\xE2\x80\xAF",  // U+202F narrow no-break space
    "\xE2\x81\x9F",  // U+205F medium mathematical space
    "\xE3\x80\x80",  // U+3000 ideographic space
};

std::string bytesOf(std::string_view text) {
  constexpr std::string_view kDigits = "0123456789ABCDEF";
  std::string bytes;
  for (const char character : text) {
    const auto byte = static_cast<unsigned char>(character);
    bytes += kDigits[byte >> 4U];
    bytes += kDigits[byte & 0xFU];
    bytes += ' ';
  }
  return bytes;
}

TEST(TrimTest, RemovesEveryKindOfWhiteSpaceFromBothEnds) {
  for (const std::string_view blank : kBlanks) {
    const std::string around(blank);
    EXPECT_EQ(zt::trimmed(around + "true"), "true") << bytesOf(blank);
    EXPECT_EQ(zt::trimmed("true" + around), "true") << bytesOf(blank);
    EXPECT_EQ(zt::trimmed(around + around + "true" + around + around), "true") << bytesOf(blank);
    EXPECT_EQ(zt::trimmed(around), "") << bytesOf(blank);
  }
}

TEST(TrimTest, RemovesMixedWhiteSpace) {
  EXPECT_EQ(zt::trimmed(" \r\n\t\xC2\xA0 1.0 \xE3\x80\x80\n"), "1.0");
  EXPECT_EQ(zt::trimmed(" \t\r\n\xE2\x80\xA8 "), "");
}

TEST(TrimTest, LeavesWhatIsInside) {
  EXPECT_EQ(zt::trimmed(" a b\tc\r\nd\xC2\xA0"
                        "e "),
            "a b\tc\r\nd\xC2\xA0"
            "e");
}

TEST(TrimTest, LeavesWhatOnlyLooksLikeWhiteSpace) {
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
  for (const std::string_view text : table) EXPECT_EQ(zt::trimmed(text), text) << bytesOf(text);
}

TEST(TrimTest, LeavesATextWithoutBlanksAndTheEmptyOne) {
  EXPECT_EQ(zt::trimmed("text"), "text");
  EXPECT_EQ(zt::trimmed(""), "");
  EXPECT_EQ(zt::trimmed(std::string_view()), "");
}

TEST(TrimTest, GivesAPartOfTheTextAndNoCopy) {
  const std::string text = "  part ";
  EXPECT_EQ(zt::trimmed(text).data(), text.data() + 2);
}

}  // namespace
