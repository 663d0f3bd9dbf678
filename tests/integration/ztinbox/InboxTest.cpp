#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <string>

#include "TestPaths.h"
#include "tests/support/Inbox.h"
#include "tests/support/LoopbackClient.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/unit/tools/ztinbox/SampleReport.h"

namespace {

using zt::test::HttpClient;
using zt::test::Inbox;
using zt::test::kVersionRequest;
using zt::test::postRequest;
using zt::test::RawClient;
using zt::test::SampleReport;
using zt::test::TemporaryFolder;

std::string answerWith(const std::string& value) {
  return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
         "<SOAP-ENV:Envelope xmlns:SOAP-ENV=\"http://schemas.xmlsoap.org/soap/envelope/\" "
         "xmlns:xsi=\"http://www.w3.org/2001/XMLSchema-instance\" "
         "xmlns:xsd=\"http://www.w3.org/2001/XMLSchema\">\n"
         "  <SOAP-ENV:Body>\n"
         "    <ns1:postPoolDatasResponse xmlns:ns1=\"http://reporting.kelvane.example/portal\" "
         "SOAP-ENV:encodingStyle=\"http://schemas.xmlsoap.org/soap/encoding/\">\n"
         "      <return xsi:type=\"xsd:boolean\">" +
         value +
         "</return>\n"
         "    </ns1:postPoolDatasResponse>\n"
         "  </SOAP-ENV:Body>\n"
         "</SOAP-ENV:Envelope>\n";
}

std::string configurationOf(const Inbox& inbox) {
  return "<configuration><defSOAP>" + inbox.url() + "/soap</defSOAP><defTestSOAP>" + inbox.url() +
         "/soap-test</defTestSOAP></configuration>";
}

TEST(InboxTest, TheConfigurationPointsAtTheInbox) {
  const Inbox inbox;
  auto client = inbox.newClient();
  for (const char* path : {"/reporting/kelvane.xml", "/reporting/a/b.xml", "/reporting/%2e.xml"}) {
    const auto answer = client.get(path);
    ASSERT_TRUE(answer) << path;
    EXPECT_EQ(answer->status, 200) << path;
    EXPECT_EQ(answer->header("Content-Type"), "text/xml; charset=utf-8");
    EXPECT_EQ(answer->body, configurationOf(inbox)) << path;
  }
  for (const char* path : {"/reporting/kelvane", "/reporting/.xml", "/kelvane.xml", "/nothing"}) {
    const auto answer = client.get(path);
    ASSERT_TRUE(answer) << path;
    EXPECT_EQ(answer->status, 404) << path;
    EXPECT_EQ(answer->body, "no such address\n") << path;
  }
}

TEST(InboxTest, AnswersAVersionRequest) {
  Inbox inbox;
  auto client = inbox.newClient();
  for (const char* path : {"/soap", "/soap-test"}) {
    const auto answer = client.post(path, std::string(kVersionRequest), "text/xml");
    ASSERT_TRUE(answer) << path;
    EXPECT_EQ(answer->status, 200);
    EXPECT_EQ(answer->body, "<versioninfo>ztinbox 1.0.0</versioninfo>");
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
  EXPECT_EQ(answer->body, answerWith("true"));
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
  Inbox inbox({"--answer", "refuse"});
  auto client = inbox.newClient();
  const auto answer = client.post("/soap", SampleReport().text(), "text/xml");
  ASSERT_TRUE(answer);
  EXPECT_EQ(answer->status, 200);
  EXPECT_EQ(answer->body, answerWith("false"));
  EXPECT_EQ(inbox.reports()[0].answer, "refused");
}

TEST(InboxTest, MarksReportsToTheTestAddress) {
  Inbox inbox;
  auto client = inbox.newClient();
  const auto answer = client.post("/soap-test", SampleReport().text(), "text/xml");
  ASSERT_TRUE(answer);
  EXPECT_EQ(answer->body, answerWith("true"));
  EXPECT_TRUE(inbox.reports()[0].isTest);
}

TEST(InboxTest, RefusesWhatIsNeitherReportNorVersionRequest) {
  Inbox inbox;
  auto client = inbox.newClient();
  for (const char* body : {"", "hello", "<reportData/>", "getVersionInfo"}) {
    const auto answer = client.post("/soap", body, "text/xml");
    ASSERT_TRUE(answer) << body;
    EXPECT_EQ(answer->status, 400) << body;
    EXPECT_EQ(answer->body, "neither a report nor a version request\n") << body;
  }
  const auto answer = client.get("/soap");
  ASSERT_TRUE(answer);
  EXPECT_EQ(answer->status, 405);
  EXPECT_EQ(answer->header("Allow"), "POST");
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
    const auto answer = client.post("/soap", report.text(), type);
    ASSERT_TRUE(answer) << type;
    EXPECT_EQ(answer->body, answerWith("true")) << type;
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
  ASSERT_TRUE(configuration);
  EXPECT_EQ(configuration->body, configurationOf(inbox));
  const auto answer = client.post("http://config.kelvane.example/soap-test", SampleReport().text());
  ASSERT_TRUE(answer);
  EXPECT_EQ(answer->body, answerWith("true"));
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
  EXPECT_TRUE(answers.ends_with("<versioninfo>ztinbox 1.0.0</versioninfo>")) << answers;
  EXPECT_EQ(client.end(), RawClient::End::kOrderly);
  EXPECT_EQ(inbox.reports().size(), 20U);
}

TEST(InboxTest, AHalfClosedConnectionStillGetsItsAnswer) {
  Inbox inbox({"--slow", "50"});
  RawClient client(inbox.port());
  ASSERT_TRUE(client.send(postRequest("/soap", SampleReport().text())));
  client.endSending();
  EXPECT_TRUE(client.receiveAll().ends_with(answerWith("true")));
}

TEST(InboxTest, ListensOnIpv6) {
  const TemporaryFolder folder;
  zt::test::Subprocess child(
      {zt::test::paths::kInboxProgram, "--listen", "[::1]:0", "--data", folder.path()});
  const std::string line = child.waitForLines(1);
  if (line.empty()) GTEST_SKIP() << "no IPv6 here: " << child.waitForErrors();
  const std::string url = line.substr(line.find("http://"), line.size() - line.find("http://") - 1);
  ASSERT_TRUE(url.starts_with("http://[::1]:")) << line;
  HttpClient client(std::stoi(url.substr(url.rfind(':') + 1)), "::1");
  const auto configuration = client.get("/reporting/kelvane.xml");
  ASSERT_TRUE(configuration);
  EXPECT_EQ(configuration->body, "<configuration><defSOAP>" + url + "/soap</defSOAP><defTestSOAP>" +
                                     url + "/soap-test</defTestSOAP></configuration>");
}

TEST(InboxTest, OnEveryAddressItPointsAtTheOneThatWasAsked) {
  const TemporaryFolder folder;
  zt::test::Subprocess child(
      {zt::test::paths::kInboxProgram, "--listen", "0.0.0.0:0", "--data", folder.path()});
  const std::string line = child.waitForLines(1);
  ASSERT_TRUE(line.starts_with("ztinbox: listening on http://0.0.0.0:")) << line;
  const std::string port = line.substr(line.rfind(':') + 1, line.size() - line.rfind(':') - 2);
  HttpClient client(std::stoi(port));
  const auto configuration = client.get("/reporting/kelvane.xml");
  ASSERT_TRUE(configuration);
  EXPECT_EQ(configuration->body, "<configuration><defSOAP>http://127.0.0.1:" + port +
                                     "/soap</defSOAP><defTestSOAP>http://127.0.0.1:" + port +
                                     "/soap-test</defTestSOAP></configuration>");
}

}  // namespace
