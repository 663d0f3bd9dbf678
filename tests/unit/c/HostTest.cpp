// SPDX-License-Identifier: Apache-2.0
#include <string>
#include <vector>

#include "tests/unit/c/CTest.h"

namespace zt::test {
namespace {

using ::testing::AllOf;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::Not;
using Lines = std::vector<std::string>;

class CHostTest : public CTest {};

TEST_F(CHostTest, NamesItself) {
  const zt_pair pairs[] = {{"CFBundleName", "Wizard"}, {"CFBundleVersion", nullptr}};
  EXPECT_EQ(zt_host_set_info(pairs, 2), ZT_OK);
  EXPECT_EQ(ZtHost::bundleInfo("CFBundleName"), "Wizard");
  EXPECT_TRUE(ZtHost::bundleInfo("CFBundleVersion").isNull());
  EXPECT_TRUE(ZtHost::bundleInfo("CFBundleShortVersionString").isNull());
  EXPECT_EQ(zt_host_set_info(nullptr, 0), ZT_OK);
  EXPECT_EQ(ZtHost::bundleInfo("CFBundleName"), "ztportal_unit_test");
}

TEST_F(CHostTest, KeepsTheConsent) {
  zt_consent consent = -1;
  for (const zt_consent given : {ZT_CONSENT_GIVEN, ZT_CONSENT_REVOKED, ZT_CONSENT_UNSET}) {
    EXPECT_EQ(zt_host_set_consent(given), ZT_OK);
    EXPECT_EQ(zt_host_consent(&consent), ZT_OK);
    EXPECT_EQ(consent, given);
  }
  for (const zt_consent wrong : {-1, 3, INT32_MIN}) {
    EXPECT_EQ(zt_host_set_consent(wrong), ZT_BAD_ARGUMENT);
  }
  platform.supportFolder_.folder = "";
  EXPECT_EQ(zt_host_set_consent(ZT_CONSENT_GIVEN), ZT_SYSTEM);
  platform.supportFolder_.folder = "/home/user/.local/share";
}

TEST_F(CHostTest, ARevokedConsentIsAStatusOfItsOwn) {
  const Report own = makeFilledReport();
  ASSERT_EQ(zt_host_set_consent(ZT_CONSENT_REVOKED), ZT_OK);
  EXPECT_EQ(zt_report_send(own.get()), ZT_NOT_ACCEPTED);
  EXPECT_EQ(deliveryOf(own).outcome, ZT_OUTCOME_NO_CONSENT);
  EXPECT_EQ(zt_report_save(own.get(), nullptr), ZT_NOT_ACCEPTED);
  EXPECT_EQ(zt_report_save(own.get(), "/report.xml"), ZT_NOT_ACCEPTED);
  EXPECT_STREQ(zt_last_error(), "the user has revoked the consent");
  EXPECT_FALSE(platform.files_.exists("/report.xml"));
}

TEST_F(CHostTest, GetsTheLog) {
  Lines lines;
  const auto handler = [](void* user, zt_log_level level, const char* module, const char* message) {
    static_cast<Lines*>(user)->push_back(std::to_string(level) + " " + module + ": " + message);
  };
  EXPECT_EQ(zt_host_set_log_handler(handler, &lines), ZT_OK);
  const Report own = makeFilledReport();
  EXPECT_EQ(zt_report_save(own.get(), nullptr), ZT_OK);
  EXPECT_THAT(lines, Contains("1 store: saved in " + valueOf(own, "file")));
  EXPECT_EQ(zt_host_set_log_handler(nullptr, nullptr), ZT_OK);
  lines.clear();
  EXPECT_EQ(zt_report_save(own.get(), nullptr), ZT_OK);
  EXPECT_THAT(lines, ElementsAre());
}

TEST_F(CHostTest, DecidesAboutEachValue) {
  const auto filter = [](void* user, const char* type, const char* name, const char* value,
                         std::size_t length, zt_replacement* replacement) -> zt_decision {
    static_cast<Lines*>(user)->push_back(std::string(type) + " " + name + "=" +
                                         std::string(value, length));
    if (std::string(name) == "START_POINT") {
      EXPECT_EQ(zt_replacement_set_n(replacement, nullptr, 1), ZT_BAD_ARGUMENT);
      EXPECT_EQ(zt_replacement_set_n(replacement, "a\0b", 3), ZT_OK);
      return ZT_REPLACE;
    }
    if (std::string(name) == "END_RESULTCODE") return ZT_REPLACE;
    if (std::string(name) == "END_RESULTSTRING") return ZT_DROP;
    return std::string(name) == "MachineID" ? 77 : ZT_KEEP;
  };
  Lines seen;
  const Report own = makeReport(ZT_OFFLINE);
  zt_pool* const pool = addPool(own, "execution");
  EXPECT_EQ(zt_pool_set_string_n(pool, "startPoint", "x\0y", 3), ZT_OK);
  EXPECT_EQ(zt_pool_set_string(pool, "endResultCode", "secret"), ZT_OK);
  EXPECT_EQ(zt_host_set_value_filter(filter, &seen), ZT_OK);
  const std::string text = rendered(own);
  EXPECT_THAT(seen, AllOf(Contains(std::string("EXECUTION START_POINT=x\0y", 25)),
                          Contains(" CustomerID=Kelvane"), Contains("EXECUTION SUCCESSFULL=TRUE")));
  EXPECT_THAT(text, AllOf(HasSubstr(std::string("<Value>a\0b</Value>", 18)),
                          HasSubstr("<MachineID></MachineID>"), Not(HasSubstr("secret")),
                          Not(HasSubstr("END_RESULTSTRING"))));
  EXPECT_EQ(zt_host_set_value_filter(nullptr, nullptr), ZT_OK);
  EXPECT_THAT(rendered(own), HasSubstr("secret"));
}

TEST_F(CHostTest, DecidesAboutEachRequest) {
  const auto hook = [](void* user, const char* request, std::size_t length,
                       zt_replacement* replacement) {
    EXPECT_EQ(std::string(request).size(), length);
    const zt_decision decision = *static_cast<zt_decision*>(user);
    if (decision == ZT_REPLACE) zt_replacement_set_n(replacement, "<new/>", 6);
    return decision;
  };
  zt_decision decision = ZT_REPLACE;
  EXPECT_EQ(zt_host_set_request_hook(hook, &decision), ZT_OK);
  const Report own = makeFilledReport();
  EXPECT_EQ(zt_report_send(own.get()), ZT_OK);
  EXPECT_EQ(platform.http_.asked.back().body, "<new/>");
  EXPECT_EQ(zt_report_save(own.get(), "/report.xml"), ZT_OK);
  EXPECT_EQ(platform.files_.read("/report.xml", 100), "<new/>");
  decision = ZT_DROP;
  EXPECT_EQ(zt_report_send(own.get()), ZT_NOT_ACCEPTED);
  EXPECT_EQ(deliveryOf(own).outcome, ZT_OUTCOME_DROPPED);
  EXPECT_EQ(zt_report_save(own.get(), nullptr), ZT_NOT_ACCEPTED);
  EXPECT_EQ(zt_report_save(own.get(), "/report.xml"), ZT_NOT_ACCEPTED);
  EXPECT_STREQ(zt_last_error(), "the host's hook dropped the report");
}

TEST_F(CHostTest, SwitchesEscapingAndTheBroadcast) {
  const Report own = makeReport();
  EXPECT_EQ(zt_pool_set_string(addPool(own, "generic"), "poolType", "<&"), ZT_OK);
  EXPECT_THAT(rendered(own), HasSubstr("Pool=\"<&\""));
  EXPECT_EQ(zt_host_set_value_escaping(true), ZT_OK);
  EXPECT_THAT(rendered(own), HasSubstr("Pool=\"&lt;&amp;\""));
  EXPECT_EQ(zt_host_set_broadcast_enabled(false), ZT_OK);
  forget();
  EXPECT_EQ(zt_report_send(own.get()), ZT_OK);
  EXPECT_THAT(steps, Not(Contains(kBroadcast)));
  EXPECT_EQ(zt_host_close_connections(), ZT_OK);
}

// How requests travel.

TEST_F(CHostTest, ReadsEveryOptionOfTheTransport) {
  const zt_pair headers[] = {{"Authorization", "Bearer x"}, {"X-Empty", ""}};
  zt_transport_options options{};
  options.size = sizeof(options);
  options.client_key_password = "secret";
  options.minimum_tls_version = ZT_TLS_1_3;
  options.proxy = "http://proxy.test:3128";
  options.no_proxy = "a.test";
  options.timeout_ms = ZT_NO_LIMIT;
  options.connect_timeout_ms = 30;
  options.idle_timeout_ms = 2000;
  options.headers = headers;
  options.header_count = 2;
  options.compress_requests = true;
  EXPECT_EQ(zt_host_set_transport(&options), ZT_OK) << zt_last_error();
  const ZtTransportOptions set = ZtHost::transportOptions();
  EXPECT_EQ(set.clientKeyPassword, "secret");
  EXPECT_EQ(set.minimumTlsVersion, ZtTlsVersion::Tls13);
  EXPECT_EQ(set.proxy, "http://proxy.test:3128");
  EXPECT_EQ(set.noProxy, "a.test");
  EXPECT_EQ(set.timeout.count(), 0);
  EXPECT_EQ(set.connectTimeout.count(), 30);
  EXPECT_EQ(set.idleTimeout.count(), 2000);
  EXPECT_EQ(set.headers, (decltype(set.headers){{"Authorization", "Bearer x"}, {"X-Empty", ""}}));
  EXPECT_TRUE(set.compressRequests);
  EXPECT_FALSE(set.transport);

  EXPECT_EQ(zt_host_set_transport(nullptr), ZT_OK);
  EXPECT_EQ(ZtHost::transportOptions().timeout.count(), 2000);
  EXPECT_FALSE(ZtHost::transportOptions().proxy);
}

TEST_F(CHostTest, NamesTheWrongOptionOfTheTransport) {
  const zt_pair noValue{"X", nullptr};
  const zt_pair reserved{"Host", "x"};
  const struct {
    void (*spoil)(zt_transport_options& options, const zt_pair* pair);
    const zt_pair* pair;
    const char* error;
  } rows[] = {
      {[](auto& o, auto*) { o.minimum_tls_version = 3; }, nullptr, "minimum_tls_version: no such"},
      {[](auto& o, auto*) { o.minimum_tls_version = -1; }, nullptr, "minimum_tls_version: no such"},
      {[](auto& o, auto*) { o.timeout_ms = -2; }, nullptr, "timeout_ms is negative"},
      {[](auto& o, auto*) { o.connect_timeout_ms = -2; }, nullptr, "connect_timeout_ms is neg"},
      {[](auto& o, auto*) { o.idle_timeout_ms = INT64_MIN; }, nullptr, "idle_timeout_ms is neg"},
      {[](auto& o, auto*) { o.timeout_ms = ZT_NO_LIMIT; }, nullptr, "timeout: without a limit"},
      {[](auto& o, auto*) { o.header_count = 1; }, nullptr, "headers is NULL"},
      {[](auto& o, auto* pair) { o.headers = pair; }, &noValue, "headers: a value is NULL"},
      {[](auto& o, auto* pair) { o.headers = pair; }, &reserved, "headers: Host is set by"},
      {[](auto& o, auto*) { o.proxy = "ftp://x"; }, nullptr, "proxy: "},
      {[](auto& o, auto*) { o.authority_file = "/none"; }, nullptr, "authorityFile: /none"},
      {[](auto& o, auto*) { o.authority_folder = "/none"; }, nullptr, "authorityFolder: /none"},
      {[](auto& o, auto*) { o.client_certificate = "/none"; }, nullptr, "clientCertificate: "},
      {[](auto& o, auto*) { o.client_key = "/none"; }, nullptr, "clientKey: "},
  };
  const Report own = makeReport(ZT_OFFLINE);
  for (const auto& row : rows) {
    zt_transport_options options{};
    options.size = sizeof(options);
    options.header_count = row.pair != nullptr ? 1 : 0;
    row.spoil(options, row.pair);
    EXPECT_EQ(zt_host_set_transport(&options), ZT_BAD_ARGUMENT);
    EXPECT_THAT(zt_last_error(), ::testing::StartsWith(row.error));
    EXPECT_EQ(zt_report_set_transport(own.get(), &options), ZT_BAD_ARGUMENT);
  }
}

}  // namespace
}  // namespace zt::test
