// SPDX-License-Identifier: Apache-2.0
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
  for (const char* text : {"", ":", "127.0.0.1", "127.0.0.1:", "127.0.0.1:65536", "127.0.0.1:-1",
                           "127.0.0.1:+1", "127.0.0.1: 1", "127.0.0.1:1 "}) {
    EXPECT_FALSE(parseListenAddress(text)) << text;
  }
  for (const char* text :
       {"127.1:80", ":8025", "256.0.0.1:80", "::1:80", "[::1]", "[::1:80", "[]:80",
        "[127.0.0.1]:80", "example.org:80", "LOCALHOST:80", "http://127.0.0.1:80", "*:80"}) {
    EXPECT_FALSE(parseListenAddress(text)) << text;
  }
}

TEST(ListenAddressTest, KnowsTheWildcards) {
  EXPECT_TRUE(parseListenAddress("0.0.0.0:1")->isWildcard());
  EXPECT_TRUE(parseListenAddress("[::]:1")->isWildcard());
  EXPECT_FALSE(parseListenAddress("127.0.0.1:1")->isWildcard());
}

using zt::inbox::isOwnHost;
using zt::inbox::isOwnOrigin;
using zt::inbox::ListenAddress;

const ListenAddress kLoopback{"127.0.0.1", 8025};
const ListenAddress kNetwork{"192.0.2.7", 8025};

TEST(HostCheckTest, KnowsTheLoopbackAndTheListeningAddress) {
  for (const char* host : {"127.0.0.1:8025", "localhost:8025", "LocalHost:8025", "127.8.9.1:8025",
                           "[::1]:8025", "[0:0:0:0:0:0:0:1]:8025"}) {
    EXPECT_TRUE(isOwnHost(host, kLoopback)) << host;
    EXPECT_TRUE(isOwnHost(host, kNetwork)) << host;
    EXPECT_TRUE(isOwnOrigin(std::string("http://") + host, kLoopback)) << host;
  }
  EXPECT_TRUE(isOwnHost("192.0.2.7:8025", kNetwork));
  EXPECT_FALSE(isOwnHost("192.0.2.7:8025", kLoopback));
  EXPECT_TRUE(isOwnHost("[2001:db8::a]:8025", {"2001:db8::a", 8025}));
  EXPECT_TRUE(isOwnHost("[2001:DB8::A]:8025", {"2001:db8::a", 8025}));
}

TEST(HostCheckTest, APortMayBeLeftOutOnlyWhenItIsTheUsualOne) {
  EXPECT_TRUE(isOwnHost("localhost", {"127.0.0.1", 80}));
  EXPECT_TRUE(isOwnHost("[::1]", {"127.0.0.1", 80}));
  EXPECT_FALSE(isOwnHost("localhost", kLoopback));
  EXPECT_FALSE(isOwnHost("[::1]", kLoopback));
}

TEST(HostCheckTest, RefusesEverythingElse) {
  for (const char* host : {"", ":8025", "example.org", "example.org:8025", "127.0.0.1:8026",
                           "127.0.0.1:", "127.0.0.1.example.org:8025", "localhost.example.org:8025",
                           "x@localhost:8025", "localhost:8025@example.org", "127.1:8025",
                           "2130706433:8025", "0x7f.0.0.1:8025", "0.0.0.0:8025",
                           "[::ffff:127.0.0.1]:8025", "localhost :8025", "localhost:8025 "}) {
    EXPECT_FALSE(isOwnHost(host, kLoopback)) << host;
    EXPECT_FALSE(isOwnOrigin(std::string("http://") + host, kLoopback)) << host;
  }
}

TEST(HostCheckTest, AnOriginIsOfTheInboxOnlyWithItsScheme) {
  for (const char* origin : {"", "null", "127.0.0.1:8025", "https://127.0.0.1:8025", "file://",
                             "http://127.0.0.1:8025/", "http:/127.0.0.1:8025"}) {
    EXPECT_FALSE(isOwnOrigin(origin, kLoopback)) << origin;
  }
  EXPECT_TRUE(isOwnOrigin("HTTP://127.0.0.1:8025", kLoopback));
}

}  // namespace
