#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "tests/support/Inbox.h"
#include "tests/support/Printing.h"
#include "tests/support/ScopedEnvironment.h"
#include "ztportal/ztportal.h"

// Each public header's example as code, line by line, and what it does.

namespace {

using testing::HasSubstr;
using zt::test::ScopedEnvironment;

constinit const ZtString GREETING = ZtString::constant<"hello">();

/// A document that knows no server.
std::shared_ptr<ZtPortalData> localDocument() {
  return ZtPortalData::initWithValues("", false, "Kelvane", "", "2.1");
}

TEST(HeaderExamplesTest, ZtString) {
  ZtString edition = "Home";
  ZtString same = edition;
  ZtString none = nullptr;
  bool known = !none.isNull();
  std::string line{edition.view()};
  EXPECT_EQ(same.view().data(), edition.view().data());
  EXPECT_FALSE(known);
  EXPECT_EQ(line, "Home");
  EXPECT_EQ(GREETING, "hello");
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
  auto document = ZtXMLDocument::parse("<a><ns:b key='1'>two</ns:b></a>");
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

}  // namespace
