// SPDX-License-Identifier: Apache-2.0
#include <fmt/format.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <memory>
#include <sstream>
#include <stdexcept>
#include <string>
#include <string_view>
#include <unordered_set>
#include <utility>
#include <vector>

#include "TestPaths.h"
#include "tests/support/Inbox.h"
#include "tests/support/Printing.h"
#include "tests/support/ScopedEnvironment.h"
#include "tests/support/TemporaryFolder.h"
#include "ztportal/base/ZtFormat.h"
#include "ztportal/ztportal.h"

// Runs the examples in the comments of the public headers. The last test checks that each line of
// the examples is in this file.

namespace {

using testing::HasSubstr;
using zt::test::ScopedEnvironment;

constinit const ZtString GREETING = ZtString::constant<"hello">();

/// A document without a server.
std::shared_ptr<ZtPortalData> localDocument() {
  return ZtPortalData::initWithValues("", false, "Kelvane", "", "2.1");
}

TEST(HeaderExamplesTest, ZtString) {
  ZtString edition = "Home";
  ZtString same = edition;
  ZtString none = nullptr;
  bool known = !none.isNull();
  std::string line(edition);
  EXPECT_EQ(same.view().data(), edition.view().data());
  EXPECT_FALSE(known);
  EXPECT_EQ(line, "Home");
  EXPECT_EQ(GREETING, "hello");

  std::unordered_set<ZtString> editions{edition};
  EXPECT_EQ(editions.count("Home"), 1U);
  testing::internal::CaptureStdout();
  std::cout << edition << '\n';
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "Home\n");

  std::string name = fmt::format("{:>8}", ZtString("Home"));
  EXPECT_EQ(name, "    Home");
}

TEST(HeaderExamplesTest, ZtException) {
  const auto document = localDocument();
  document->addPool("CUSTOM", ZtDate::now())->addString("RESULT", "OK");
  bool isRaised = false;
  try {
    document->pools().front()->field(7);
  } catch (const ZtException& error) {
    isRaised = true;
    EXPECT_EQ(error.name(), "OUT_OF_BOUNDS");
    EXPECT_EQ(error.reason(), "Index (7) out of bounds");
  }
  EXPECT_TRUE(isRaised);
}

TEST(HeaderExamplesTest, ZtDate) {
  ZtDate now = ZtDate::now();
  ZtDate then(std::chrono::system_clock::now() - std::chrono::hours(1));
  ZtDate none;
  EXPECT_LT(then.milliseconds(), now.milliseconds());
  EXPECT_TRUE(none.isNull());
}

struct Execution {
  ZtAtomic<ZtString> _startPoint{""};
  ZtString startPoint() const { return _startPoint.load(); }
  void setStartPoint(ZtString value) { _startPoint.store(std::move(value)); }
};

TEST(HeaderExamplesTest, ZtAtomic) {
  Execution execution;
  EXPECT_EQ(execution.startPoint(), "");
  execution.setStartPoint("setup");
  EXPECT_EQ(execution.startPoint(), "setup");
}

TEST(HeaderExamplesTest, ZtXMLDocument) {
  auto document = ZtXMLDocument::parse("<a xmlns:ns='urn:n'><ns:b key='1'>two</ns:b></a>");
  ZtXMLNode root = *document->rootElement();
  ZtXMLNode child = root.children().front();
  child.name();
  child.text();
  const ZtString value = child.attributes().front().second;
  EXPECT_EQ(child.name(), "ns:b");
  EXPECT_EQ(child.text(), "two");
  EXPECT_EQ(value, "1");
}

TEST(HeaderExamplesTest, ZtUtils) {
  const std::string text = "<c><defSOAP>http://127.0.0.1/soap</defSOAP></c>";
  std::vector<ZtString> used;
  const auto use = [&used](const ZtString& url) { used.push_back(url); };
  auto document = ZtXMLDocument::parse(text);
  auto url = ZtUtils::childNamed(*document->rootElement(), "defSOAP");
  if (url) use(url->text());
  EXPECT_THAT(used, testing::ElementsAre("http://127.0.0.1/soap"));
}

