// SPDX-License-Identifier: Apache-2.0
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <thread>

#include "tests/support/TemporaryFolder.h"
#include "ztportal/platform/xml/ZtXMLDocument.h"

namespace {

using std::string_literals::operator""s;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

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
  auto document = ZtXMLDocument::parse("<a xmlns:ns='urn:n'><ns:b key='1'>two</ns:b></a>");
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
           "<soap:Body><x/></soap:Body></soap:Envelope>",
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

TEST(ZtXMLDocument, IsFormattedAgainWithOnlyItsContent) {
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
      {"<n:a xmlns:n='u' n:b='1'><n:c/></n:a>", "<n:a xmlns:n=\"u\" n:b=\"1\"><n:c/></n:a>"},
  };
  for (const auto& row : rows) {
    const auto document = ZtXMLDocument::parse(row.text);
    ASSERT_TRUE(document) << row.text;
    EXPECT_EQ(document->xmlText(), row.written);
  }
}

TEST(ZtXMLDocument, NamesNodesAsTheyAreWritten) {
  const auto document = ZtXMLDocument::parse(
      "<!DOCTYPE a><!--c--><?target data?>"
      "<soap:a xmlns:soap='u' xmlns='d'><b/><soap:c/><xml:d/>text<!--c--><?pi p?>"
      "<![CDATA[data]]></soap:a>",
      ZtXMLKeep::Form);
  ASSERT_TRUE(document);
  EXPECT_EQ(document->documentNode().name(), nullptr);
  EXPECT_THAT(names(document->documentNode().children()), ElementsAre(nullptr, "target", "soap:a"));
  EXPECT_EQ(document->rootElement()->name(), "soap:a");
  EXPECT_THAT(names(document->rootElement()->children()),
              ElementsAre("b", "soap:c", "xml:d", nullptr, nullptr, "pi", nullptr));
  EXPECT_THAT(texts(document->rootElement()->children()),
              ElementsAre("", "", "", "text", "c", "p", "data"));
}

// The document type declaration was listed like a comment.
TEST(ZtXMLDocument, HasNoChildForItsTypeDeclaration) {
  for (const ZtXMLKeep keep : {ZtXMLKeep::Content, ZtXMLKeep::Form}) {
    for (const char* text : {"<!--c--><!DOCTYPE a><?pi p?><a/>",
                             "<!--c--><?pi p?><!DOCTYPE a [<!ENTITY e 'x'><!--no--><?no no?>]><a/>",
                             "<!DOCTYPE a SYSTEM 'a.dtd'><!--c--><?pi p?><a/>"}) {
      const auto document = ZtXMLDocument::parse(text, keep);
      ASSERT_TRUE(document) << text;
      EXPECT_THAT(names(document->documentNode().children()), ElementsAre(nullptr, "pi", "a"))
          << text;
    }
  }
}

TEST(ZtXMLDocument, KnowsItsElements) {
  const auto document =
      ZtXMLDocument::parse("<?a a?><a>text<b/><!--c--><?b b?></a>", ZtXMLKeep::Form);
  std::vector<bool> areElements;
  for (const ZtXMLNode& node : document->documentNode().children()) {
    areElements.push_back(node.isElement());
  }
  for (const ZtXMLNode& node : document->rootElement()->children()) {
    areElements.push_back(node.isElement());
  }
  EXPECT_THAT(areElements, ElementsAre(false, true, false, true, false, false));
  EXPECT_FALSE(document->documentNode().isElement());
}

TEST(ZtXMLDocument, ConcatenatesTheTextOfAllDescendants) {
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
      "<a z='1' n:b='&lt;&amp;&#xE4;&quot;' xmlns:n='u' xmlns='v' n:c='' xml:lang='de' "
      "e='1&e;2' d=' a\tb\nc '>t</a>");
  EXPECT_THAT(root.attributes(),
              ElementsAre(Pair("z", "1"), Pair("n:b", "<&\xC3\xA4\""), Pair("n:c", ""),
                          Pair("xml:lang", "de"), Pair("e", "1x&y2"), Pair("d", " a b c ")));
  EXPECT_THAT(root.children().front().attributes(), IsEmpty());
}

TEST(ZtXMLDocument, ReplacesEntitiesInTheContent) {
  constexpr std::string_view kText =
      "<!DOCTYPE a [<!ENTITY e '<b/>x<c>y</c>&f;'><!ENTITY f '<d/>'>]><a>&e;<z/></a>";
  EXPECT_THAT(names(rootOf(kText).children()), ElementsAre("b", nullptr, "c", "d", "z"));

  const auto children = rootOf(kText, ZtXMLKeep::Form).children();
  EXPECT_THAT(names(children), ElementsAre(nullptr, "z"));
  EXPECT_EQ(children.front().text(), "xy");
  EXPECT_THAT(children.front().children(), IsEmpty());
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

TEST(ZtXMLDocument, CanBeUsedByThreadsInParallel) {
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
