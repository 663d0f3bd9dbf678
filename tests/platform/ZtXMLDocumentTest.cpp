#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <thread>

#include "tests/support/TemporaryFolder.h"
#include "ztportal/platform/ZtXMLDocument.h"

namespace {

using std::string_literals::operator""s;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

constexpr ZtXMLKeep kBothKeeps[] = {ZtXMLKeep::Content, ZtXMLKeep::Form};

std::string repeated(std::string_view text, int times) {
  std::string result;
  result.reserve(text.size() * static_cast<std::size_t>(times));
  for (int i = 0; i < times; ++i) result += text;
  return result;
}

std::vector<ZtString> names(const std::vector<ZtXMLNode>& nodes) {
  std::vector<ZtString> list;
  for (const ZtXMLNode& node : nodes) list.push_back(node.name());
  return list;
}

std::vector<ZtString> texts(const std::vector<ZtXMLNode>& nodes) {
  std::vector<ZtString> list;
  for (const ZtXMLNode& node : nodes) list.push_back(node.text());
  return list;
}

ZtXMLNode rootOf(std::string_view text, ZtXMLKeep keep = ZtXMLKeep::Content) {
  return *ZtXMLDocument::parse(text, keep)->rootElement();
}

TEST(ZtXMLDocument, IsReadAsItsHeaderShows) {
  auto document = ZtXMLDocument::parse("<a><ns:b key='1'>two</ns:b></a>");
  ZtXMLNode root = *document->rootElement();
  ZtXMLNode child = root.children().front();
  EXPECT_EQ(child.name(), "ns:b");
  EXPECT_EQ(child.text(), "two");
  EXPECT_EQ(child.attributes().front().second, "1");
}

TEST(ZtXMLDocument, IsWrittenBackAsItWas) {
  for (const char* text : {
           "<a/>",
           "<a></a>",
           "<a />",
           "<a>\n  <b> </b>\n\t<c/>\n</a>",
           "\n\n<a/>\n",
           "<a/>\n\n",
           "<a x='1' y=\"2\"  z = '\"'/>",
           "<a><![CDATA[<b> & ]] ]]></a>",
           "<a>x<![CDATA[]]>y<![CDATA[z]]></a>",
           "<!-- before -->\n<a><!-- -in- --></a><!--after-->",
           "<?before?><a><?in some data?></a>\n<?after x?>\n",
           "<a>&amp;&lt;&gt;&quot;&apos; > \" '</a>",
           "<a b='&amp;&lt;&gt;&quot;&apos; > &#10;&#x9;'/>",
           "<a>&#xE4;&#228;&#10;&#13;\xC3\xA4\xE2\x82\xAC\xF0\x9F\x98\x80</a>",
           "<a b='\xC3\xA4&#xE4;'/>",
           "<\xC3\xA4 \xC3\xB6='1'/>",
           "<?xml version=\"1.0\"?><a/>",
           "<?xml version='1.0'?>\n<a/>\n",
           "<?xml version=\"1.0\" standalone=\"yes\"?>\n<a/>",
           "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<a>\xC3\xA4</a>\n",
           "<?xml  version='1.0'  encoding = 'UTF-8'  standalone='no' ?>\n\n<a/>",
           "<!DOCTYPE a><a/>",
           "<!DOCTYPE a SYSTEM \"a.dtd\">\n<a/>",
           "<!DOCTYPE html PUBLIC \"-//W3C//DTD XHTML 1.0 Strict//EN\" "
           "\"http://www.w3.org/TR/xhtml1/DTD/xhtml1-strict.dtd\">\n<html><br/></html>",
           "<!DOCTYPE a [\n  <!ENTITY e 'x<b/>y'>\n  <!ATTLIST a d CDATA 'def'>\n]>\n"
           "<a k='&amp;'>1&e;2&e;</a>",
           "<!DOCTYPE a [<!ENTITY e 'x'>]><a k='1&e;2'/>",
           "<soap:Envelope xmlns:soap=\"http://schemas.xmlsoap.org/soap/envelope/\">"
           "<soap:Body><ns:x/></soap:Body></soap:Envelope>",
       }) {
    const auto document = ZtXMLDocument::parse(text, ZtXMLKeep::Form);
    ASSERT_TRUE(document) << text;
    EXPECT_EQ(document->xmlText(), text);
    const auto fromFile = ZtXMLDocument::parseFileContent(text, ZtXMLKeep::Form);
    ASSERT_TRUE(fromFile) << text;
    EXPECT_EQ(fromFile->xmlText(), text);
  }
}

TEST(ZtXMLDocument, IsWrittenBackAsAnXmlProcessorSeesIt) {
  struct {
    std::string text;
    const char* written;
  } const rows[] = {
      {"<a>1\r\n2\r3\n4\r\r\n5</a>\r\n", "<a>1\n2\n3\n4\n\n5</a>\n"},
      {"\xEF\xBB\xBF<a/>", "<a/>"},
      {"\xEF\xBB\xBF<?xml version='1.0' encoding='utf-8'?><a/>",
       "<?xml version='1.0' encoding='UTF-8'?><a/>"},
      {"<?xml version=\"1.0\"\r\nencoding=\"ISO-8859-1\" ?>\r\n<a>\xC3\xA4</a>",
       "<?xml version=\"1.0\"\nencoding=\"UTF-8\" ?>\n<a>\xC3\xA4</a>"},
      {"<?xml version='1.0' encoding='UTF-16'?><a>\xC3\xA4</a>",
       "<?xml version='1.0' encoding='UTF-8'?><a>\xC3\xA4</a>"},
      {"<?xml version='1.0' encoding='x-unknown'?><a/>",
       "<?xml version='1.0' encoding='UTF-8'?><a/>"},
  };
  for (const auto& row : rows) {
    const auto document = ZtXMLDocument::parse(row.text, ZtXMLKeep::Form);
    ASSERT_TRUE(document) << row.text;
    EXPECT_EQ(document->xmlText(), row.written);
  }
}

TEST(ZtXMLDocument, IsWrittenAnewWithItsContentAlone) {
  struct {
    const char* text;
    const char* written;
  } const rows[] = {
      {"<a></a>", "<a/>"},
      {"\n<a>\n  <b> </b>\n\t<c x='1'/>\n</a>\n", "<a><b> </b><c x=\"1\"/></a>"},
      {"<a>x<![CDATA[<b> & ]]>y</a>", "<a>x&lt;b&gt; &amp; y</a>"},
      {"<!--1--><a><!--2--></a><?p q?>", "<!--1--><a><!--2--></a><?p q?>"},
      {"<a b='\xC3\xA4&#xE4;'>\xC3\xA4&#xE4;</a>",
       "<a b=\"\xC3\xA4\xC3\xA4\">\xC3\xA4\xC3\xA4</a>"},
      {"<?xml version='1.0' encoding='latin1'?>\n<a/>\n",
       "<?xml version='1.0' encoding='UTF-8'?><a/>"},
      {"<html><br></br></html>", "<html><br/></html>"},
      {"<n:a xmlns:n='u' m:b='1'><n:c/></n:a>", "<n:a xmlns:n=\"u\" m:b=\"1\"><n:c/></n:a>"},
  };
  for (const auto& row : rows) {
    const auto document = ZtXMLDocument::parse(row.text);
    ASSERT_TRUE(document) << row.text;
    EXPECT_EQ(document->xmlText(), row.written);
  }
}

TEST(ZtXMLDocument, RefusesWhatIsNotWellFormed) {
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

TEST(ZtXMLDocument, SaysWhereAndWhyATextIsRefused) {
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

TEST(ZtXMLDocument, LeavesTheErrorAloneWhenThereIsNone) {
  ZtXMLError error{7, 9, "before"};
  EXPECT_TRUE(ZtXMLDocument::parse("<n:a>&lt;</n:a>", ZtXMLKeep::Content, &error));
  EXPECT_EQ(error.line, 7U);
  EXPECT_EQ(error.column, 9U);
  EXPECT_EQ(std::string(error.reason.view()), "before");
}

TEST(ZtXMLDocument, NamesNodesAsTheyAreWritten) {
  const auto document = ZtXMLDocument::parse(
      "<!DOCTYPE a><!--c--><?target data?>"
      "<soap:a xmlns:soap='u' xmlns='d'><b/><soap:c/><none:d/><x:y:z/>text<!--c--><?pi p?>"
      "<![CDATA[data]]></soap:a>",
      ZtXMLKeep::Form);
  ASSERT_TRUE(document);
  EXPECT_EQ(document->documentNode().name(), nullptr);
  EXPECT_THAT(names(document->documentNode().children()),
              ElementsAre(nullptr, nullptr, "target", "soap:a"));
  EXPECT_EQ(document->rootElement()->name(), "soap:a");
  EXPECT_THAT(names(document->rootElement()->children()),
              ElementsAre("b", "soap:c", "none:d", "x:y:z", nullptr, nullptr, "pi", nullptr));
  EXPECT_THAT(texts(document->rootElement()->children()),
              ElementsAre("", "", "", "", "text", "c", "p", "data"));
}

TEST(ZtXMLDocument, GathersTextAcrossAllBelow) {
  struct {
    const char* text;
    const char* content;
    const char* form;
  } const rows[] = {
      {"<a/>", "", ""},
      {"<a>x</a>", "x", "x"},
      {"<a> x <b>y<c>z</c></b>\n</a>", " x yz\n", " x yz\n"},
      {"<a>\n<b>y</b>\n</a>", "y", "\ny\n"},
      {"<a>x<!--no--><?no no?>y</a>", "xy", "xy"},
      {"<a>x<![CDATA[<&>]]>y</a>", "x<&>y", "x<&>y"},
      {"<a>&lt;&#xE4;&amp;amp;</a>", "<\xC3\xA4&amp;", "<\xC3\xA4&amp;"},
      {"<!DOCTYPE a [<!ENTITY e 'x<b>y</b>&f;'><!ENTITY f 'z'>]><a>1&e;2&f;</a>", "1xyz2z",
       "1xyz2z"},
      {"<a><b/></a>", "", ""},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(rootOf(row.text).text(), row.content) << row.text;
    EXPECT_EQ(rootOf(row.text, ZtXMLKeep::Form).text(), row.form) << row.text;
    EXPECT_EQ(ZtXMLDocument::parse(row.text)->documentNode().text(), row.content) << row.text;
  }
}

TEST(ZtXMLDocument, ListsAttributesAsTheyAreWritten) {
  const ZtXMLNode root = rootOf(
      "<!DOCTYPE a [<!ENTITY e 'x&#38;#38;y'><!ATTLIST a default CDATA 'no'>]>"
      "<a z='1' n:b='&lt;&amp;&#xE4;&quot;' xmlns:m='u' xmlns='v' m:c='' xml:lang='de' "
      "e='1&e;2' d=' a\tb\nc '>t</a>");
  EXPECT_THAT(root.attributes(),
              ElementsAre(Pair("z", "1"), Pair("n:b", "<&\xC3\xA4\""), Pair("m:c", ""),
                          Pair("xml:lang", "de"), Pair("e", "1x&y2"), Pair("d", " a b c ")));
  EXPECT_THAT(root.children().front().attributes(), IsEmpty());
}

TEST(ZtXMLDocument, PutsWhatEntitiesStandForInTheContent) {
  constexpr std::string_view kText =
      "<!DOCTYPE a [<!ENTITY e '<b/>x<c>y</c>&f;'><!ENTITY f '<d/>'>]><a>&e;<z/></a>";
  EXPECT_THAT(names(rootOf(kText).children()), ElementsAre("b", nullptr, "c", "d", "z"));

  const auto children = rootOf(kText, ZtXMLKeep::Form).children();
  EXPECT_THAT(names(children), ElementsAre(nullptr, "z"));
  EXPECT_EQ(children.front().text(), "xy");
  EXPECT_THAT(children.front().children(), IsEmpty());
}

TEST(ZtXMLDocument, LoadsNothingFromOutside) {
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

/// Ten entities, each made of ten of the one before.
std::string laughs(std::string_view first, std::string_view content) {
  std::string text = "<!DOCTYPE a [<!ENTITY e0 '" + std::string(first) + "'>";
  for (int i = 1; i < 10; ++i) {
    text += "<!ENTITY e" + std::to_string(i) + " '" +
            repeated("&e" + std::to_string(i - 1) + ";", 10) + "'>";
  }
  return text + "]>" + std::string(content);
}

TEST(ZtXMLDocument, RefusesEntitiesThatGrowBeyondMeasure) {
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
      // Beginning with the smallest, so that each is known before it is needed.
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

TEST(ZtXMLDocument, TakesEntitiesThatStayWithinMeasure) {
  const std::string text = "<!DOCTYPE a [<!ENTITY % p '<!ENTITY e \"" + std::string(1000, 'x') +
                           "\">'>%p;]><a>" + repeated("&e;", 900) + "</a>";
  for (const ZtXMLKeep keep : kBothKeeps) {
    const auto document = ZtXMLDocument::parse(text, keep);
    ASSERT_TRUE(document);
    EXPECT_EQ(document->rootElement()->text().view().size(), 900'000U);
  }
}

TEST(ZtXMLDocument, KeepsALongTextInItsForm) {
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

TEST(ZtXMLDocument, KeepsADeepDocumentInItsForm) {
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

TEST(ZtXMLDocument, RefusesADeepDocumentForItsContent) {
  const auto nested = [](int depth) { return repeated("<a>", depth) + repeated("</a>", depth); };
  EXPECT_TRUE(ZtXMLDocument::parse(nested(256)));
  EXPECT_FALSE(ZtXMLDocument::parse(nested(300)));
  EXPECT_FALSE(ZtXMLDocument::parse(nested(100'000)));
}

TEST(ZtXMLDocument, HonoursTheEncodingOfAFile) {
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

TEST(ZtXMLDocument, RefusesAFileThatIsNotInItsEncoding) {
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

TEST(ZtXMLDocument, LivesAsLongAsItsNodes) {
  auto document = ZtXMLDocument::parse("<a><b c='1'>text</b></a>");
  const std::weak_ptr<ZtXMLDocument> watched = document;
  std::optional<ZtXMLNode> node = document->rootElement()->children().front();
  document.reset();
  EXPECT_FALSE(watched.expired());
  EXPECT_EQ(node->name(), "b");
  EXPECT_EQ(node->text(), "text");
  EXPECT_THAT(node->attributes(), ElementsAre(Pair("c", "1")));
  node.reset();
  EXPECT_TRUE(watched.expired());
}

TEST(ZtXMLDocument, ServesThreadsAtOnce) {
  const auto shared = ZtXMLDocument::parse("<a><b c='1'>text</b></a>");
  std::vector<std::thread> threads;
  std::vector<int> right(4);
  for (int& count : right) {
    threads.emplace_back([&count, shared] {
      for (int i = 0; i < 200; ++i) {
        const std::string text = "<a>" + std::to_string(i) + "</a>";
        const auto own = ZtXMLDocument::parse(text, ZtXMLKeep::Form);
        const bool refused = !ZtXMLDocument::parse("<a>");
        if (refused && own->xmlText() == text && own->rootElement()->text() == std::to_string(i) &&
            shared->rootElement()->children().front().text() == "text" &&
            shared->xmlText() == "<a><b c=\"1\">text</b></a>") {
          ++count;
        }
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_THAT(right, testing::Each(200));
}

}  // namespace