TEST(HeaderExamplesTest, ZtPortalDef) {
  std::string xml;
  ZtPortalDef::addStringFieldToXml("", xml, "Result", "OK", false);
  EXPECT_EQ(xml,
            "<Field FieldType=\"string\">\r\n"
            "  <Name>Result</Name>\r\n"
            "  <Value>OK</Value>\r\n"
            "</Field>\r\n");
}

TEST(HeaderExamplesTest, Pools) {
  const auto document = localDocument();
  auto pool = document->addPool("CUSTOM", ZtDate::now());
  pool->addString("RESULT", "OK");
  pool->addArray("COUNTS")->addInteger("COPIED", 7);

  auto disks = pool->addArray("DISKS");
  disks->addString("NAME", "sda");
  disks->addInteger("SIZE_GB", 512);
  disks->field(1)->fieldName();

  EXPECT_EQ(disks->field(1)->fieldName(), "SIZE_GB");
  EXPECT_THAT(document->getSoapString(), HasSubstr(">COPIED<"));
}

TEST(HeaderExamplesTest, Executions) {
  const auto document = localDocument();
  auto execution = document->addPoolExecution(ZtDate::now());
  execution->setStartPoint("setup");
  execution->addStep(ZtDate::now(), "Copy", ZtPortalStepEnter);
  execution->setEndResultCode("0");

  auto step = execution->addStep(ZtDate::now(), "Copy", ZtPortalStepError);
  step->setStepMessageString("disk full");
  step->setStepMessageCode("28");

  const std::string request = document->getSoapString();
  EXPECT_THAT(request, HasSubstr(">setup<"));
  EXPECT_THAT(request, HasSubstr(">disk full<"));
  EXPECT_EQ(execution->executionSteps().size(), 2U);
}

TEST(HeaderExamplesTest, ZtHost) {
  ZtHost::setBundleInfo({{"CFBundleName", "Setup"},
                         {"CFBundleShortVersionString", "2.1"},
                         {"CFBundleVersion", "77"}});
  EXPECT_EQ(ZtHost::bundleInfo("CFBundleName"), "Setup");
  EXPECT_EQ(ZtHost::bundleInfo("CFBundleVersion"), "77");

  ZtHost::setValueFilter([](auto, std::string_view name, auto) {
    return name == "MachineID" ? ZtDecision::drop() : ZtDecision::keep();
  });
  const auto document = localDocument();
  document->addPool("CUSTOM", ZtDate::now());
  EXPECT_THAT(document->generateXml(nullptr, false), HasSubstr("<MachineID></MachineID>"));
  ZtHost::setValueFilter(nullptr);
}

ZtDecision withoutAda(std::string_view text) {
  if (text == "Ada") return ZtDecision::replace("somebody");
  return ZtDecision::keep();
}

TEST(HeaderExamplesTest, ZtPrivacy) {
  EXPECT_EQ(withoutAda("Ada").text, "somebody");
  EXPECT_EQ(withoutAda("Bob").kind, ZtDecision::Kind::Keep);
}

TEST(HeaderExamplesTest, ZtSystemInfos) {
  auto infos = ZtSystemInfos::getSystemInfos();
  infos.at("ZtDIAG_SYSTEM_INFOS_OS_VERSION_NUMBER");
  EXPECT_THAT(std::string(infos.at("ZtDIAG_SYSTEM_INFOS_OS_VERSION_NUMBER").view()),
              testing::MatchesRegex("[0-9]+\\.[0-9]+"));
}

TEST(HeaderExamplesTest, ZtPortalData) {
  const ScopedEnvironment noProxy("no_proxy", "*");
  const ScopedEnvironment noBus("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nonexistent/bus");
  zt::test::Inbox inbox;
  const ZtString configurationUrl = inbox.configurationUrl();
  auto document = ZtPortalData::initWithValues(configurationUrl, false, "Kelvane",
                                               "{7C1B7F6E-5B0B-4F0E-9C53-0D1B9B8F0A11}", "2.1");
  document->addPool("CUSTOM", ZtDate::now())->addString("RESULT", "OK");
  bool accepted = document->reportToServer();
  EXPECT_TRUE(accepted);
  EXPECT_EQ(inbox.reports().size(), 1U);
}

