// SPDX-License-Identifier: Apache-2.0
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>

#include "tests/support/Printing.h"
#include "ztportal/portal/ZtUtils.h"

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Pair;

ZtXMLNode parsedRoot(std::string_view text) {
  const auto document = ZtXMLDocument::parse(text);
  if (document == nullptr) throw std::invalid_argument(std::string(text));
  return *document->rootElement();
}

/// The text of the node; missing if there is none.
ZtString textOf(const std::optional<ZtXMLNode>& node) { return node ? node->text() : ZtString(); }

TEST(ZtUtilsTest, ChildNamedIsTheFirstDirectChildOfExactlyThatName) {
  const struct {
    const char* text;
    ZtString name;
    ZtString expected;
  } rows[] = {
      {"<r><a>1</a><b>2</b><b>3</b></r>", "b", "2"},
      {"<r>text<!--b--><?p i?><b>2</b></r>", "b", "2"},
      {"<r><DefSOAP>1</DefSOAP></r>", "defSOAP", nullptr},
      {"<r><defSOAPs>1</defSOAPs></r>", "defSOAP", nullptr},
      {"<r><defSOA>1</defSOA></r>", "defSOAP", nullptr},
      {"<r><defSOAP>1</defSOAP></r>", "def*", nullptr},
      // The prefix is a part of the name.
      {"<r xmlns:n='urn:n'><n:a>1</n:a></r>", "a", nullptr},
      {"<r xmlns:n='urn:n'><n:a>1</n:a></r>", "n:a", "1"},
      // Neither a grandchild nor the node itself.
      {"<r><a><b>1</b></a></r>", "b", nullptr},
      {"<r/>", "r", nullptr},
      // Texts and comments have no name.
      {"<r>text<!--comment--></r>", nullptr, nullptr},
      {"<r>text<!--comment--></r>", "", nullptr},
      {"<r>text</r>", "text", nullptr},
      // A processing instruction was taken for an element of its name.
      {"<r><?b 1?><b>2</b></r>", "b", "2"},
      {"<r><?b 1?></r>", "b", nullptr},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(textOf(ZtUtils::childNamed(parsedRoot(row.text), row.name)), row.expected)
        << row.text << " " << row.name.printed();
  }
}

TEST(ZtUtilsTest, ChildNamedOfADocumentFindsItsRoot) {
  const auto document = ZtXMLDocument::parse("<!DOCTYPE r><!--c--><?r 2?><r><a>1</a></r>");
  ASSERT_NE(document, nullptr);
  EXPECT_EQ(textOf(ZtUtils::childNamed(document->documentNode(), "r")), "1");
  EXPECT_EQ(textOf(ZtUtils::childNamed(document->documentNode(), "a")), nullptr);
}

TEST(ZtUtilsTest, ChildNamedLikeIsTheFirstDirectChildWhoseLowerCaseNameMatches) {
  constexpr const char* kResponse =
      "<b xmlns:ns1='urn:n'><other>0</other>"
      "<ns1:postPoolDatasResponse>1</ns1:postPoolDatasResponse></b>";
  const struct {
    const char* text;
    ZtString pattern;
    ZtString expected;
  } rows[] = {
      {kResponse, "*postpooldatasresponse*", "1"},
      {kResponse, "*PostPoolDatas*", nullptr},
      {"<r>text<!--a--><a1>1</a1><a2>2</a2></r>", "a?", "1"},
      {"<r><a1>1</a1><A2>2</A2></r>", "*2", "2"},
      {"<r><a><b>1</b></a></r>", "b*", nullptr},
      {"<r>text<!--comment--><?b 1?></r>", "*", nullptr},
      {"<r>text<!--comment--></r>", "", nullptr},
      {"<r><a>1</a></r>", nullptr, nullptr},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(textOf(ZtUtils::childNamedLike(parsedRoot(row.text), row.pattern)), row.expected)
        << row.text << " " << row.pattern.printed();
  }
}

