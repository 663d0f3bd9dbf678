// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <array>
#include <set>
#include <string>
#include <string_view>
#include <utility>

#include "tests/support/Inbox.h"

namespace {

using zt::test::Inbox;

constexpr int kOk = 200;
constexpr int kNotFound = 404;
constexpr int kNotAllowed = 405;

/// What follows `mark` up to the next quotation mark, at each place of `text`.
std::set<std::string> namesAfter(const std::string& mark, const std::string& text) {
  std::set<std::string> names;
  for (std::size_t at = text.find(mark); at != std::string::npos; at = text.find(mark, at)) {
    at += mark.size();
    names.insert(text.substr(at, text.find('"', at) - at));
  }
  return names;
}

TEST(PageTest, IsServedOutOfTheProgram) {
  const Inbox inbox;
  const auto client = inbox.newClient();
  const std::array<std::pair<const char*, const char*>, 5> rows{{
      {"/", "text/html; charset=utf-8"},
      {"/page/index.html", "text/html; charset=utf-8"},
      {"/page/base.css", "text/css; charset=utf-8"},
      {"/page/app.mjs", "text/javascript; charset=utf-8"},
      {"/page/icon.svg", "image/svg+xml"},
  }};
  for (const auto& [path, type] : rows) {
    const auto result = client.get(path).value();
    EXPECT_EQ(result.status, kOk) << path;
    EXPECT_EQ(result.header("Content-Type"), type) << path;
    EXPECT_EQ(result.header("Cache-Control"), "no-store") << path;
  }
}

TEST(PageTest, HasAllFilesThatItNames) {
  const Inbox inbox;
  const auto client = inbox.newClient();
  const std::string document = client.get("/")->body;
  std::set<std::string> left = namesAfter("\"/page/", document);
  EXPECT_EQ(left.count("app.mjs"), 1U);
  std::set<std::string> seen;
  while (!left.empty()) {
    const std::string name = left.extract(left.begin()).value();
    if (!seen.insert(name).second) continue;
    const auto result = client.get("/page/" + name).value();
    EXPECT_EQ(result.status, kOk) << name;
    left.merge(namesAfter("from \"./", result.body));
  }
  EXPECT_EQ(seen.count("rawText.mjs"), 1U);
}

TEST(PageTest, HasNoOtherFilesAndIsOnlyRead) {
  const Inbox inbox;
  const auto client = inbox.newClient();
  for (const char* path : {"/page/", "/page", "/page/nothing.mjs", "/page/../main.cpp",
                           "/page/%2e%2e/CMakeLists.txt", "/index.html"}) {
    EXPECT_EQ(client.get(path)->status, kNotFound) << path;
  }
  EXPECT_EQ(client.post("/")->status, kNotAllowed);
  EXPECT_EQ(client.remove("/page/app.mjs")->header("Allow"), "GET, HEAD");
}

}  // namespace