TEST(HeaderExamplesTest, ZtDelivery) {
  const ScopedEnvironment noBus("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nonexistent/bus");
  zt::test::Inbox inbox({"--answer", "error:503"});
  ZtTransportOptions direct;
  direct.proxy = "";
  EXPECT_EQ(ZtHost::setTransportOptions(direct), "");
  std::vector<std::int32_t> shown;
  const auto show = [&shown](std::int32_t status) { shown.push_back(status); };
  const auto warn = [](const std::string& reason) { ADD_FAILURE() << reason; };
  const auto document =
      ZtPortalData::initWithValues(inbox.configurationUrl(), false, "Kelvane", "", "2.1");
  document->addPool("CUSTOM", ZtDate::now());
  if (!document->reportToServer()) {
    const ZtDelivery delivery = document->lastDelivery();
    if (delivery.outcome == ZtDeliveryOutcome::Refused) show(delivery.httpStatus);
    if (delivery.savedTo.empty()) warn(delivery.saveError);
  }
  EXPECT_THAT(shown, testing::ElementsAre(503));
  EXPECT_EQ(ZtHost::setTransportOptions({}), "");
}

TEST(HeaderExamplesTest, ZtTransportOptions) {
  std::vector<std::string> warnings;
  const auto warn = [&warnings](const std::string& wrong) { warnings.push_back(wrong); };
  ZtTransportOptions options;
  options.proxy = "http://proxy.example.com:3128";
  options.authorityFile = "/opt/setup/ca.pem";
  options.timeout = std::chrono::minutes(5);
  options.idleTimeout = std::chrono::seconds(10);
  const std::string wrong = ZtHost::setTransportOptions(options);
  if (!wrong.empty()) warn(wrong);
  EXPECT_THAT(warnings, testing::ElementsAre("authorityFile: /opt/setup/ca.pem cannot be read"));
}

TEST(HeaderExamplesTest, ZtReportStore) {
  const zt::test::TemporaryFolder data;
  const ScopedEnvironment dataHome("XDG_DATA_HOME", data.path().c_str());
  const ScopedEnvironment noProxy("no_proxy", "*");
  const ScopedEnvironment noBus("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nonexistent/bus");
  zt::test::Inbox inbox;
  const ZtString configurationUrl = inbox.configurationUrl();
  const auto document = localDocument();
  document->addPool("CUSTOM", ZtDate::now())->addString("RESULT", "OK");
  document->saveReport();
  std::vector<std::string> logged;
  const auto log = [&logged](const std::string& path, const std::string&) {
    logged.push_back(path);
  };
  const auto tryAgainIn = [](std::chrono::seconds) {};

  ZtReportStore store;
  for (const ZtSavedReport& saved : store.list()) {
    if (!saved.canBeSent()) log(saved.path, saved.problem());
  }
  ZtSendOptions options;
  options.configurationUrl = configurationUrl;
  options.budget = std::chrono::seconds(30);
  const ZtSendResult result = store.send(options);
  if (result.end == ZtSendEnd::Deferred) tryAgainIn(result.retryAfter);
  EXPECT_THAT(logged, testing::IsEmpty());
  EXPECT_EQ(result.accepted, 1U);
  EXPECT_EQ(inbox.reports().size(), 1U);
}

class HeaderPoolExamplesTest : public testing::Test {
 protected:
  std::string text() const { return document->getSoapString(); }

  ScopedEnvironment _noBus{"DBUS_SESSION_BUS_ADDRESS", "unix:path=/nonexistent/bus"};
  std::shared_ptr<ZtPortalData> document = localDocument();
};

TEST_F(HeaderPoolExamplesTest, Deinstallations) {
  auto pool = document->addPoolDeinstallation(ZtDate::now());
  pool->setSuccessfull(0);
  pool->setEndTime(ZtDate::now());
  EXPECT_THAT(text(), HasSubstr("Pool=\"DEINSTALLATION\""));
}

TEST_F(HeaderPoolExamplesTest, Initializations) {
  auto pool = document->addPoolInitialization(ZtDate::now());
  pool->setEndResultString("ready");
  pool->setEndResultCode("0");
  pool->setEndTime(ZtDate::now());
  EXPECT_THAT(text(), HasSubstr(">ready<"));
}

