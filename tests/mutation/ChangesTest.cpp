#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "tests/mutation/Changes.h"

namespace {

using zt::mutation::Change;
using zt::mutation::changesOf;
using zt::mutation::linesOf;
using Texts = std::vector<std::string>;

/// What the changes make of a source.
Texts changedTexts(const std::string& source) {
  Texts texts;
  for (const Change& change : changesOf(source)) texts.push_back(changed(source, change));
  return texts;
}

TEST(MutationChangesTest, TurnsOperatorsAround) {
  const struct {
    std::string before;
    Texts after;
  } rows[] = {
      {"a == b", {"a != b"}}, {"a < b", {"a <= b", "a >= b"}},
      {"a >= b", {"a > b"}},  {"a + b", {"a - b"}},
      {"a && b", {"a || b"}}, {"a ||\n b", {"a &&\n b"}},
      {"a += b", {"a -= b"}}, {"!a", {"a"}},
      {"++a", {"--a"}},       {"return true", {"return false"}},
  };
  for (const auto& row : rows) EXPECT_EQ(changedTexts(row.before), row.after);
}

TEST(MutationChangesTest, LeavesAloneWhatOnlyLooksLikeAnOperator) {
  for (const char* source :
       {"std::vector<int> a", "template <class A> b", "int* const a", "const int& a", "auto&& a",
        "a->b", "std::vector<std::vector<int>> a", "operator==(a)", "trueish"}) {
    EXPECT_EQ(changedTexts(source), Texts()) << source;
  }
}

TEST(MutationChangesTest, LeavesCommentsAndDirectivesAlone) {
  for (const char* source : {"// a == 1\n", "/* true \n 2 */", "#include \"a.h\"\n",
                             "#define A \\\n  1 + 2\n", "  #if 1\n", "// it's\n"}) {
    EXPECT_EQ(changedTexts(source), Texts()) << source;
  }
}

TEST(MutationChangesTest, ChangesConstants) {
  EXPECT_EQ(changedTexts("0"), (Texts{"1"}));
  EXPECT_EQ(changedTexts("41U"), (Texts{"42U", "40U"}));
  EXPECT_EQ(changedTexts("0xC0U"), (Texts{"193U", "191U"}));
  EXPECT_EQ(changedTexts("1.5"), Texts());
  EXPECT_EQ(changedTexts("a1"), Texts());
}

TEST(MutationChangesTest, ChangesTexts) {
  EXPECT_EQ(changedTexts(R"("")"), (Texts{R"("X")"}));
  EXPECT_EQ(changedTexts(R"("a // \" b")"), (Texts{R"("")", R"("a // \" c")"}));
  EXPECT_EQ(changedTexts(R"("</A9F}\r\n")"), (Texts{R"("")", R"("</A9E}\r\n")"}));
  EXPECT_EQ(changedTexts(R"("{19}")"), (Texts{R"("")", R"("{18}")"}));
  EXPECT_EQ(changedTexts(R"("\r\n")"), (Texts{R"("")", R"("X\n")"}));
  EXPECT_EQ(changedTexts(R"('"')"), (Texts{"'X'"}));
  EXPECT_EQ(changedTexts(R"('\'')"), (Texts{"'X'"}));
}

TEST(MutationChangesTest, DropsStatementsOfBlocks) {
  EXPECT_EQ(changedTexts("void f() { a(); b({c}); }"),
            (Texts{"void f() { ; b({c}); }", "void f() { a(); ; }"}));
  EXPECT_EQ(changedTexts("void f() { if (a) b(); }"), (Texts{"void f() { ; }"}));
  EXPECT_EQ(changedTexts("void f() { if (a) { b(); } }"), (Texts{"void f() { if (a) { ; } }"}));
  EXPECT_EQ(changedTexts("void f() { a(b,\n c); }"), (Texts{"void f() { ;\n }"}));
  EXPECT_EQ(changedTexts("void f() { a([] { b(); }); }"),
            (Texts{"void f() { ; }", "void f() { a([] { ; }); }"}));
}

TEST(MutationChangesTest, DropsNothingThatOthersNeed) {
  for (const char* source :
       {"struct A { int b; };", "namespace a { int b; }", "void f() { const int a = b; }",
        "void f() { for (;;) { } }", "int a{b};", "void f() { using a::b; }"}) {
    EXPECT_EQ(changedTexts(source), Texts()) << source;
  }
}

TEST(MutationChangesTest, TellsTheLinesThatAreTouched) {
  const std::string source = "a;\n  b(x,\n    y) == c;\nd;\n";
  const auto [line, before, after] = linesOf(source, changesOf(source).at(0));
  EXPECT_EQ(line, 3U);
  EXPECT_EQ(before, "y) == c;");
  EXPECT_EQ(after, "y) != c;");

  const auto [first, lines, rest] = linesOf(source, {5, 15, ";\n"});
  EXPECT_EQ(first, 2U);
  EXPECT_EQ(lines, "b(x, y) == c;");
  EXPECT_EQ(rest, "; c;");
}

}  // namespace
