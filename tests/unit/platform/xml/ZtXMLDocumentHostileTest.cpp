// SPDX-License-Identifier: Apache-2.0
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <thread>

#include "tests/support/HostileXml.h"
#include "tests/support/TemporaryFolder.h"
#include "ztportal/platform/xml/ZtXMLDocument.h"

namespace {

using std::string_literals::operator""s;
using zt::test::repeated;

constexpr ZtXMLKeep kBothKeeps[] = {ZtXMLKeep::Content, ZtXMLKeep::Form};

TEST(ZtXMLDocumentHostile, RefusesWhatIsNotWellFormed) {
  testing::internal::CaptureStderr();
  testing::internal::CaptureStdout();
  for (const std::string& text : {
           ""s,
           " "s,
           "text"s,
           "<"s,
           "<a"s,
           "<a>"s,
           "<a></b>"s,
           "<a><b></a></b>"s,
           "<a/><b/>"s,
           "<a/>text"s,
           "text<a/>"s,
           "<a b/>"s,
           "<a b=1/>"s,
           "<a b='1' b='2'/>"s,
           "<a b='<'/>"s,
           "<a>&</a>"s,
           "<a>&unknown;</a>"s,
           "<a b='&unknown;'/>"s,
           "<a>&#0;</a>"s,
           "<a>&#xFFFE;</a>"s,
           "<a>\x01</a>"s,
           "<a>]]></a>"s,
           "<a><!-- -- --></a>"s,
           "<a><![CDATA[</a>"s,
           "<a><?xml version='1.0'?></a>"s,
           " <?xml version='1.0'?><a/>"s,
           "<?xml version='1.0' encoding=''?><a/>"s,
           "<?xml version='1.0' encoding='!'?><a/>"s,
           "<?xml encoding='UTF-8'?><a/>"s,
           "<?xml version='1.0'><a/>"s,
           "<!DOCTYPE a [<!ENTITY e '<'>]><a>&e;</a>"s,
           "<!DOCTYPE a [<!ENTITY e 'x &#38; y'>]><a>&e;</a>"s,
           "<!DOCTYPE a [<!ENTITY e 'x &#38; y'>]><a b='&e;'/>"s,
           "<!DOCTYPE a [<!ENTITY e '&e;'>]><a>&e;</a>"s,
           "<!DOCTYPE a [<!ENTITY e '&f;'><!ENTITY f '&e;'>]><a b='&e;'/>"s,
           "<a>\xE4</a>"s,
           "<a>\xC0\x80</a>"s,
           "<a>\xED\xA0\x80</a>"s,
           "<a>\0</a>"s,
           "<a/>\0"s,
           "\0<a/>"s,
           "<a b='\0'/>"s,
           "<\0a\0/\0>\0"s,
       }) {
    for (const ZtXMLKeep keep : kBothKeeps) {
      EXPECT_FALSE(ZtXMLDocument::parse(text, keep)) << text;
    }
  }
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

TEST(ZtXMLDocumentHostile, LoadsNothingFromOutside) {
  const zt::test::TemporaryFolder folder;
  const std::string secret = folder.write("secret.txt", "SECRET");
  const std::string types = folder.write("types.dtd", "<!ENTITY e 'SECRET'>");
  for (const std::string& text :
       {"<!DOCTYPE a [<!ENTITY e SYSTEM '" + secret + "'>]><a>1&e;2</a>",
        "<!DOCTYPE a [<!ENTITY e SYSTEM 'file://" + secret + "'>]><a>1&e;2</a>",
        "<!DOCTYPE a [<!ENTITY e PUBLIC 'p' '" + secret + "'><!ENTITY f '&e;'>]><a>1&f;2</a>",
        "<!DOCTYPE a SYSTEM '" + types + "'><a>1&e;2</a>",
        "<!DOCTYPE a SYSTEM 'file://" + types + "' []><a>1&e;2</a>",
        "<!DOCTYPE a SYSTEM 'http://127.0.0.1:1/types.dtd'><a>1&e;2</a>"s}) {
    for (const ZtXMLKeep keep : kBothKeeps) {
      const auto document = ZtXMLDocument::parse(text, keep);
      ASSERT_TRUE(document) << text;
      EXPECT_EQ(document->rootElement()->text(), "12") << text;
      EXPECT_EQ(document->xmlText().find("SECRET"), std::string::npos) << text;
    }
  }
  for (const std::string& text :
       {"<!DOCTYPE a [<!ENTITY % p SYSTEM '" + types + "'>%p;]><a>&e;</a>",
        "<!DOCTYPE a [<!ENTITY e SYSTEM '" + secret + "'>]><a b='&e;'/>",
        "<a xmlns:xi='http://www.w3.org/2001/XInclude'><xi:include parse='text' href='" + secret +
            "'/></a>"}) {
    for (const ZtXMLKeep keep : kBothKeeps) {
      const auto document = ZtXMLDocument::parse(text, keep);
      EXPECT_TRUE(!document || document->rootElement()->text() == "") << text;
    }
  }
}

/// Ten entities, each of which consists of ten references to the previous one.
std::string laughs(std::string_view first, std::string_view content) {
  std::string text = "<!DOCTYPE a [<!ENTITY e0 '" + std::string(first) + "'>";
  for (int i = 1; i < 10; ++i) {
    text += "<!ENTITY e" + std::to_string(i) + " '" +
            repeated("&e" + std::to_string(i - 1) + ";", 10) + "'>";
  }
  return text + "]>" + std::string(content);
}

TEST(ZtXMLDocumentHostile, RefusesEntitiesThatExpandExcessively) {
  const std::string large = "<!DOCTYPE a [<!ENTITY e '" + std::string(100'000, 'x') + "'>]>";
  std::string parameters = "<!DOCTYPE a [<!ENTITY % p0 '<!ENTITY x \"y\">'>";
  for (int i = 1; i < 10; ++i) {
    parameters += "<!ENTITY % p" + std::to_string(i) + " '" +
                  repeated("&#37;p" + std::to_string(i - 1) + ";", 10) + "'>";
  }
  std::string chain = "<!DOCTYPE a [<!ENTITY e0 'x'>";
  std::string fromTheLast;
  for (int i = 1; i < 100; ++i) {
    chain += "<!ENTITY e" + std::to_string(i) + " '&e" + std::to_string(i - 1) + ";'>";
    fromTheLast += "&e" + std::to_string(i) + ";";
  }
  const std::string texts[] = {
      laughs("lol", "<a>&e9;</a>"),
      laughs("lol", "<a b='&e9;'/>"),
      laughs("", "<a>&e9;</a>"),
      laughs("", "<a b='&e9;'/>"),
      laughs("<b/>", "<a>&e9;</a>"),
      // The smallest one comes first, so that each is declared before it is used.
      laughs("lol", "<a>&e1;&e2;&e3;&e4;&e5;&e6;&e7;&e8;&e9;</a>"),
      large + "<a>" + repeated("&e;", 10'000) + "</a>",
      large + "<a b='" + repeated("&e;", 10'000) + "'/>",
      large + "<a>" + repeated("<b c='&e;'/>", 10'000) + "</a>",
      chain + "]><a>" + fromTheLast + "</a>",
      parameters + "%p9;]><a/>",
      "<!DOCTYPE a [<!ENTITY % p '&#37;p;'>%p;]><a/>",
      "<!DOCTYPE a [<!ENTITY % p '<!--" + std::string(100'000, 'x') + "-->'>" +
          repeated("%p;", 10'000) + "]><a/>",
  };
  testing::internal::CaptureStderr();
  for (const std::string& text : texts) {
    for (const ZtXMLKeep keep : kBothKeeps) {
      EXPECT_FALSE(ZtXMLDocument::parse(text, keep)) << text.substr(0, 1000);
    }
  }
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

TEST(ZtXMLDocumentHostile, AcceptsEntitiesWithinTheLimits) {
  const std::string text = "<!DOCTYPE a [<!ENTITY % p '<!ENTITY e \"" + std::string(1000, 'x') +
                           "\">'>%p;]><a>" + repeated("&e;", 900) + "</a>";
  for (const ZtXMLKeep keep : kBothKeeps) {
    const auto document = ZtXMLDocument::parse(text, keep);
    ASSERT_TRUE(document);
    EXPECT_EQ(document->rootElement()->text().view().size(), 900'000U);
  }
}

TEST(ZtXMLDocumentHostile, KeepsALongTextInItsForm) {
  const std::string longText = repeated("\xC3\xA4&amp;", 2'000'000);
  const std::string text = "<a>" + longText + "</a>";
  const auto document = ZtXMLDocument::parse(text, ZtXMLKeep::Form);
  ASSERT_TRUE(document);
  EXPECT_TRUE(document->xmlText() == text);
  EXPECT_EQ(document->rootElement()->text().view().size(), 6'000'000U);

  const std::string longer = "<a>" + repeated("\xC3\xA4", 6'000'000) + "</a>";
  EXPECT_TRUE(ZtXMLDocument::parse(longer, ZtXMLKeep::Form)->xmlText() == longer);
  EXPECT_FALSE(ZtXMLDocument::parse(longer, ZtXMLKeep::Content));
  EXPECT_FALSE(ZtXMLDocument::parse("<!DOCTYPE a>" + longer, ZtXMLKeep::Form));
}

TEST(ZtXMLDocumentHostile, KeepsADeepDocumentInItsForm) {
  constexpr int kDepth = 100'000;
  const std::string text = repeated("<a>", kDepth) + "x" + repeated("</a>", kDepth);
  const auto document = ZtXMLDocument::parse(text, ZtXMLKeep::Form);
  ASSERT_TRUE(document);
  EXPECT_TRUE(document->xmlText() == text);
  EXPECT_EQ(document->rootElement()->text(), "x");
  int depth = 0;
  for (auto nodes = document->documentNode().children(); !nodes.empty(); ++depth) {
    nodes = nodes.front().children();
  }
  EXPECT_EQ(depth, kDepth + 1);
  EXPECT_FALSE(ZtXMLDocument::parse("<!DOCTYPE a>" + text, ZtXMLKeep::Form));
}

TEST(ZtXMLDocumentHostile, RefusesADeepDocumentForItsContent) {
  const auto nested = [](int depth) { return repeated("<a>", depth) + repeated("</a>", depth); };
  EXPECT_TRUE(ZtXMLDocument::parse(nested(256)));
  EXPECT_FALSE(ZtXMLDocument::parse(nested(300)));
  EXPECT_FALSE(ZtXMLDocument::parse(nested(100'000)));
}

// A second byte order mark was skipped like the first, and appeared at the beginning of the saved
// report when that was sent: the server received a text that differed from the parsed one.
TEST(ZtXMLDocumentHostile, RefusesASecondByteOrderMark) {
  for (const std::string& bytes :
       {"\xEF\xBB\xBF\xEF\xBB\xBF<a/>"s, "\xEF\xBB\xBF\xEF\xBB\xBF<?xml version='1.0'?><a/>"s,
        "\xFF\xFE\xFF\xFE<\0a\0/\0>\0"s, "\xFF\xFE\0\0\xFF\xFE\0\0<\0\0\0a\0\0\0/\0\0\0>\0\0\0"s}) {
    for (const ZtXMLKeep keep : kBothKeeps) {
      ZtXMLError error;
      EXPECT_FALSE(ZtXMLDocument::parseFileContent(bytes, keep, &error))
          << testing::PrintToString(bytes);
      EXPECT_EQ(error.reason, "a second byte order mark");
      EXPECT_EQ(error.line, 1U);
      EXPECT_EQ(error.column, 1U);
    }
  }
}

TEST(ZtXMLDocumentHostile, HonoursTheEncodingOfAFile) {
  const std::string utf8 = "\xC3\xA4\xE2\x82\xAC";
  struct {
    std::string bytes;
    std::string text;
    std::string written;
  } const rows[] = {
      {"<a>" + utf8 + "</a>", utf8, "<a>" + utf8 + "</a>"},
      {"\xEF\xBB\xBF<a>" + utf8 + "</a>", utf8, "<a>" + utf8 + "</a>"},
      {"<?xml version='1.0' encoding='utf-8'?><a>" + utf8 + "</a>", utf8,
       "<?xml version='1.0' encoding='UTF-8'?><a>" + utf8 + "</a>"},
      {"<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?>\n<a b='\xFC'>\xE4</a>\n", "\xC3\xA4",
       "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<a b='\xC3\xBC'>\xC3\xA4</a>\n"},
      {"<?xml version='1.0' encoding='windows-1252'?><a>\x80</a>", "\xE2\x82\xAC",
       "<?xml version='1.0' encoding='UTF-8'?><a>\xE2\x82\xAC</a>"},
      {"<?xml version='1.0' encoding='Shift_JIS'?><a>\x83\x65</a>", "\xE3\x83\x86",
       "<?xml version='1.0' encoding='UTF-8'?><a>\xE3\x83\x86</a>"},
      {"\xFF\xFE<\0a\0>\0\xE4\0<\0/\0a\0>\0"s, "\xC3\xA4", "<a>\xC3\xA4</a>"},
      {"\xFE\xFF\0<\0a\0>\0\xE4\0<\0/\0a\0>"s, "\xC3\xA4", "<a>\xC3\xA4</a>"},
      {"<\0?\0x\0?\0>\0<\0a\0>\0\xE4\0<\0/\0a\0>\0"s, "\xC3\xA4", "<?x?><a>\xC3\xA4</a>"},
      {"\xFF\xFE\0\0<\0\0\0a\0\0\0/\0\0\0>\0\0\0"s, "", "<a/>"},
  };
  for (const auto& row : rows) {
    const auto document = ZtXMLDocument::parseFileContent(row.bytes, ZtXMLKeep::Form);
    ASSERT_TRUE(document) << testing::PrintToString(row.bytes);
    EXPECT_EQ(document->rootElement()->text(), row.text);
    EXPECT_EQ(document->xmlText(), row.written);
  }
}

TEST(ZtXMLDocumentHostile, RefusesAFileThatIsNotInItsEncoding) {
  testing::internal::CaptureStderr();
  for (const std::string& bytes : {
           "<a>\xE4</a>"s,
           "<?xml version='1.0' encoding='UTF-8'?><a>\xE4</a>"s,
           "<?xml version='1.0' encoding='US-ASCII'?><a>\xC3\xA4</a>"s,
           "<?xml version='1.0' encoding='x-unknown'?><a/>"s,
           "<?xml version='1.0' encoding='UTF-16'?><a/>"s,
           "<?xml version='1.0' encoding='Shift_JIS'?><a>\x83</a>"s,
           "\xFF\xFE<\0a\0/\0>"s,
           "\xFF\xFE<\0a\0>\0\0\xD8<\0/\0a\0>\0"s,
           "\xFF\xFE<\0a\0/\0>\0\0\0"s,
           "<a/>\0"s,
       }) {
    EXPECT_FALSE(ZtXMLDocument::parseFileContent(bytes, ZtXMLKeep::Form))
        << testing::PrintToString(bytes);
  }
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

}  // namespace
