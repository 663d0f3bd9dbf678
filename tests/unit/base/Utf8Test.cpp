// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <string>
#include <string_view>

#include "ztportal/base/Utf8.h"

namespace {

using std::string_view_literals::operator""sv;

TEST(Utf8Test, DecodesTheFirstCharacter) {
  const struct {
    std::string_view bytes;
    char32_t code;
    std::size_t length;
  } table[] = {
      {"a"sv, 'a', 1},
      {"\0"sv, 0, 1},
      {"\x7F"sv, 0x7F, 1},
      {"\xC2\x80"sv, 0x80, 2},
      {"\xDF\xBF"sv, 0x7FF, 2},
      {"\xE0\xA0\x80"sv, 0x800, 3},
      {"\xED\x9F\xBF"sv, 0xD7FF, 3},
      {"\xEE\x80\x80"sv, 0xE000, 3},
      {"\xEF\xBF\xBF"sv, 0xFFFF, 3},
      {"\xF0\x90\x80\x80"sv, 0x10000, 4},
      {"\xF4\x8F\xBF\xBF"sv, 0x10FFFF, 4},
  };
  for (const auto& row : table) {
    EXPECT_TRUE(zt::isUtf8(row.bytes)) << testing::PrintToString(row.bytes);
    const auto character = zt::firstUtf8Character(std::string(row.bytes) + "\xFF");
    ASSERT_TRUE(character) << testing::PrintToString(row.bytes);
    EXPECT_EQ(character->code, row.code);
    EXPECT_EQ(character->length, row.length);
  }
}

TEST(Utf8Test, RefusesMalformedBytes) {
  for (const std::string_view bytes :
       {"\x80"sv, "\xBF"sv, "\xC0\x80"sv, "\xC1\xBF"sv, "\xC3"sv, "\xC3("sv, "\xE0\x80\x80"sv,
        "\xE0\x9F\xBF"sv, "\xE2\x82"sv, "\xE2\x82("sv, "\xED\xA0\x80"sv, "\xED\xBF\xBF"sv,
        "\xF0\x8F\xBF\xBF"sv, "\xF0\x9F\x98"sv, "\xF4\x90\x80\x80"sv, "\xF5\x80\x80\x80"sv,
        "\xFE"sv, "\xFF"sv}) {
    EXPECT_FALSE(zt::firstUtf8Character(bytes)) << testing::PrintToString(bytes);
    EXPECT_FALSE(zt::isUtf8(bytes)) << testing::PrintToString(bytes);
  }
  EXPECT_FALSE(zt::firstUtf8Character(""));
}

TEST(Utf8Test, MeasuresTheWellFormedStart) {
  EXPECT_EQ(zt::utf8Length(""), 0U);
  EXPECT_EQ(zt::utf8Length("gr\xC3\xBC\xC3\x9F dich"), 11U);
  EXPECT_EQ(zt::utf8Length("a\xC3"), 1U);
  EXPECT_EQ(zt::utf8Length("gr\xFC\xDF"), 2U);
  EXPECT_FALSE(zt::isUtf8("gr\xFC\xDF"));
}

}  // namespace
