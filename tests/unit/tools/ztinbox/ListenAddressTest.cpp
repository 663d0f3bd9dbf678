#include <gtest/gtest.h>

#include <string>

#include "tools/ztinbox/http/ListenAddress.h"

namespace {

using zt::inbox::parseListenAddress;

TEST(ListenAddressTest, ReadsAddressesInNumbers) {
  const struct {
    const char* text;
    const char* written;
  } rows[] = {
      {"127.0.0.1:8025", "127.0.0.1:8025"},   {"0.0.0.0:0", "0.0.0.0:0"},
      {"192.0.2.7:65535", "192.0.2.7:65535"}, {"[::1]:80", "[::1]:80"},
      {"[0:0:0:0:0:0:0:1]:80", "[::1]:80"},   {"[::]:1", "[::]:1"},
      {"localhost:8025", "127.0.0.1:8025"},
  };
  for (const auto& row : rows) {
    const auto address = parseListenAddress(row.text);
    ASSERT_TRUE(address) << row.text;
    EXPECT_EQ(address->text(), row.written) << row.text;
  }
}

TEST(ListenAddressTest, ReadsNothingElse) {
  for (const char* text : {"",
                           ":",
                           "127.0.0.1",
                           "127.0.0.1:",
                           "127.0.0.1:65536",
                           "127.0.0.1:-1",
                           "127.0.0.1:+1",
                           "127.0.0.1: 1",
                           "127.0.0.1:1 ",
                           "127.1:80",
                           ":8025",
                           "256.0.0.1:80",
                           "::1:80",
                           "[::1]",
                           "[::1:80",
                           "[]:80",
                           "[127.0.0.1]:80",
                           "example.org:80",
                           "LOCALHOST:80",
                           "http://127.0.0.1:80",
                           "*:80"}) {
    EXPECT_FALSE(parseListenAddress(text)) << text;
  }
}

TEST(ListenAddressTest, KnowsTheWildcards) {
  EXPECT_TRUE(parseListenAddress("0.0.0.0:1")->isWildcard());
  EXPECT_TRUE(parseListenAddress("[::]:1")->isWildcard());
  EXPECT_FALSE(parseListenAddress("127.0.0.1:1")->isWildcard());
}

}  // namespace
