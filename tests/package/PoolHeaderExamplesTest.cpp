#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "tests/support/Inbox.h"
#include "tests/support/Printing.h"
#include "tests/support/ScopedEnvironment.h"
#include "ztportal/ztportal.h"

// The examples of the headers of the typed pools and of the facade, and what they do.

namespace {

using testing::HasSubstr;
using zt::test::ScopedEnvironment;

class PoolHeaderExamplesTest : public testing::Test {
 protected:
  std::string text() const { return document->getSoapString(); }

  ScopedEnvironment _noBus{"DBUS_SESSION_BUS_ADDRESS", "unix:path=/nonexistent/bus"};
  std::shared_ptr<ZtPortalData> document =
      ZtPortalData::initWithValues("", false, "Kelvane", "", "2.1");
};

TEST_F(PoolHeaderExamplesTest, Deinstallations) {
  auto pool = document->addPoolDeinstallation(ZtDate::now());
  pool->setSuccessfull(0);
  pool->setEndTime(ZtDate::now());
  EXPECT_THAT(text(), HasSubstr("Pool=\"DEINSTALLATION\""));
}

TEST_F(PoolHeaderExamplesTest, Initializations) {
  auto pool = document->addPoolInitialization(ZtDate::now());
  pool->setEndResultString("ready");
  pool->setEndResultCode("0");
  pool->setEndTime(ZtDate::now());
  EXPECT_THAT(text(), HasSubstr(">ready<"));
}

TEST_F(PoolHeaderExamplesTest, Diagnoses) {
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

TEST_F(PoolHeaderExamplesTest, ConnectionManagers) {
  auto usage = document->addPoolConnectionManager(ZtDate::now());
  usage->setDeviceIMEI("356938035643809");
  usage->setMobileConnections(12);
  EXPECT_THAT(text(), HasSubstr(">356938035643809<"));
}

TEST_F(PoolHeaderExamplesTest, Computers) {
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

/// The run of the facade's header; true when it was accepted.
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

TEST_F(PoolHeaderExamplesTest, ZtReport) {
  zt::test::Inbox inbox;
  const ScopedEnvironment proxy("http_proxy", inbox.url().c_str());
  bool accepted = false;
  reportSetup(accepted);
  EXPECT_TRUE(accepted);
  ASSERT_EQ(inbox.reports().size(), 1U);
  EXPECT_THAT(inbox.raw(1), HasSubstr(">DESKTOP_ICON<"));
}

TEST_F(PoolHeaderExamplesTest, ZtApplicationIds) {
  const ScopedEnvironment proxy("http_proxy", "http://127.0.0.1:1");
  auto report =
      ZtReport::initWithCustomerAndGuid(REP_CUSTOMERID_NORVANTEL, REP_APPID_NORVANTEL_REPAIRTOOL);
  EXPECT_EQ(report->appId(), REP_APPID_NORVANTEL_REPAIRTOOL);
}

}  // namespace
