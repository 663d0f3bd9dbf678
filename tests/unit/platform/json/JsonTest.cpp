// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <string>
#include <string_view>

#include "tests/support/JsonFault.h"
#include "ztportal/platform/json/Json.h"

namespace zt::test {
namespace {

std::string faultIn(const std::string& text) {
  return faultOf([&] { parseJson(text); });
}

std::string nested(std::size_t levels) {
  return std::string(levels, '[') + std::string(levels, ']');
}

TEST(JsonTest, EscapesPointers) {
  const struct {
    const char* token;
    const char* pointer;
  } rows[] = {
      {"name", "/pools/name"}, {"", "/pools/"},      {"a/b", "/pools/a~1b"},
      {"a~b", "/pools/a~0b"},  {"~1", "/pools/~01"}, {"/~", "/pools/~1~0"},
      {"ä b", "/pools/ä b"},
  };
  for (const auto& row : rows) EXPECT_EQ(childPointer("/pools", row.token), row.pointer);
  EXPECT_EQ(childPointer("", "0"), "/0");
}

TEST(JsonTest, ReadsWhatIsJson) {
  EXPECT_EQ(parseJson(R"( {"a": [1, -2, 2.5, true, null, "ä\u00e4"], "b": {"a": 1}} )").text(),
            R"({"a":[1,-2,2.5,true,null,"ää"],"b":{"a":1}})");
  EXPECT_EQ(parseJson("[18446744073709551615,-9223372036854775808]").text(),
            "[18446744073709551615,-9223372036854775808]");
  EXPECT_EQ(parseJson("7").text(), "7");
}

TEST(JsonTest, SortsTheMembersOfParsedObjectsOnly) {
  EXPECT_EQ(parseJson(R"({"b": 1, "a": {"d": 2, "c": 3}})").text(), R"({"a":{"c":3,"d":2},"b":1})");
  Json built{{"b", 1}, {"a", nullptr}};
  built["c"] = Json::array({-1, 2.5, true, "x"});
  built["b"] = 7;
  EXPECT_EQ(built.text(), R"({"b":7,"a":null,"c":[-1,2.5,true,"x"]})");
  built.sortMembers();
  EXPECT_EQ(built.text(2),
            "{\n  \"a\": null,\n  \"b\": 7,\n  \"c\": [\n    -1,\n    2.5,\n    true,\n"
            "    \"x\"\n  ]\n}");
}

TEST(JsonTest, WritesBytesThatAreNotUtf8AsReplacementCharacters) {
  EXPECT_EQ(Json("a\xff\x01").text(), "\"a\xef\xbf\xbd\\u0001\"");
  EXPECT_EQ(Json("\xc3\xa4\"").asciiText(), R"("\u00e4\"")");
}

TEST(JsonTest, NamesLineAndColumnOfAWrongLetter) {
  const struct {
    std::string text;
    const char* fault;
  } rows[] = {
      {"", "line 1, column 1: no JSON (unexpected end of input; expected '[', '{', or a literal)"},
      {"  \n ",
       "line 2, column 2: no JSON (unexpected end of input; expected '[', '{', or a literal)"},
      {"{", "line 1, column 2: no JSON (unexpected end of input; expected string literal)"},
      {"{\n  \"a\": x\n}", "line 2, column 8: no JSON (invalid literal; last read: '\"a\": x')"},
      {"[1,\n2,\n]", "line 3, column 1: no JSON (unexpected ']'; expected '[', '{', or a literal)"},
      {"[1] 2", "line 1, column 5: no JSON (unexpected number literal; expected end of input)"},
      {"[1]\n]", "line 2, column 1: no JSON (unexpected ']'; expected end of input)"},
      {"[1] // done",
       "line 1, column 5: no JSON (invalid literal; last read: '1] /'; "
       "expected end of input)"},
  };
  for (const auto& row : rows) EXPECT_EQ(faultIn(row.text), row.fault) << row.text;
}

TEST(JsonTest, RefusesTextThatIsNotUtf8) {
  const std::string_view texts[] = {"[\"\xff\"]", "[\"\xc0\xaf\"]", "[\"\xed\xa0\x80\"]",
                                    "[\"\xe4\"]", "[\"\xf4\x90\x80\x80\"]"};
  for (const std::string_view text : texts) {
    EXPECT_NE(faultIn(std::string(text)).find("ill-formed UTF-8 byte"), std::string::npos)
        << faultIn(std::string(text));
  }
}

TEST(JsonTest, RefusesANameThatStandsTwice) {
  const struct {
    const char* text;
    const char* fault;
  } rows[] = {
      {R"({"a": 1, "a": 1})", "/a: stands twice in its object"},
      {R"({"a": 1, "\u0061": 1})", "/a: stands twice in its object"},
      {R"({"pools": [{}, {"fields": [0, 1, {"x/y~z": 1, "b": 2, "x/y~z": 3}]}]})",
       "/pools/1/fields/2/x~1y~0z: stands twice in its object"},
      {R"([[1, [2]], {"a": {"b": []}, "a": 0}])", "/1/a: stands twice in its object"},
      {R"({"a": {"a": {"a": 1}}, "b": {"a": 1}})", "no fault"},
  };
  for (const auto& row : rows) EXPECT_EQ(faultIn(row.text), row.fault) << row.text;
  EXPECT_EQ(parseJson(R"({"a": 1, "b": 2, "a": 3})", zt::JsonDuplicates::LastCounts).text(),
            R"({"a":3,"b":2})");
}

TEST(JsonTest, NamesANumberBeyondEveryRange) {
  const struct {
    const char* text;
    const char* fault;
  } rows[] = {
      {"1e400", "1e400 is out of range"},
      {"[0, -1e400]", "/1: -1e400 is out of range"},
      {R"({"a": [{}, [], {"b/c": 1e400}]})", "/a/2/b~1c: 1e400 is out of range"},
      {R"({"a": [1e-400]})", "no fault"},
  };
  for (const auto& row : rows) EXPECT_EQ(faultIn(row.text), row.fault) << row.text;
}

TEST(JsonTest, RefusesNestingBeyondAThousandLevels) {
  EXPECT_EQ(faultIn(nested(1000)), "no fault");
  std::string deepest;
  for (int i = 0; i < 1000; ++i) deepest += "/0";
  EXPECT_EQ(faultIn(nested(1001)), deepest + ": nested deeper than 1000 levels");
  EXPECT_EQ(faultIn(std::string(1'000'000, '[')), deepest + ": nested deeper than 1000 levels");
}

}  // namespace
}  // namespace zt::test
