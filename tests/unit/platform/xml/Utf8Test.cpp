#include <gtest/gtest.h>

#include "ztportal/platform/xml/Utf8.h"

namespace {

using std::string_view_literals::operator""sv;

TEST(Utf8, TakesWellFormedBytes) {
  for (const std::string_view bytes :
       {""sv, "a"sv, "\0"sv, "\x7F"sv, "\xC2\x80"sv, "\xDF\xBF"sv, "\xE0\xA0\x80"sv,
        "\xED\x9F\xBF"sv, "\xEE\x80\x80"sv, "\xEF\xBF\xBF"sv, "\xF0\x90\x80\x80"sv,
        "\xF4\x8F\xBF\xBF"sv, "gr\xC3\xBC\xC3\x9F dich"sv}) {
    EXPECT_TRUE(zt::isUtf8(bytes)) << testing::PrintToString(bytes);
  }
}

TEST(Utf8, RefusesAllElse) {
  for (const std::string_view bytes :
       {"\x80"sv, "\xBF"sv, "\xC0\x80"sv, "\xC1\xBF"sv, "\xC3"sv, "a\xC3"sv, "\xC3("sv,
        "\xE0\x80\x80"sv, "\xE0\x9F\xBF"sv, "\xE2\x82"sv, "\xED\xA0\x80"sv, "\xED\xBF\xBF"sv,
        "\xF0\x8F\xBF\xBF"sv, "\xF0\x9F\x98"sv, "\xF4\x90\x80\x80"sv, "\xF5\x80\x80\x80"sv,
        "\xFE"sv, "\xFF"sv, "gr\xFC\xDF"sv}) {
    EXPECT_FALSE(zt::isUtf8(bytes)) << testing::PrintToString(bytes);
  }
}

}  // namespace
