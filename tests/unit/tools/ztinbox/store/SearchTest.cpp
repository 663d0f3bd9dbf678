// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <string>

#include "tests/support/TemporaryFolder.h"
#include "tools/ztinbox/store/Search.h"
#include "tools/ztinbox/store/sqlite/Database.h"
#include "tools/ztinbox/store/sqlite/SearchIndexer.h"

namespace {

using std::string_view_literals::operator""sv;
using zt::inbox::searchExpression;

TEST(SearchTest, WritesWhatWasTypedAsAnExpression) {
  const struct {
    const char* typed;
    const char* expression;
  } rows[] = {
      {"", ""},
      {"  \t ", ""},
      {"copy", R"("copy" *)"},
      {"ab", R"("ab")"},
      {" copy  fail ", R"("copy" * AND "fail" *)"},
      {R"(copy fail "disk full")", R"("copy" * AND "fail" * AND "disk full")"},
      {R"("disk full)", R"("disk full")"},
      {R"(a"b"c)", R"("a" AND "b" AND "c")"},
      {R"("")", ""},
      {"END_RESULTCODE", R"("END_RESULTCODE" *)"},
      {"- copy * ( )", R"("copy" *)"},
      {"NEAR(a b) OR NOT x*", "\"NEAR(a\" * AND \"b)\" AND \"OR\" AND \"NOT\" * AND \"x*\""},
      {"größe", R"("größe" *)"},
  };
  for (const auto& row : rows) EXPECT_EQ(searchExpression(row.typed), row.expression) << row.typed;
}

TEST(SearchTest, WhateverIsTypedIsWellFormed) {
  const zt::test::TemporaryFolder folder;
  zt::inbox::Database database(folder.path("words.db"), zt::inbox::Database::Access::kWrite);
  database.run("CREATE VIRTUAL TABLE search USING fts5(text)");
  zt::inbox::Statement select(database, "SELECT 1 FROM search WHERE search MATCH ?");
  std::string typed;
  unsigned seed = 1;
  for (int i = 0; i < 20'000; ++i) {
    typed.clear();
    for (int length = i % 12; length > 0; --length) {
      seed = seed * 1'664'525U + 1'013'904'223U;
      constexpr std::string_view kCharacters = "\"\" ()*+-:^{}'aANDORT\0\xff\xc3"sv;
      typed += kCharacters[(seed >> 16U) % kCharacters.size()];
    }
    const std::string expression = searchExpression(typed);
    if (expression.empty()) continue;
    EXPECT_NO_THROW(select.run(expression)) << typed;
  }
}

}  // namespace