TEST_F(HeaderPoolExamplesTest, Diagnoses) {
  auto diagnose = document->addPoolDiagnose(ZtDate::now());
  {
    auto step = diagnose->addStep(ZtDate::now(), "DNS", ZtPortalDiagnoseManual);
    step->setCancelledRepair(1);
  }
  auto step = diagnose->addStep(ZtDate::now(), "DNS", ZtPortalDiagnoseAutomatic);
  step->setStepMessageString("no name server");
  step->setSuccessfullRepair(0);
  EXPECT_THAT(text(), HasSubstr(">no name server<"));
}

TEST_F(HeaderPoolExamplesTest, ConnectionManagers) {
  auto usage = document->addPoolConnectionManager(ZtDate::now());
  usage->setDeviceIMEI("356938035643809");
  usage->setMobileConnections(12);
  EXPECT_THAT(text(), HasSubstr(">356938035643809<"));
}

TEST_F(HeaderPoolExamplesTest, Computers) {
  auto computer = document->addPoolComputerSystemWithAutoCheck(ZtDate::now(), true);
  computer->addFirewallApp("firewalld", "1.3.3")->setIsEnabled(1);
  auto browser = computer->addBrowser("Firefox ESR", "128.3.0", 1);
  auto client = computer->addEMailClient("Thunderbird", "128.3.0", 1);
  {
    auto app = computer->addAntivirusApp("ClamAV", "1.0.7");
    app->setAppCompany("Example");
    app->setIsUpToDate(1);
  }
  auto app = computer->addFirewallApp("firewalld", "1.3.3");
  app->setIsEnabled(1);
  EXPECT_EQ(computer->browsers()->back(), browser);
  EXPECT_EQ(computer->emailClients()->back(), client);
  EXPECT_THAT(text(), HasSubstr(">ClamAV<"));
}

/// The example run of ZtReport.h; true if it was accepted.
void reportSetup(bool& done) {
  auto report = ZtReport::initWithCustomerAndGuid(REP_CUSTOMERID_ZT, nullptr);
  if (!report) return;
  report->startReport("setup");
  auto step = report->poolExecution()->addStep(ZtDate::now(), "Copy", ZtPortalStepEnter);
  step->setStepMessageCode("0");
  (*report->installDataString())["EDITION"] = "Home";
  (*report->installDataBOOL())["DESKTOP_ICON"] = "yes";
  report->stopReport("finish");
  bool accepted = report->sendReport(true);
  done = accepted;
}

TEST_F(HeaderPoolExamplesTest, ZtReport) {
  zt::test::Inbox inbox;
  const ScopedEnvironment proxy("http_proxy", inbox.url().c_str());
  bool accepted = false;
  reportSetup(accepted);
  EXPECT_TRUE(accepted);
  ASSERT_EQ(inbox.reports().size(), 1U);
  EXPECT_THAT(inbox.raw(1), HasSubstr(">DESKTOP_ICON<"));
}

TEST_F(HeaderPoolExamplesTest, ZtApplicationIds) {
  const ScopedEnvironment proxy("http_proxy", "http://127.0.0.1:1");
  auto report =
      ZtReport::initWithCustomerAndGuid(REP_CUSTOMERID_NORVANTEL, REP_APPID_NORVANTEL_REPAIRTOOL);
  EXPECT_EQ(report->appId(), REP_APPID_NORVANTEL_REPAIRTOOL);
}

TEST(HeaderExamplesTest, ZtLog) {
  testing::internal::CaptureStderr();
  ZtHost::setLogHandler(ZtLogToStderr);
  ZtReport::initWithCustomerAndGuid("nobody", nullptr);
  ZtHost::setLogHandler(nullptr);
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "ztportal: error: report: there is no report: the customer is unknown\n");
}

