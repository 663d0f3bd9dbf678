// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include "tools/ztinbox/http/HttpServer.h"

namespace {

TEST(HttpServerTest, TakesTheHostOutOfATarget) {
  const struct {
    const char* target;
    const char* decoded;
    const char* path;
    const char* authority;
  } rows[] = {
      {"/soap", "/soap", "/soap", ""},
      {"/%61pi", "/api", "/api", ""},
      {"http://a.example/soap", "http://a.example/soap", "/soap", "a.example"},
      {"http://a.example:80/%73oap?x=1", "http://a.example:80/soap", "/soap", "a.example:80"},
      {"HTTP://a.example/", "HTTP://a.example/", "/", "a.example"},
      {"http://a.example", "http://a.example", "/", "a.example"},
      {"http://a.example?x=/soap", "http://a.example", "/", "a.example"},
      {"http:///api/v1/reports", "http:///api/v1/reports", "/api/v1/reports", ""},
      {"http://a%2fapi/x", "http://a/api/x", "http://a/api/x", "a%2fapi"},
      {"https://a.example/soap", "https://a.example/soap", "https://a.example/soap", ""},
      {"soap", "soap", "soap", ""},
      {"", "", "", ""},
  };
  for (const auto& row : rows) {
    const auto target = zt::inbox::readTarget(row.target, row.decoded);
    EXPECT_EQ(target.path, row.path) << row.target;
    EXPECT_EQ(target.authority, row.authority) << row.target;
  }
}

}  // namespace
