#include <gtest/gtest.h>

#include "ztportal/platform/xml/XmlText.h"

namespace {

using std::string_view_literals::operator""sv;

TEST(XmlText, HasADeclarationOnlyAtItsVeryStart) {
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

TEST(XmlText, TellsTheEncodingOfAFile) {
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

TEST(XmlText, IsPutInUtf8) {
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

}  // namespace
