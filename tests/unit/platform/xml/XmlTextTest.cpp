// SPDX-License-Identifier: Apache-2.0
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "ztportal/platform/xml/XmlText.h"

namespace {

using std::string_literals::operator""s;
using std::string_view_literals::operator""sv;
using testing::Optional;

TEST(XmlText, HasADeclarationOnlyAtItsStart) {
  struct {
    std::string_view text;
    std::string_view declaration;
  } const rows[] = {
      {"", ""},
      {"<a/>", ""},
      {"<?xml", ""},
      {"<?xml ", ""},
      {"<?xml version='1.0'", ""},
      {"<?xmlx version='1.0'?>", ""},
      {"<?xml-stylesheet href='a'?><a/>", ""},
      {" <?xml version='1.0'?><a/>", ""},
      {"<?xml version='1.0'?><a/>", "<?xml version='1.0'?>"},
      {"<?xml\nversion='1.0'?><?x?>", "<?xml\nversion='1.0'?>"},
  };
  for (const auto& row : rows) EXPECT_EQ(zt::xmlDeclaration(row.text), row.declaration) << row.text;
}

TEST(XmlText, DetectsTheEncodingOfAFile) {
  struct {
    std::string_view bytes;
    const char* encoding;
  } const rows[] = {
      {"", "UTF-8"},
      {"<a encoding='x'/>", "UTF-8"},
      {"<?xml version='1.0'?><a encoding='x'/>", "UTF-8"},
      {"<?xml version='1.0' encoding='ISO-8859-1'?>", "ISO-8859-1"},
      {"<?xml version='1.0' encoding = \"Shift_JIS\" standalone='yes'?>", "Shift_JIS"},
      {"<?xml version='1.0' encoding='a,b'?>", "UTF-8"},
      {"<?xml version='1.0' encoding=''?>", "UTF-8"},
      {"<?xml version='1.0' encoding='8'?>", "UTF-8"},
      {"<?xml version='1.0' encoding='UTF-16?>", "UTF-8"},
      {"<?xml version='1.0' encoding?>", "UTF-8"},
      {"\xEF\xBB\xBF<?xml version='1.0' encoding='ISO-8859-1'?>", "UTF-8"},
      {"\xFF\xFE<\0"sv, "UTF-16LE"},
      {"\xFE\xFF\0<"sv, "UTF-16BE"},
      {"\xFF\xFE\0\0"sv, "UTF-32LE"},
      {"\0\0\xFE\xFF"sv, "UTF-32BE"},
      {"<\0?\0x\0"sv, "UTF-16LE"},
      {"\0<\0?\0x"sv, "UTF-16BE"},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(zt::xmlFileEncoding(row.bytes), row.encoding) << testing::PrintToString(row.bytes);
  }
}

TEST(XmlText, IsNormalisedToUtf8) {
  struct {
    const char* text;
    const char* result;
  } const rows[] = {
      {"", ""},
      {"\xEF\xBB\xBF", ""},
      {"\r", "\n"},
      {"\r\n", "\n"},
      {"\n\r", "\n\n"},
      {"a\r\r\nb\rc\n", "a\n\nb\nc\n"},
      {"<?xml version='1.0' encoding='latin1'?>", "<?xml version='1.0' encoding='UTF-8'?>"},
      {"\xEF\xBB\xBF<?xml version='1.0' encoding=\"utf-8\" ?>\r\n",
       "<?xml version='1.0' encoding=\"UTF-8\" ?>\n"},
      {"<?xml version='1.0' encoding='&'?>", "<?xml version='1.0' encoding='&'?>"},
      {"<a encoding='latin1'/>", "<a encoding='latin1'/>"},
  };
  for (const auto& row : rows) EXPECT_EQ(zt::xmlTextInUtf8(row.text), row.result) << row.text;
}

TEST(TextEncoding, ConvertsToUtf8) {
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

TEST(TextEncoding, RefusesInvalidBytes) {
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