std::string contentOf(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  std::string content{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
  if (content.empty()) throw std::runtime_error("cannot read " + path);
  return content;
}

std::vector<std::string> linesOf(const std::string& text) {
  std::istringstream stream(text);
  std::vector<std::string> lines;
  for (std::string line; std::getline(stream, line);) lines.push_back(line);
  return lines;
}

/// `line` without a comment at its end; "//" in a literal does not begin one.
std::string_view withoutComment(std::string_view line) {
  bool isInText = false;
  for (std::size_t i = 0; i < line.size(); ++i) {
    if (line[i] == '"' && (i == 0 || line[i - 1] != '\\')) isInText = !isInText;
    if (!isInText && line.substr(i).starts_with("//")) return line.substr(0, i);
  }
  return line;
}

/// Lines are broken and indented differently in a comment and here.
std::string withoutBlanks(std::string_view text) {
  std::string dense;
  std::ranges::copy_if(text, std::back_inserter(dense),
                       [](unsigned char byte) { return std::isspace(byte) == 0; });
  return dense;
}

/// The code of the examples in `header`, line by line: comment lines that are indented by four.
std::vector<std::string> exampleLines(const std::string& header) {
  constexpr std::string_view kExample = "///     ";
  std::vector<std::string> lines;
  for (const std::string& line : linesOf(contentOf(header))) {
    const std::size_t begin = line.find_first_not_of(' ');
    if (begin == line.npos || line.compare(begin, kExample.size(), kExample) != 0) continue;
    std::string code =
        withoutBlanks(withoutComment(std::string_view(line).substr(begin + kExample.size())));
    if (!code.empty()) lines.push_back(code);
  }
  return lines;
}

std::vector<std::string> publicHeaders() {
  std::vector<std::string> headers;
  for (const auto& entry :
       std::filesystem::recursive_directory_iterator(zt::test::paths::kPublicHeaders)) {
    if (entry.is_regular_file()) headers.push_back(entry.path().string());
  }
  return headers;
}

std::string codeThatRuns() {
  std::string code;
  const std::string path = zt::test::paths::kSource + "/tests/package/HeaderExamplesTest.cpp";
  for (const std::string& line : linesOf(contentOf(path))) {
    code += withoutBlanks(withoutComment(line));
  }
  return code;
}

TEST(HeaderExamplesTest, ZtBackgroundSender) {
  zt::test::Inbox inbox;
  const zt::test::TemporaryFolder data;
  const ScopedEnvironment dataHome("XDG_DATA_HOME", data.path().c_str());
  const ScopedEnvironment proxy("http_proxy", nullptr);
  const ZtString configurationUrl = inbox.url() + "/reporting/kelvane.xml";
  const ZtString applicationId = "{7C1B7F6E-5B0B-4F0E-9C53-0D1B9B8F0A11}";
  const auto warn = [](const std::string& error) { ADD_FAILURE() << error; };
  std::size_t shown = 0;
  const auto show = [&](const ZtString&, const std::string&) { ++shown; };

  ZtBackgroundOptions options;
  options.configurationUrl = configurationUrl;
  ZtBackgroundSender sender(options);

  auto document = ZtPortalData::initWithValues("", false, "Kelvane", applicationId, "2.1");
  document->addPool("CUSTOM", ZtDate::now())->addString("RESULT", "OK");
  if (!sender.send(*document)) warn(document->lastDelivery().saveError);

  sender.flush(std::chrono::seconds(60));
  std::size_t left = sender.flush(std::chrono::seconds(2));
  EXPECT_EQ(left, 0U);

  for (const ZtBackgroundReceipt& receipt : sender.receipts()) {
    show(receipt.report.reportId, receipt.delivery.message);
  }
  EXPECT_EQ(shown, 1U);
}

TEST(HeaderExamplesTest, Version) {
#if ZTPORTAL_VERSION_NUMBER < 10100
#error "this host needs ztportal 1.1"
#endif
}

TEST(HeaderExamplesTest, ZtReportDescription) {
  const zt::test::Inbox inbox;
  const ScopedEnvironment proxy("http_proxy", inbox.url().c_str());
  const ZtReportDescription description(R"({
      "customerId": "Kelvane",
      "configurationUrl": "http://config.example.com/reporting/kelvane.xml",
      "pools": [{"kind": "generic", "poolType": "CUSTOM", "fields": [
        {"name": "COUNT", "type": "integer", "value": 7}]}]})");
  auto document = description.makeOnline(description.configurationUrl());
  bool accepted = document->reportToServer();
  EXPECT_TRUE(accepted);
}

TEST(HeaderExamplesTest, RunEachLineOfTheHeaders) {
  const std::string code = codeThatRuns();
  std::size_t count = 0;
  for (const std::string& header : publicHeaders()) {
    for (const std::string& line : exampleLines(header)) {
      EXPECT_NE(code.find(line), code.npos) << header << ": " << line;
      ++count;
    }
  }
  EXPECT_GT(count, 40U) << "the examples are not found";
}

}  // namespace