TEST(ZtUtilsTest, APatternMatchesAsWildcardsDo) {
  struct Row {
    const char* name;
    const char* pattern;
    bool matches;
  };
  const Row rows[] = {
      {"abc", "abc", true},
      {"abc", "ab", false},
      {"abc", "abcd", false},
      {"abc", "bc", false},
      {"abc", "", false},
      {"ABC", "abc", true},
      {"abc", "ABC", false},
      {"abc", "aBc", false},
      {"a.c", "a.c", true},
      {"abc", "a.c", false},
      {"abc", "[a]bc", false},
      // Any number of characters, including none.
      {"abc", "*", true},
      {"abc", "**", true},
      {"abc", "a*", true},
      {"abc", "*c", true},
      {"abc", "*b*", true},
      {"abc", "abc*", true},
      {"abc", "*abc", true},
      {"abc", "a*c", true},
      {"abc", "a**c", true},
      {"abc", "a*b", false},
      {"abc", "b*", false},
      {"abc", "*d*", false},
      // A "*" that has to match more after a mismatch.
      {"aab", "*ab", true},
      {"ababab", "*abab", true},
      {"axbyczb", "a*b*c*b", true},
      {"axbyczd", "a*b*c*b", false},
      {"abcbcd", "a*bcd", true},
      {"aaab", "a*a*b", true},
      // Exactly one character.
      {"abc", "a?c", true},
      {"abc", "???", true},
      {"abc", "??", false},
      {"abc", "????", false},
      {"abc", "?", false},
      {"abc", "*?", true},
      {"abc", "?*", true},
      {"abc", "*???", true},
      {"abc", "*????", false},
      {"abcd", "a*?d", true},
      {"ad", "a*?d", false},
      {"ad", "a?*d", false},
      // Characters of several bytes.
      {"a\xC3\xA4z", "a?z", true},
      {"a\xC3\xA4z", "a??z", false},
      {"\xE4\xBA\xBA", "?", true},
      {"\xE4\xBA\xBA", "??", false},
      {"\xE4\xBA\xBAz", "?z", true},
      {"\xF0\x90\x90\xA8z", "?z", true},
      {"\xC3\xB5z", "?z", true},
      {"\xE4\xBB\xBFz", "?z", true},
      {"\xC3\xA4\xC3\xB6", "??", true},
      {"\xC3\xA4\xC3\xB6", "?", false},
      {"\xC3\x84", "\xC3\xA4", true},
      {"\xC3\xA4z\xC3\xB6", "*\xC3\xB6", true},
      {"x\xC3\xA4z", "*z", true},
  };
  for (const Row& row : rows) {
    const std::string text =
        "<r><" + std::string(row.name) + ">1</" + std::string(row.name) + "></r>";
    EXPECT_EQ(textOf(ZtUtils::childNamedLike(parsedRoot(text), row.pattern)),
              row.matches ? ZtString("1") : ZtString())
        << row.name << " like " << row.pattern;
  }
}

TEST(ZtUtilsTest, ChildrenAsStringsHasOneEntryPerChildTextNodesIncluded) {
  EXPECT_THAT(ZtUtils::childrenAsStrings(
                  parsedRoot("<r>one<a>two<b>three</b></a>four<c/><!--five--><?p six?></r>")),
              ElementsAre(ZtString("one"), ZtString("twothree"), ZtString("four"), ZtString(""),
                          ZtString("five"), ZtString("six")));
  const auto document = ZtXMLDocument::parse("<!DOCTYPE r [<!--no-->]><!--1--><r>2</r><?p 3?>");
  EXPECT_THAT(ZtUtils::childrenAsStrings(document->documentNode()),
              ElementsAre(ZtString("1"), ZtString("2"), ZtString("3")));
  EXPECT_THAT(ZtUtils::childrenAsStrings(parsedRoot("<r/>")), IsEmpty());
}

TEST(ZtUtilsTest, NodesContentAsDictionaryGathersTheAttributesOfAllChildrenOfThatName) {
  EXPECT_THAT(ZtUtils::nodesContentAsDictionary(
                  parsedRoot("<r><item a='1'/><item a='2' b='3'/></r>"), "item"),
              ElementsAre(Pair("a", ZtString("2")), Pair("b", ZtString("3"))));
  EXPECT_THAT(ZtUtils::nodesContentAsDictionary(
                  parsedRoot("<r z='0'>text<Item a='1'/><other b='2'/><d><item c='3'/></d>"
                             "<item e='&amp;5' f=''/></r>"),
                  "item"),
              ElementsAre(Pair("e", ZtString("&5")), Pair("f", ZtString(""))));
}

TEST(ZtUtilsTest, NodesContentAsDictionaryIsEmptyWhenNothingMatches) {
  const char* text = "<r>text<item a='1'/><!--c--></r>";
  EXPECT_THAT(ZtUtils::nodesContentAsDictionary(parsedRoot(text), "items"), IsEmpty());
  EXPECT_THAT(ZtUtils::nodesContentAsDictionary(parsedRoot(text), nullptr), IsEmpty());
  EXPECT_THAT(ZtUtils::nodesContentAsDictionary(parsedRoot("<r><item/></r>"), "item"), IsEmpty());
}

}  // namespace
