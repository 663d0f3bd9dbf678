// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <string>

#include "TestPaths.h"
#include "tests/support/Inbox.h"
#include "tests/support/LoopbackClient.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/unit/tools/ztinbox/SampleReport.h"
#include "tools/ztinbox/soap/SoapMessages.h"
#include "ztportal/Version.h"

namespace zt::test {
namespace {

using zt::inbox::reportAnswer;

std::string configurationOf(const std::string& url) {
  return "<configuration><defSOAP>" + url + "/soap</defSOAP><defTestSOAP>" + url +
         "/soap-test</defTestSOAP></configuration>";
}

/// The address that an inbox prints when it starts; empty if it prints none.
std::string printedUrl(Subprocess& inbox) {
  const std::string line = inbox.waitForLines(1);
  return line.empty() ? "" : line.substr(line.find("http"), line.rfind('\n') - line.find("http"));
}

TEST(InboxTest, TheConfigurationPointsAtTheInbox) {
  const Inbox inbox;
  auto client = inbox.newClient();
  for (const char* path : {"/reporting/kelvane.xml", "/reporting/a/b.xml", "/reporting/%2e.xml"}) {
    const auto answer = client.get(path).value();
    EXPECT_EQ(answer.status, 200) << path;
    EXPECT_EQ(answer.header("Content-Type"), "text/xml; charset=utf-8");
    EXPECT_EQ(answer.body, configurationOf(inbox.url())) << path;
  }
  for (const char* path : {"/reporting/kelvane", "/reporting/.xml", "/kelvane.xml", "/nothing"}) {
    const auto answer = client.get(path).value();
    EXPECT_EQ(answer.status, 404) << path;
    EXPECT_EQ(answer.body, "no such address\n") << path;
  }
}

TEST(InboxTest, AnswersAVersionRequest) {
  const Inbox inbox;
  for (const char* path : {"/soap", "/soap-test"}) {
    EXPECT_EQ(inbox.post(std::string(kVersionRequest), path), zt::inbox::versionDocument());
  }
  EXPECT_EQ(inbox.reports().size(), 0U);
}

TEST(InboxTest, AcceptsAReportAndKeepsIt) {
  Inbox inbox;
  auto client = inbox.newClient();
  SampleReport report;
  report.pools = {"EXECUTION", "CUSTOM"};
  report.value = "getVersionInfo & <getVersionInfo/>";
  const auto answer = client.post("/soap", report.text(), "text/xml");
  ASSERT_TRUE(answer);
  EXPECT_EQ(answer->status, 200);
  EXPECT_EQ(answer->body, reportAnswer(true));
  EXPECT_EQ(inbox.raw(1), report.text());

  auto list = nlohmann::json::parse(inbox.reportList());
  ASSERT_EQ(list.size(), 1U);
  EXPECT_TRUE(list[0]["received"].get<std::string>().starts_with("20"));
  EXPECT_TRUE(list[0]["sender"].get<std::string>().starts_with("127.0.0.1:"));
  list[0].erase("received");
  list[0].erase("sender");
  EXPECT_EQ(list[0], nlohmann::json({{"number", 1},
                                     {"size", report.text().size()},
                                     {"test", false},
                                     {"read", false},
                                     {"answer", "accepted"},
                                     {"reportId", report.reportId},
                                     {"machineId", report.machineId},
                                     {"customerId", "Kelvane"},
                                     {"applicationId", report.applicationId},
                                     {"applicationVersion", "2.1.77"},
                                     {"pools", {"EXECUTION", "CUSTOM"}},
                                     {"result", nullptr},
                                     {"duration", nullptr},
                                     {"duplicateOf", nullptr}}));
}

TEST(InboxTest, RefusesAReportAndKeepsIt) {
  const Inbox inbox({"--answer", "refuse"});
  EXPECT_EQ(inbox.post(SampleReport().text()), reportAnswer(false));
  EXPECT_EQ(inbox.reports()[0].answer, "refused");
}

TEST(InboxTest, MarksReportsToTheTestAddress) {
  const Inbox inbox;
  EXPECT_EQ(inbox.post(SampleReport().text(), "/soap-test"), reportAnswer(true));
  EXPECT_TRUE(inbox.reports()[0].isTest);
}

TEST(InboxTest, RefusesWhatIsNeitherReportNorVersionRequest) {
  Inbox inbox;
  auto client = inbox.newClient();
  for (const char* body : {"", "hello", "<reportData/>", "getVersionInfo"}) {
    const auto answer = client.post("/soap", body).value();
    EXPECT_EQ(answer.status, 400) << body;
    EXPECT_EQ(answer.body, "neither a report nor a version request\n") << body;
  }
  const auto answer = client.get("/soap").value();
  EXPECT_EQ(answer.status, 405);
  EXPECT_EQ(answer.header("Allow"), "POST");
  EXPECT_EQ(inbox.reports().size(), 0U);
}

TEST(InboxTest, TheMediaTypeOfAReportDoesNotMatter) {
  // A form of more than 8 KiB was once refused by the HTTP library before anybody saw it.
  Inbox inbox;
  auto client = inbox.newClient();
  SampleReport report;
  report.value = std::string(100'000, 'v');
  for (const char* type : {"application/x-www-form-urlencoded", "multipart/form-data; boundary=x",
                           "application/octet-stream"}) {
    EXPECT_EQ(client.post("/soap", report.text(), type).value().body, reportAnswer(true)) << type;
  }
  EXPECT_EQ(inbox.raw(2), report.text());
}

TEST(InboxTest, TakesAReportInChunks) {
  Inbox inbox;
  const std::string report = SampleReport().text();
  const RawClient client(inbox.port());
  std::string request =
      "POST /soap HTTP/1.1\r\nHost: x\r\nTransfer-Encoding: chunked\r\nConnection: close\r\n\r\n";
  for (const char byte : report) request.append("1\r\n").append(1, byte).append("\r\n");
  ASSERT_TRUE(client.send(request + "0\r\n\r\n"));
  inbox.waitFor(1);
  EXPECT_EQ(inbox.raw(1), report);
}

TEST(InboxTest, ServesAsAProxyForAnyHost) {
  Inbox inbox;
  const auto client = inbox.newClient();
  const auto configuration = client.get("http://config.kelvane.example/reporting/kelvane.xml",
                                        "Host: config.kelvane.example\r\n");
  EXPECT_EQ(configuration.value().body, configurationOf(inbox.url()));
  const auto answer = client.post("http://config.kelvane.example/soap-test", SampleReport().text());
  EXPECT_EQ(answer.value().body, reportAnswer(true));
  EXPECT_TRUE(inbox.reports()[0].isTest);
}

TEST(InboxTest, IsNoTunnel) {
  const Inbox inbox;
  RawClient client(inbox.port());
  ASSERT_TRUE(
      client.send("CONNECT config.kelvane.example:443 HTTP/1.1\r\nHost: x\r\n"
                  "Connection: close\r\n\r\n"));
  EXPECT_TRUE(client.receiveAll().starts_with("HTTP/1.1 405 Method Not Allowed\r\n"));
}

TEST(InboxTest, AnswersManyRequestsOnOneConnection) {
  Inbox inbox;
  RawClient client(inbox.port());
  std::string requests;
  for (int i = 0; i < 20; ++i) requests += postRequest("/soap", SampleReport().text());
  requests += postRequest("/soap", kVersionRequest, "Connection: close\r\n");
  ASSERT_TRUE(client.send(requests));
  const std::string answers = client.receiveAll();
  EXPECT_TRUE(answers.ends_with("<versioninfo>ztinbox " ZTPORTAL_VERSION "</versioninfo>"))
      << answers;
  EXPECT_EQ(client.end(), RawClient::End::kOrderly);
  EXPECT_EQ(inbox.reports().size(), 20U);
}

TEST(InboxTest, AHalfClosedConnectionStillGetsItsAnswer) {
  Inbox inbox({"--slow", "50"});
  RawClient client(inbox.port());
  ASSERT_TRUE(client.send(postRequest("/soap", SampleReport().text())));
  client.endSending();
  EXPECT_TRUE(client.receiveAll().ends_with(reportAnswer(true)));
}

TEST(InboxTest, ListensOnIpv6) {
  const TemporaryFolder folder;
  Subprocess child({paths::kInboxProgram, "--listen", "[::1]:0", "--data", folder.path()});
  const std::string url = printedUrl(child);
  if (url.empty()) GTEST_SKIP() << "no IPv6 here: " << child.waitForErrors();
  ASSERT_TRUE(url.starts_with("http://[::1]:")) << url;
  const HttpClient client(std::stoi(url.substr(url.rfind(':') + 1)), "::1");
  EXPECT_EQ(client.get("/reporting/kelvane.xml").value().body, configurationOf(url));
}

TEST(InboxTest, OnEveryAddressItPointsAtTheOneThatWasAsked) {
  const TemporaryFolder folder;
  Subprocess child({paths::kInboxProgram, "--listen", "0.0.0.0:0", "--data", folder.path()});
  const std::string url = printedUrl(child);
  ASSERT_TRUE(url.starts_with("http://0.0.0.0:")) << url;
  const std::string port = url.substr(url.rfind(':') + 1);
  EXPECT_EQ(HttpClient(std::stoi(port)).get("/reporting/kelvane.xml").value().body,
            configurationOf("http://127.0.0.1:" + port));
}

}  // namespace
}  // namespace zt::test
