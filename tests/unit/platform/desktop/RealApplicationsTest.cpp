// SPDX-License-Identifier: Apache-2.0
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <optional>
#include <string>

#include "tests/support/Printing.h"
#include "tests/support/ScopedEnvironment.h"
#include "tests/support/TemporaryFolder.h"
#include "ztportal/platform/desktop/LinuxInstalledApplications.h"
#include "ztportal/platform/process/LinuxSubprocesses.h"

namespace {

using testing::ElementsAre;
using testing::Pair;
using zt::LinuxInstalledApplications;
using zt::LinuxSubprocesses;
using zt::test::ScopedEnvironment;
using zt::test::TemporaryFolder;

/// The version of an installed Debian package, without epoch and revision; missing when it is not
/// installed.
ZtString debianVersion(const std::string& package) {
  const std::string output = LinuxSubprocesses("").output(
      "/bin/sh", {"-c", "dpkg-query -W -f '${source:Upstream-Version}' " + package});
  const std::string version = output.substr(output.find(':') + 1);
  return version.empty() ? ZtString() : ZtString(version);
}

/// The applications that are installed on this machine, which `script/bootstrap` installs, with
/// the defaults that a test chooses.
class RealApplicationsTest : public testing::Test {
 protected:
  void SetUp() override {
    for (const char* package : {"firefox-esr", "thunderbird", "chromium"}) {
      if (debianVersion(package).isNull()) GTEST_SKIP() << package << " is not installed";
    }
  }
  void putDefaults(const std::string& list) const {
    _folder.write("mimeapps.list", "[Default Applications]\n" + list);
  }

  TemporaryFolder _folder;
  ScopedEnvironment _configurationHome{"XDG_CONFIG_HOME", _folder.path().c_str()};
  ScopedEnvironment _dataHome{"XDG_DATA_HOME", _folder.path().c_str()};
  ScopedEnvironment _dataFolders{"XDG_DATA_DIRS", nullptr};
  ScopedEnvironment _languages{"LANGUAGE", nullptr};
  ScopedEnvironment _locale{"LC_ALL", "C.UTF-8"};
  LinuxInstalledApplications _applications;
};

TEST_F(RealApplicationsTest, FirefoxAndThunderbirdTellTheirNamesAndVersions) {
  const struct {
    const char* identifier;
    std::string package;
    const char* name;
  } rows[] = {{"org.mozilla.firefox", "firefox-esr", "Firefox ESR"},
              {"org.mozilla.thunderbird", "thunderbird", "Thunderbird"}};
  for (const auto& row : rows) {
    const auto path = _applications.withIdentifier(row.identifier);
    ASSERT_EQ(path, "/usr/share/applications/" + row.package + ".desktop");
    std::string version(debianVersion(row.package).view());
    ASSERT_TRUE(version.ends_with("esr")) << version;
    version.resize(version.size() - 3);
    EXPECT_THAT(
        *_applications.info(*path),
        ElementsAre(Pair("CFBundleIdentifier", row.identifier), Pair("CFBundleName", row.name),
                    Pair("CFBundleShortVersionString", version)));
  }
}

TEST_F(RealApplicationsTest, ChromiumIsNotChrome) {
  EXPECT_EQ(_applications.withIdentifier("com.google.Chrome"), std::nullopt);
  putDefaults("x-scheme-handler/http=chromium.desktop\n");
  const auto path = _applications.defaultFor("http:");
  ASSERT_EQ(path, "/usr/share/applications/chromium.desktop");
  EXPECT_THAT(*_applications.info(*path),
              ElementsAre(Pair("CFBundleIdentifier", "chromium"),
                          Pair("CFBundleName", "Chromium Web Browser"),
                          Pair("CFBundleShortVersionString", debianVersion("chromium"))));
}

TEST_F(RealApplicationsTest, TheDefaultsAreThoseOfTheUsersList) {
  putDefaults(
      "x-scheme-handler/http=firefox-esr.desktop\nx-scheme-handler/mailto=thunderbird.desktop\n");
  EXPECT_EQ(_applications.defaultFor("http:"), _applications.withIdentifier("org.mozilla.firefox"));
  EXPECT_EQ(_applications.defaultFor("mailto:"),
            _applications.withIdentifier("org.mozilla.thunderbird"));
}

}  // namespace
