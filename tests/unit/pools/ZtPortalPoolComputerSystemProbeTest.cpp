// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>
#include <pwd.h>
#include <unistd.h>

#include <cstdint>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "tests/support/Subprocess.h"
#include "tests/support/ZtTestAccess.h"
#include "tests/unit/pools/PoolsFixture.h"
#include "ztportal/base/ZtException.h"
#include "ztportal/platform/FakePlatform.h"
#include "ztportal/pools/ZtPortalPoolComputerSystem.h"
#include "ztportal/system/ZtApplicationIdentifiers.h"

// How the pool fills itself from a machine that the tests make up.

namespace {

using zt::test::kNoon;
using zt::test::written;
using Texts = std::vector<std::string>;

template <class List>
Texts told(const List& list) {
  Texts texts;
  for (const auto& record : list) {
    std::string text(record->appName().printed());
    text.append(" ").append(record->appVersion().printed());
    if (record->isStandard() == 1) text.append(" standard");
    texts.push_back(text);
  }
  return texts;
}

class ZtPortalPoolComputerSystemProbeTest : public zt::test::PoolsFixture {
 protected:
  ZtPortalPoolComputerSystemProbeTest() {
    _platform.gestalt_.answers = {{zt::kGestaltSystemVersion, 0x1068},
                                  {zt::kGestaltSystemVersionMajor, 10},
                                  {zt::kGestaltSystemVersionMinor, 6},
                                  {zt::kGestaltSystemVersionBugFix, 8}};
    speak("de_DE.UTF-8");
  }

  void speak(const char* locale) {
    _language.reset();  // which puts back what was before
    _language = std::make_unique<zt::test::ScopedEnvironment>("LC_ALL", locale);
  }

  std::shared_ptr<ZtPortalPoolComputerSystem> probed() {
    return ZtPortalPoolComputerSystem::initWithValues(kNoon, true);
  }
  bool isAdmin(const char* answer) {
    _platform.subprocesses_.answer = answer;
    return ZtTestAccess::isCurrentUserAnAdmin(
        *ZtPortalPoolComputerSystem::initWithValues(kNoon, false));
  }
  Texts browsers() { return told(*probed()->browsers()); }
  Texts emailClients() { return told(*probed()->emailClients()); }

