#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "tests/support/Printing.h"
#include "ztportal/portal/ZtUtils.h"

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Pair;

ZtXMLNode rootOf(std::string_view text) {
  const auto document = ZtXMLDocument::parse(text);
  if (document == nullptr) throw std::invalid_argument(std::string(text));
  return *document->rootElement();
}

/// The text of what was found; a missing one when nothing was.
ZtString textOf(const std::optional<ZtXMLNode>& node) { return node ? node->text() : ZtString(); }

ZtString named(std::string_view text, const ZtString& name) {
  return textOf(ZtUtils::childNamed(rootOf(text), name));
}

ZtString namedLike(std::string_view text, const ZtString& pattern) {
  return textOf(ZtUtils::childNamedLike(rootOf(text), pattern));
}

// childNamed.

TEST(ZtUtilsTest, ChildNamedIsTheFirstChildOfThatName) {
  EXPECT_EQ(named("<r><a>1</a><b>2</b><b>3</b></r>", "b"), "2");
  EXPECT_EQ(named("<r>text<!--b--><?p i?><b>2</b></r>", "b"), "2");
}

TEST(ZtUtilsTest, ChildNamedComparesNamesExactly) {
  EXPECT_EQ(named("<r><DefSOAP>1</DefSOAP></r>", "defSOAP"), nullptr);
  EXPECT_EQ(named("<r><defSOAPs>1</defSOAPs></r>", "defSOAP"), nullptr);
  EXPECT_EQ(named("<r><defSOA>1</defSOA></r>", "defSOAP"), nullptr);
  EXPECT_EQ(named("<r><defSOAP>1</defSOAP></r>", "def*"), nullptr);
}

TEST(ZtUtilsTest, ChildNamedTakesThePrefixForAPartOfTheName) {
  const char* text = "<r xmlns:n='urn:n'><n:a>1</n:a></r>";
  EXPECT_EQ(named(text, "a"), nullptr);
  EXPECT_EQ(named(text, "n:a"), "1");
}

TEST(ZtUtilsTest, ChildNamedLooksNoDeeperThanTheChildren) {
  EXPECT_EQ(named("<r><a><b>1</b></a></r>", "b"), nullptr);
  EXPECT_EQ(named("<r/>", "r"), nullptr);
}

TEST(ZtUtilsTest, ChildNamedNeverFindsWhatHasNoName) {
  EXPECT_EQ(named("<r>text<!--comment--></r>", nullptr), nullptr);
  EXPECT_EQ(named("<r>text<!--comment--></r>", ""), nullptr);
  EXPECT_EQ(named("<r>text</r>", "text"), nullptr);
}

TEST(ZtUtilsTest, ChildNamedOfADocumentFindsItsRoot) {
  const auto document = ZtXMLDocument::parse("<!--c--><r><a>1</a></r>");
  ASSERT_NE(document, nullptr);
  EXPECT_EQ(textOf(ZtUtils::childNamed(document->documentNode(), "r")), "1");
  EXPECT_EQ(textOf(ZtUtils::childNamed(document->documentNode(), "a")), nullptr);
}

// childNamedLike.

TEST(ZtUtilsTest, ChildNamedLikeMatchesTheLoweredName) {
  const char* answer =
      "<b xmlns:ns1='urn:n'><other>0</other>"
      "<ns1:postPoolDatasResponse>1</ns1:postPoolDatasResponse></b>";
  EXPECT_EQ(namedLike(answer, "*postpooldatasresponse*"), "1");
  EXPECT_EQ(namedLike(answer, "*PostPoolDatas*"), nullptr);
}

TEST(ZtUtilsTest, ChildNamedLikeIsTheFirstChildThatMatches) {
  EXPECT_EQ(namedLike("<r>text<!--a--><a1>1</a1><a2>2</a2></r>", "a?"), "1");
  EXPECT_EQ(namedLike("<r><a1>1</a1><A2>2</A2></r>", "*2"), "2");
}

TEST(ZtUtilsTest, ChildNamedLikeLooksNoDeeperThanTheChildren) {
  EXPECT_EQ(namedLike("<r><a><b>1</b></a></r>", "b*"), nullptr);
}

TEST(ZtUtilsTest, ChildNamedLikeNeverFindsWhatHasNoName) {
  EXPECT_EQ(namedLike("<r>text<!--comment--></r>", "*"), nullptr);
  EXPECT_EQ(namedLike("<r>text<!--comment--></r>", ""), nullptr);
}

TEST(ZtUtilsTest, ChildNamedLikeFindsNothingForAMissingPattern) {
  EXPECT_EQ(namedLike("<r><a>1</a></r>", nullptr), nullptr);
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
      // Any run, also an empty one.
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
      // A run that has to grow again.
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
    EXPECT_EQ(namedLike(text, row.pattern), row.matches ? ZtString("1") : ZtString())
        << row.name << " like " << row.pattern;
  }
}

// childrenAsStrings.

TEST(ZtUtilsTest, ChildrenAsStringsHasOneTextAChild) {
  EXPECT_THAT(ZtUtils::childrenAsStrings(rootOf("<r>one<a>two<b>three</b></a>four<c/></r>")),
              ElementsAre(ZtString("one"), ZtString("twothree"), ZtString("four"), ZtString("")));
}

TEST(ZtUtilsTest, ChildrenAsStringsOfAnEmptyNodeIsEmpty) {
  EXPECT_THAT(ZtUtils::childrenAsStrings(rootOf("<r/>")), IsEmpty());
}

TEST(ZtUtilsTest, ChildrenAsStringsHasTheTextsOfComments) {
  EXPECT_THAT(ZtUtils::childrenAsStrings(rootOf("<r><a>1</a><!--note--></r>")),
              ElementsAre(ZtString("1"), ZtString("note")));
}

// nodesContentAsDictionary.

TEST(ZtUtilsTest, NodesContentAsDictionaryGathersTheAttributesOfAllChildrenOfThatName) {
  EXPECT_THAT(
      ZtUtils::nodesContentAsDictionary(rootOf("<r><item a='1'/><item a='2' b='3'/></r>"), "item"),
      ElementsAre(Pair("a", ZtString("2")), Pair("b", ZtString("3"))));
}

TEST(ZtUtilsTest, NodesContentAsDictionaryLeavesOtherNodesOut) {
  EXPECT_THAT(ZtUtils::nodesContentAsDictionary(
                  rootOf("<r z='0'>text<Item a='1'/><other b='2'/><d><item c='3'/></d>"
                         "<item e='&amp;5' f=''/></r>"),
                  "item"),
              ElementsAre(Pair("e", ZtString("&5")), Pair("f", ZtString(""))));
}

TEST(ZtUtilsTest, NodesContentAsDictionaryIsEmptyWhenNothingMatches) {
  const char* text = "<r>text<item a='1'/><!--c--></r>";
  EXPECT_THAT(ZtUtils::nodesContentAsDictionary(rootOf(text), "items"), IsEmpty());
  EXPECT_THAT(ZtUtils::nodesContentAsDictionary(rootOf(text), nullptr), IsEmpty());
  EXPECT_THAT(ZtUtils::nodesContentAsDictionary(rootOf("<r><item/></r>"), "item"), IsEmpty());
}

}  // namespace
