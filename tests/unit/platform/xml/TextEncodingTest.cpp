#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "ztportal/platform/xml/XmlText.h"

namespace {

using std::string_literals::operator""s;
using testing::Optional;

TEST(TextEncoding, GivesUtf8) {
  struct {
    std::string bytes;
    const char* encoding;
    const char* utf8;
  } const rows[] = {
      {"", "ISO-8859-1", ""},
      {"gr\xFC\xDF", "ISO-8859-1", "gr\xC3\xBC\xC3\x9F"},
      {"gr\xFC\xDF", "latin1", "gr\xC3\xBC\xC3\x9F"},
      {"\x80", "windows-1252", "\xE2\x82\xAC"},
      {"\x83\x65", "Shift_JIS", "\xE3\x83\x86"},
      {"a\0\xE4\0"s, "UTF-16LE", "a\xC3\xA4"},
      {"\x3D\xD8\x00\xDE"s, "UTF-16LE", "\xF0\x9F\x98\x80"},
      {"\xC3\xA4", "UTF-8", "\xC3\xA4"},
  };
  for (const auto& row : rows) {
    EXPECT_THAT(zt::utf8From(row.bytes, row.encoding), Optional(std::string(row.utf8)))
        << row.encoding;
  }
}

TEST(TextEncoding, RefusesBytesWithoutMeaning) {
  struct {
    std::string bytes;
    const char* encoding;
  } const rows[] = {{"\xE4", "US-ASCII"},       {"\xE4", "UTF-8"}, {"\x83", "Shift_JIS"},
                    {"\0\xD8"s, "UTF-16LE"},    {"a", "UTF-16LE"}, {"\0\xDC"s + "a\0"s, "UTF-16LE"},
                    {"\0\0\x11\0"s, "UTF-32LE"}};
  for (const auto& row : rows) {
    EXPECT_EQ(zt::utf8From(row.bytes, row.encoding), std::nullopt)
        << testing::PrintToString(row.bytes) << row.encoding;
  }
}

TEST(TextEncoding, RefusesAnUnknownCharacterSet) {
  for (const char* encoding : {"", "x-unknown", "../etc", "UTF-9"}) {
    EXPECT_EQ(zt::utf8From("a", encoding), std::nullopt) << encoding;
  }
}

}  // namespace