  zt::test::FakePlatform _platform;
  zt::test::ScopedEnvironment _languages{"LANGUAGE", nullptr};
  zt::test::ScopedEnvironment _home{"HOME", "/home/anna"};
  std::unique_ptr<zt::test::ScopedEnvironment> _language;
};

TEST_F(ZtPortalPoolComputerSystemProbeTest, TheIdentifiersAreExported) {
  EXPECT_EQ(APP_MAIL_IDENT, "com.apple.mail");
  EXPECT_EQ(APP_TBIRD_IDENT, "org.mozilla.thunderbird");
  EXPECT_EQ(APP_ENTOURAGE_IDENT, "com.microsoft.Entourage");
  EXPECT_EQ(APP_OUTLOOK_IDENT, "com.microsoft.Outlook");
  EXPECT_EQ(APP_SAFARI_IDENT, "com.apple.Safari");
  EXPECT_EQ(APP_FIREFOX_IDENT, "org.mozilla.firefox");
  EXPECT_EQ(APP_OPERA_IDENT, "com.operasoftware.Opera");
  EXPECT_EQ(APP_CHROME_IDENT, "com.google.Chrome");
}

TEST_F(ZtPortalPoolComputerSystemProbeTest, OnA1068SystemItTellsVersionAndServicePack) {
  const auto pool = probed();
  EXPECT_EQ(pool->osName(), "MACOS");
  EXPECT_EQ(pool->osVersion(), "MACOS 10.6");
  EXPECT_EQ(pool->servicePack(), 8);
}

TEST_F(ZtPortalPoolComputerSystemProbeTest, ThePreferredLanguageIsThatOfSystemAndUser) {
  const struct {
    const char* locale;
    std::uint64_t language;
  } rows[] = {{"de_DE.UTF-8", ZtLanguageGerman},  {"pt_BR", ZtLanguagePortuguese},
              {"sr_RS", ZtLanguageSerbian},       {"en_GB.UTF-8", ZtLanguageNeutral},
              {"en_BG", ZtLanguageEnglish},       {"zh_CN", ZtLanguageChinese},
              {"nb_NO", ZtLanguageNorwegian},     {"de_AT", ZtLanguageGerman},
              {"en_US.UTF-8", ZtLanguageEnglish}, {"ga_IE", ZtLanguageNeutral}};
  for (const auto& row : rows) {
    speak(row.locale);
    const auto pool = probed();
    EXPECT_EQ(pool->osLanguage(), row.language) << row.locale;
    EXPECT_EQ(pool->userLanguage(), row.language) << row.locale;
  }
}

TEST_F(ZtPortalPoolComputerSystemProbeTest, WithSafariAndChromeTheDefaultIsMarkedInTheirOrder) {
  _platform.installedApplications_.install("com.google.Chrome", "/apps/Chrome", "Chrome", "8.0");
  _platform.installedApplications_.install("com.apple.Safari", "/apps/Safari", "Safari", "5.0.3");
  _platform.installedApplications_.defaults["http:"] = "/apps/Chrome";
  EXPECT_EQ(browsers(), (Texts{"Safari 5.0.3", "Chrome 8.0 standard"}));
  EXPECT_EQ(emailClients(), Texts{});
}

TEST_F(ZtPortalPoolComputerSystemProbeTest, WithoutAClientOfTheListThereIsNoRecord) {
  _platform.installedApplications_.install("org.gnome.Evolution", "/apps/Evo", "Evolution", "3.46");
  _platform.installedApplications_.defaults["mailto:"] = "/apps/Evo";
  const auto pool = probed();
  EXPECT_TRUE(pool->emailClients()->empty());
  EXPECT_EQ(written(*pool, "", true).find("EMAILCLIENTS"), std::string::npos);
}

TEST_F(ZtPortalPoolComputerSystemProbeTest, ASecondCheckListsEveryApplicationTwice) {
  _platform.installedApplications_.install("org.mozilla.firefox", "/apps/Fx", "Firefox", "128");
  _platform.installedApplications_.install("org.mozilla.thunderbird", "/apps/Tb", "Bird", "115");
  const auto pool = probed();
  pool->checkComputerSystem();
  EXPECT_EQ(told(*pool->browsers()), (Texts{"Firefox 128", "Firefox 128"}));
  EXPECT_EQ(told(*pool->emailClients()), (Texts{"Bird 115", "Bird 115"}));
}

TEST_F(ZtPortalPoolComputerSystemProbeTest, AsksForClientsBeforeBrowsersInTheOrderOfTheList) {
  probed();
  EXPECT_EQ(_platform.installedApplications_.asked,
            (Texts{"mailto:", "com.apple.mail", "org.mozilla.thunderbird",
                   "com.microsoft.Entourage", "com.microsoft.Outlook", "http:", "com.apple.Safari",
                   "org.mozilla.firefox", "com.operasoftware.Opera", "com.google.Chrome"}));
}

TEST_F(ZtPortalPoolComputerSystemProbeTest, ItsQuestionsAreBegunBesideTheShellsAnswer) {
  Texts begun;
  _platform.subprocesses_.onRun = [&] { begun = _platform.installedApplications_.begun; };
  probed();
  EXPECT_EQ(begun, (Texts{"com.apple.mail", "org.mozilla.thunderbird", "com.microsoft.Entourage",
                          "com.microsoft.Outlook", "com.apple.Safari", "org.mozilla.firefox",
                          "com.operasoftware.Opera", "com.google.Chrome", "mailto:", "http:"}));
}

TEST_F(ZtPortalPoolComputerSystemProbeTest, TheDefaultIsToldByWhatAnApplicationCallsItself) {
  auto& applications = _platform.installedApplications_;
  applications.install("org.mozilla.firefox", "/apps/Fx", "Firefox", "128");
  applications.infos["/apps/Fx"]["CFBundleIdentifier"] = "org.mozilla.firefoxdeveloper";
  applications.defaults["http:"] = "/apps/Other";
  applications.infos["/apps/Other"] = {{"CFBundleIdentifier", "org.mozilla.firefox"}};
  EXPECT_EQ(browsers(), (Texts{"Firefox 128"}));
  applications.infos["/apps/Other"] = {{"CFBundleIdentifier", "org.mozilla.firefoxdeveloper"}};
  EXPECT_EQ(browsers(), (Texts{"Firefox 128 standard"}));
  applications.infos["/apps/Other"] = {{"CFBundleIdentifier", "org.mozilla.FirefoxDeveloper"}};
  EXPECT_EQ(browsers(), (Texts{"Firefox 128"}));
}

TEST_F(ZtPortalPoolComputerSystemProbeTest, WithoutADefaultNoneIsMarked) {
  auto& applications = _platform.installedApplications_;
  applications.install("org.mozilla.firefox", "/apps/Fx", "Firefox", "128");
  EXPECT_EQ(browsers(), (Texts{"Firefox 128"}));
  applications.defaults["http:"] = "/apps/Gone";
  EXPECT_EQ(browsers(), (Texts{"Firefox 128"}));
  applications.infos["/apps/Fx"].erase("CFBundleIdentifier");
  applications.infos["/apps/Gone"] = {{"CFBundleName", "Nameless"}};
  EXPECT_EQ(browsers(), (Texts{"Firefox 128"}));
}

TEST_F(ZtPortalPoolComputerSystemProbeTest, WhatAnApplicationDoesNotTellIsMissing) {
  auto& applications = _platform.installedApplications_;
  applications.paths["com.apple.Safari"] = "/apps/Safari";
  applications.infos["/apps/Safari"] = {{"CFBundleIdentifier", "com.apple.Safari"}};
  applications.paths["org.mozilla.firefox"] = "/apps/NoBundleThere";
  EXPECT_EQ(browsers(), (Texts{"(null) (null)"}));
}

TEST_F(ZtPortalPoolComputerSystemProbeTest, AsksTheShellForTheGroupOfTheHomeFolder) {
  probed();
  ASSERT_EQ(_platform.subprocesses_.runs.size(), 1U);
  EXPECT_EQ(_platform.subprocesses_.runs[0].program, "/bin/bash");
  EXPECT_EQ(_platform.subprocesses_.runs[0].arguments,
            (Texts{"-c", "dscl . -read /home/anna PrimaryGroupID | awk '{ print $2 }'"}));
}

// The shell ran what was in the home folder's name.
TEST_F(ZtPortalPoolComputerSystemProbeTest, AHomeFolderThatIsNotPlainIsTakenFromTheDatabase) {
  const passwd* const self = ::getpwuid(::getuid());
  ASSERT_NE(self, nullptr);
  const std::string own = self->pw_dir;
  const struct {
    const char* home;
    std::string asked;
  } rows[] = {{"/home/anna.b+c@d_e-f9", "/home/anna.b+c@d_e-f9"},
              {"/x;touch pwned;", own},
              {"/home/a b", own},
              {"/home/a'b", own},
              {"/home/$USER", own},
              {"/home/`id`", own},
              {"/home/a\nb", own},
              {"/home/*", own},
              {"/home/j\xc3\xbcrgen", own},
              {"relative", own},
              {nullptr, own}};
  for (const auto& row : rows) {
    const zt::test::ScopedEnvironment home("HOME", row.home);
    _platform.subprocesses_.runs.clear();
    probed();
    ASSERT_EQ(_platform.subprocesses_.runs.size(), 1U) << row.home;
    EXPECT_EQ(_platform.subprocesses_.runs[0].arguments[1],
              "dscl . -read " + row.asked + " PrimaryGroupID | awk '{ print $2 }'");
  }
}

TEST_F(ZtPortalPoolComputerSystemProbeTest, WithoutAPlainHomeFolderNothingIsStarted) {
  const zt::test::ScopedEnvironment home("HOME", "/home/a b");
  _platform.subprocesses_.answer = "80";
  const int status = zt::test::inForkedProcess([&] {
    constexpr uid_t kUnknownUser = 30999;
    if (::setuid(kUnknownUser) != 0) return zt::test::kNotPermitted;
    const bool isAdmin = probed()->isAdmin() == 1;
    return !isAdmin && _platform.subprocesses_.runs.empty() ? 0 : 1;
  });
  if (status == zt::test::kNotPermitted) GTEST_SKIP() << "needs another user";
  EXPECT_EQ(status, 0);
}

TEST_F(ZtPortalPoolComputerSystemProbeTest, TheGroups80And20AreAdministratorsAndNoOther) {
  for (const char* answer : {"80", "20", "80\n", " \t20 \r\n", "\302\24080\n"}) {
    EXPECT_TRUE(isAdmin(answer)) << answer;
  }
  for (const char* answer :
       {"", "\n", "0", "8", "800", "2", "200", "1000\n", "80 20", "+80", "020", "80.", "\xFF"}) {
    EXPECT_FALSE(isAdmin(answer)) << answer;
  }
  _platform.subprocesses_.answer = "20\n";
  EXPECT_EQ(probed()->isAdmin(), 1);
}

TEST_F(ZtPortalPoolComputerSystemProbeTest, AChildThatCannotBeStartedIsNoAdministrator) {
  _platform.installedApplications_.install("com.apple.Safari", "/apps/Safari", "Safari", "5");
  _platform.subprocesses_.onRun = [] { throw ZtException("PLATFORM", "no such program"); };
  const auto pool = probed();
  EXPECT_EQ(pool->isAdmin(), 0);
  EXPECT_EQ(told(*pool->browsers()), (Texts{"Safari 5"})) << "the check goes on";
}

// The check ended before the applications in a locale without a language.
TEST_F(ZtPortalPoolComputerSystemProbeTest, InTheCLocaleItIsEnglishAndListsTheApplications) {
  _platform.installedApplications_.install("com.apple.Safari", "/apps/Safari", "Safari", "5");
  speak("C");
  const auto pool = probed();
  EXPECT_EQ(pool->osLanguage(), ZtLanguageEnglish);
  EXPECT_EQ(pool->userLanguage(), ZtLanguageEnglish);
  EXPECT_EQ(told(*pool->browsers()), (Texts{"Safari 5"}));
}

TEST_F(ZtPortalPoolComputerSystemProbeTest, AnExceptionEndsTheCheckAndKeepsWhatWasFound) {
  auto& applications = _platform.installedApplications_;
  applications.install("com.apple.mail", "/apps/Mail", "Mail", "4");
  applications.install("com.apple.Safari", "/apps/Safari", "Safari", "5");
  applications.onAsk = [](std::string_view asked) {
    if (asked == "org.mozilla.thunderbird") throw ZtException("PLATFORM", "broken");
  };
  const auto pool = probed();
  EXPECT_EQ(pool->userLanguage(), ZtLanguageGerman);
  EXPECT_EQ(told(*pool->emailClients()), (Texts{"Mail 4"}));
  EXPECT_TRUE(pool->browsers()->empty());
}

TEST_F(ZtPortalPoolComputerSystemProbeTest, OtherExceptionsReachTheCaller) {
  const auto pool = ZtPortalPoolComputerSystem::initWithValues(kNoon, false);
  _platform.installedApplications_.onAsk = [](std::string_view) {
    throw std::runtime_error("foreign");
  };
  EXPECT_THROW(pool->checkComputerSystem(), std::runtime_error);
  _platform.subprocesses_.onRun = [] { throw std::runtime_error("foreign"); };
  EXPECT_THROW(pool->checkComputerSystem(), std::runtime_error);
}

TEST_F(ZtPortalPoolComputerSystemProbeTest, TellsThePathsOfTheDefaultApplications) {
  const auto pool = ZtPortalPoolComputerSystem::initWithValues(kNoon, false);
  EXPECT_TRUE(ZtTestAccess::getDefaultBrowserApp(*pool).isNull());
  EXPECT_TRUE(ZtTestAccess::getDefaultEMailClientApp(*pool).isNull());
  _platform.installedApplications_.defaults["http:"] = "/apps/Browser";
  _platform.installedApplications_.defaults["mailto:"] = "/apps/Mail";
  EXPECT_EQ(ZtTestAccess::getDefaultBrowserApp(*pool), "/apps/Browser");
  EXPECT_EQ(ZtTestAccess::getDefaultEMailClientApp(*pool), "/apps/Mail");
}

}  // namespace
