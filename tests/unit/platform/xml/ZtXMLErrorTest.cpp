// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <cstddef>
#include <string>

#include "tests/support/Printing.h"
#include "ztportal/platform/xml/ZtXMLDocument.h"

namespace {

using std::string_literals::operator""s;

TEST(ZtXMLError, SaysWhereAndWhyATextIsRefused) {
  const std::string longLine(300'000, 'x');
  struct {
    std::string bytes;
    std::size_t line;
    std::size_t column;
    const char* reason;
  } const rows[] = {
      {"", 1, 1, "Document is empty"},
      {"text", 1, 1, "Start tag expected, '<' not found"},
      {"<a>", 1, 4, "Premature end of data in tag a line 1"},
      {"<a/><b/>", 1, 5, "Extra content at the end of the document"},
      {"<a></b>", 1, 4, "Opening and ending tag mismatch: a line 1 and b"},
      {"<a>\n  <b>\xC3\xA4\xE2\x82\xAC</c>\n</a>", 2, 8,
       "Opening and ending tag mismatch: b line 2 and c"},
      {"<a>\r\n\r\n<b></c></a>", 3, 4, "Opening and ending tag mismatch: b line 3 and c"},
      {"<a>" + longLine + "\n" + longLine + "<b></a>", 2, 300'004,
       "Opening and ending tag mismatch: b line 2 and a"},
      {"<a>\x01</a>", 1, 4, "PCDATA invalid Char value 1"},
      {"<a>\n  x\xE4</a>", 2, 4, "a byte that is not UTF-8"},
      {"\xEF\xBB\xBF<a>\xE4</a>", 1, 4, "a byte that is not UTF-8"},
      {"<a>\r\n</a>\0\xE4"s, 2, 5, "a NUL byte"},
      {"<?xml version='1.0' encoding='ISO-8859-1'?><a>\xE4</b>", 1, 48,
       "Opening and ending tag mismatch: a line 1 and b"},
      {"<?xml version='1.0' encoding='ISO-8859-1'?>\n<a>\xE4</b>", 2, 5,
       "Opening and ending tag mismatch: a line 2 and b"},
      {"<!DOCTYPE a [<!ENTITY e '<b></c>'>]><a>\n&e;</a>", 2, 4,
       "Opening and ending tag mismatch: b line 1 and c"},
      {"<a>\n<b>\xC3\xA4<n:c x='1>2' y='2'/></b></a>", 2, 5,
       "Namespace prefix n on c is not defined"},
      {"<a>\n<b xmlns:n='u' n:c='' m:c=''/></a>", 2, 1,
       "Namespace prefix m for c on b is not defined"},
      {"<a><b xmlns:n='u'/><n:b/><c></a>", 1, 20, "Namespace prefix n on b is not defined"},
      {"<!DOCTYPE a [<!ENTITY e '<n:b/>'>]><a>\n&e;</a>", 2, 4,
       "Namespace prefix n on b is not defined"},
      {"<a>\n<n:b:c xmlns:n='u'/></a>", 2, 1, "Failed to parse QName 'n:b:'"},
      {"<?xml version='1.0' encoding='x-unknown'?><a/>", 0, 0, "not in its encoding, x-unknown"},
      {"<!DOCTYPE a [<!ENTITY % p '&#37;p;'>%p;]><a/>", 0, 0, nullptr},
  };
  for (const auto& row : rows) {
    const std::string shown = row.bytes.substr(0, 100);
    ZtXMLError error;
    EXPECT_FALSE(ZtXMLDocument::parseFileContent(row.bytes, ZtXMLKeep::Form, &error)) << shown;
    if (row.reason == nullptr) {
      EXPECT_FALSE(error.reason.empty()) << shown;
      continue;
    }
    EXPECT_EQ(error.line, row.line) << shown;
    EXPECT_EQ(error.column, row.column) << shown;
    EXPECT_EQ(std::string(error.reason.view()), row.reason) << shown;
  }
}

// A prefix without a namespace declaration was accepted.
TEST(ZtXMLError, IsAPrefixWithoutANamespace) {
  for (const ZtXMLKeep keep : {ZtXMLKeep::Content, ZtXMLKeep::Form}) {
    for (const char* text : {"<n:a/>", "<a n:b=''/>", "<a><b xmlns:n='u'/><n:c/></a>",
                             "<!DOCTYPE a [<!ENTITY e '<n:b/>'>]><a>&e;</a>", "<a xmlns:n=''/>"}) {
      EXPECT_FALSE(ZtXMLDocument::parse(text, keep)) << text;
    }
    for (const char* text :
         {"<n:a xmlns:n='u' n:b=''><n:c/></n:a>", "<a xml:lang='de'/>", "<a xmlns=''/>",
          "<a xmlns:n='relative'/>", "<n:a xmlns:n='no URI'/>", "<a xmlns='http://[no URI'/>",
          "<!DOCTYPE a [<!ATTLIST a xmlns:n CDATA 'u'>]><a><n:b/></a>",
          "<!DOCTYPE a [<!ENTITY e '<n:b/>'>]><a xmlns:n='u'>&e;</a>"}) {
      EXPECT_TRUE(ZtXMLDocument::parse(text, keep)) << text;
    }
  }
}

TEST(ZtXMLError, LeavesTheErrorAloneWhenThereIsNone) {
  ZtXMLError error{7, 9, "before"};
  EXPECT_TRUE(ZtXMLDocument::parse("<n:a xmlns:n='u'>&lt;</n:a>", ZtXMLKeep::Content, &error));
  EXPECT_EQ(error.line, 7U);
  EXPECT_EQ(error.column, 9U);
  EXPECT_EQ(std::string(error.reason.view()), "before");
}

}  // namespace
