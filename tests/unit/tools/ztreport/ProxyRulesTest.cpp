// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <map>
#include <string>

#include "tests/integration/ztreport/ReportProgram.h"
#include "tests/support/Inbox.h"
#include "tools/ztreport/network/ProxyRules.h"

// The choice of the proxy. The rules are libcurl's, so the library is tested with the same table.

namespace zt::tools {
namespace {

struct Row {
  const char* host;
  const char* noProxy;
  bool isNamed;
};

/// Hosts that can be reached only through a proxy.
constexpr Row kRows[] = {
    {"a.nowhere.invalid", "*", true},
    {"a.nowhere.invalid", "*,b", false},
    {"a.nowhere.invalid", "a.nowhere.invalid", true},
    {"a.nowhere.invalid", "A.Nowhere.INVALID", true},
    {"a.nowhere.invalid", "nowhere.invalid", true},
    {"a.nowhere.invalid", ".nowhere.invalid", true},
    {"a.nowhere.invalid", ".a.nowhere.invalid", true},
    {"a.nowhere.invalid", "nowhere.invalid.", true},
    {"a.nowhere.invalid.", "nowhere.invalid", true},
    {"a.nowhere.invalid", "owhere.invalid", false},
    {"a.nowhere.invalid", "b.nowhere.invalid", false},
    {"a.nowhere.invalid", "b.a.nowhere.invalid", false},
    {"a.nowhere.invalid", "*.nowhere.invalid", false},
    {"a.nowhere.invalid", "b, nowhere.invalid", true},
    {"a.nowhere.invalid", "b,,nowhere.invalid,c", true},
    {"a.nowhere.invalid", " b\tnowhere.invalid c", true},
    {"a.nowhere.invalid", "10.0.0.0/8", false},
    {"240.0.0.1", "240.0.0.1", true},
    {"240.0.0.1", "240.0.0.2", false},
    {"240.0.0.1", "0.0.1", false},
    {"240.0.0.1", "240.0.0.0/24", true},
    {"240.0.0.1", "240.0.0.128/25", false},
    {"240.0.0.1", "240.0.0.0/31", true},
    {"240.0.0.1", "240.0.0.0/0", false},
    {"240.0.0.1", "240.0.0.0/33", false},
};

TEST(ProxyRulesTest, NoProxyNamesHostsDomainsAndNetworks) {
  for (const Row& row : kRows) {
    EXPECT_EQ(isNamedIn(row.noProxy, row.host), row.isNamed) << row.host << " " << row.noProxy;
  }
  EXPECT_TRUE(isNamedIn("2001:db8::/32", "2001:db8::1"));
  EXPECT_FALSE(isNamedIn("2001:db9::/32", "2001:db8::1"));
  EXPECT_TRUE(isNamedIn("2001:db8:0::1", "2001:db8::1"));
}

/// What is not named goes through the proxy, which has a configuration for every host; what is
/// named goes nowhere.
TEST(ProxyRulesTest, TheLibraryReadsNoProxyInTheSameWay) {
  const zt::test::Inbox inbox;
  for (const Row& row : kRows) {
    zt::test::ReportProgram program;
    program.setVariable("http_proxy=" + inbox.url());
    program.setVariable(std::string("no_proxy=") + row.noProxy);
    const auto result = program.run(
        {"doctor", "--config-url", "http://" + std::string(row.host) + "/reporting/kelvane.xml"});
    const bool isRead =
        result.output.find("ok       configuration      read\n") != std::string::npos;
    EXPECT_EQ(isRead, !row.isNamed) << row.host << " " << row.noProxy;
  }
}

TEST(ProxyRulesTest, TheFirstVariableThatIsSetDecides) {
  using Environment = std::map<std::string, std::string>;
  const struct {
    const char* scheme;
    Environment environment;
    const char* url;
    const char* variable;
  } rows[] = {
      {"http", {}, "", ""},
      {"http", {{"http_proxy", "a"}, {"all_proxy", "b"}}, "a", "http_proxy"},
      {"http", {{"http_proxy", ""}, {"all_proxy", "b"}}, "b", "all_proxy"},
      {"http", {{"HTTP_PROXY", "a"}}, "", ""},
      {"http", {{"HTTP_PROXY", "a"}, {"ALL_PROXY", "b"}}, "b", "ALL_PROXY"},
      {"http", {{"https_proxy", "a"}, {"HTTPS_PROXY", "b"}}, "", ""},
      {"https", {{"http_proxy", "a"}}, "", ""},
      {"https", {{"https_proxy", "a"}, {"HTTPS_PROXY", "b"}}, "a", "https_proxy"},
      {"https", {{"HTTPS_PROXY", "b"}, {"all_proxy", "c"}}, "b", "HTTPS_PROXY"},
      {"https", {{"all_proxy", "c"}, {"ALL_PROXY", "d"}}, "c", "all_proxy"},
      {"http", {{"http_proxy", "a"}, {"no_proxy", "host"}}, "", "no_proxy"},
      {"http", {{"http_proxy", "a"}, {"NO_PROXY", "host"}}, "", "NO_PROXY"},
      {"http", {{"http_proxy", "a"}, {"no_proxy", "x"}, {"NO_PROXY", "host"}}, "a", "http_proxy"},
      {"http", {{"http_proxy", "a"}, {"no_proxy", ""}, {"NO_PROXY", "host"}}, "", "NO_PROXY"},
  };
  for (const auto& row : rows) {
    const ProxyChoice choice = proxyFor(row.scheme, "host", [&row](const char* name) {
      const auto found = row.environment.find(name);
      return found == row.environment.end() ? nullptr : found->second.c_str();
    });
    const std::string shown = testing::PrintToString(row.environment);
    EXPECT_EQ(choice.url, row.url) << row.scheme << shown;
    EXPECT_EQ(choice.variable, row.variable) << row.scheme << shown;
  }
}

}  // namespace
}  // namespace zt::tools
