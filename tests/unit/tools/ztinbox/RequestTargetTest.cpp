// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <map>
#include <string>

#include "tools/ztinbox/http/RequestTarget.h"

namespace {

using zt::inbox::readTarget;

TEST(RequestTargetTest, FindsHostAndPath) {
  const struct {
    const char* target;
    const char* path;
    const char* authority;
  } rows[] = {
      {"/soap", "/soap", ""},
      {"/%61pi", "/api", ""},
      {"/a+b%2Bc%zz%u0061%4", "/a+b+c%zz%u0061%4", ""},
      {"http://a.example/soap", "/soap", "a.example"},
      {"http://a.example:80/%73oap?x=1", "/soap", "a.example:80"},
      {"HTTP://a.example/", "/", "a.example"},
      {"http://a.example", "/", "a.example"},
      {"http://a.example?x=/soap", "/", "a.example"},
      {"http:///api/v1/reports", "/api/v1/reports", ""},
      {"http://a%2fapi/x", "/x", "a%2fapi"},
      {"https://a.example/soap", "https://a.example/soap", ""},
      {"/soap#/api", "/soap", ""},
      {"soap", "soap", ""},
      {"", "", ""},
  };
  for (const auto& row : rows) {
    const auto target = readTarget(row.target);
    EXPECT_EQ(target.path, row.path) << row.target;
    EXPECT_EQ(target.authority, row.authority) << row.target;
  }
}

TEST(RequestTargetTest, FindsParameters) {
  using Parameters = std::multimap<std::string, std::string>;
  const struct {
    const char* target;
    Parameters parameters;
  } rows[] = {
      {"/", {}},
      {"/?", {}},
      {"/?a=b", {{"a", "b"}}},
      {"http://x?a=b", {{"a", "b"}}},
      {"/?a=b=c&a=&d&&=e", {{"a", "b=c"}, {"a", ""}, {"d", ""}}},
      {"/?%61+b=c+%26%3d#e=f", {{"a b", "c &="}}},
      {"/?a=?", {{"a", "?"}}},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(readTarget(row.target).parameters, row.parameters) << row.target;
  }
}

}  // namespace
