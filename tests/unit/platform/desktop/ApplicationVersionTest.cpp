// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/unit/platform/desktop/MadeUpDesktop.h"
#include "ztportal/platform/desktop/ApplicationVersion.h"
#include "ztportal/platform/desktop/DesktopEntries.h"

namespace {

using zt::test::MadeUpDesktop;

std::string applicationIni(const std::string& version) {
  return "; a comment\n[Gecko]\nMinVersion=1\nVersion=2\n\n[App]\nVendor=Mozilla\nVersion=" +
         version + "\nBuildID=20241121\n[Other]\nVersion=3\n";
}

std::string metainfo(const std::string& version) {
  return "<component><id>mail.desktop</id><releases><release version=\"" + version +
         "\" date=\"2024-11-21\"/></releases></component>";
}

class ApplicationVersionTest : public testing::Test {
 protected:
  std::string version(const std::vector<std::string>& command,
                      const std::string& entry = "usr/share/applications/mail.desktop") const {
    return zt::versionOf({_desktop.path(entry), "Mail", command}, zt::dataFolders(_desktop.root()),
                         _desktop.root());
  }
  void installPackage(const std::string& entry, const std::string& packageVersion) const {
    _desktop.write("var/lib/dpkg/info/mail.list", _desktop.path(entry) + "\n");
    _desktop.write("var/lib/dpkg/status", "Package: mail\nVersion: " + packageVersion + "\n\n");
  }

  MadeUpDesktop _desktop;
};

TEST_F(ApplicationVersionTest, IsThatOfTheApplicationItself) {
  _desktop.program("usr/lib/mail/mail");
  const struct {
    std::string file;
    const char* version;
  } rows[] = {
      {applicationIni("128.5.0"), "128.5.0"},
      {"[App]\r\nName=Mail\r\nVersion = 1.2 \r\n", "1.2"},
      {"Version=1\n[App]\n;Version=2\nVersions=3\n", ""},
      {"[App]\nVersion=\n", ""},
      {"", ""},
  };
  for (const auto& row : rows) {
    _desktop.write("usr/lib/mail/application.ini", row.file);
    EXPECT_EQ(version({_desktop.path("usr/lib/mail/mail"), "%u"}), row.version) << row.file;
  }
  EXPECT_FALSE(_desktop.startedAProgram());
}

TEST_F(ApplicationVersionTest, ComesFromTheApplicationThenMetainfoThenThePackage) {
  _desktop.program("usr/bin/mail");
  EXPECT_EQ(version({"mail"}), "");
  _desktop.entry("usr/share/applications/mail.desktop", "");
  installPackage("usr/share/applications/mail.desktop", "1:3.0-1");
  EXPECT_EQ(version({"mail"}), "3.0");
  _desktop.write("usr/share/metainfo/mail.metainfo.xml", metainfo("2.0"));
  EXPECT_EQ(version({"mail"}), "2.0");
  _desktop.write("usr/lib64/mail/application.ini", applicationIni("1.0"));
  EXPECT_EQ(version({"mail"}), "1.0");
  EXPECT_FALSE(_desktop.startedAProgram());
}

TEST_F(ApplicationVersionTest, RpmIsAskedIfDpkgHasNoPackage) {
  _desktop.program("usr/bin/mail");
  _desktop.write("var/lib/rpm/rpmdb.sqlite", "");
  _desktop.script("usr/bin/rpm", "echo Version: 4.0\n");
  EXPECT_EQ(version({"mail"}), "4.0");
  installPackage("usr/share/applications/mail.desktop", "3.0-1");
  EXPECT_EQ(version({"mail"}), "3.0");
}

TEST_F(ApplicationVersionTest, ACopyOfAnEntryIsOfThePackageOfTheEntry) {
  _desktop.program("usr/bin/mail");
  _desktop.entry("usr/share/applications/mail.desktop", "");
  _desktop.entry("home/.local/share/applications/mail.desktop", "");
  installPackage("usr/share/applications/mail.desktop", "3.0-1");
  EXPECT_EQ(version({"mail"}, "home/.local/share/applications/mail.desktop"), "3.0");
}

TEST_F(ApplicationVersionTest, OfAFlatpakIsInItsDeployment) {
  const std::vector<std::string> command = {
      "/usr/bin/flatpak", "run", "--command=mail", "org.mail", "@@u", "%u", "@@"};
  const std::string files = "var/lib/flatpak/app/org.mail/current/active/files/";
  _desktop.write(files + "share/appdata/org.mail.appdata.xml", metainfo("2.0"));
  EXPECT_EQ(version(command), "2.0");
  _desktop.write(files + "lib/mail/application.ini", applicationIni("1.0"));
  EXPECT_EQ(version(command), "1.0");
}

TEST_F(ApplicationVersionTest, OfASnapIsInItsDescription) {
  _desktop.link("snap/bin/mail", _desktop.program("usr/bin/snap"));
  const std::vector<std::string> command = {_desktop.path("snap/bin/mail"), "%u"};
  const struct {
    const char* file;
    const char* version;
  } rows[] = {
      {"name: mail\nversion: 128.5.0-1\nsummary: reads mail\n", "128.5.0-1"},
      {"apps:\n  mail:\n    version: 2\nversion: '1.0'\n", "1.0"},
      {"version: \"1.0\"\n", "1.0"},
      {"versions: 2\n", ""},
      {"", ""},
  };
  for (const auto& row : rows) {
    _desktop.write("snap/mail/current/meta/snap.yaml", row.file);
    EXPECT_EQ(version(command), row.version) << row.file;
  }
  _desktop.write("snap/mail/current/usr/lib/mail/application.ini", applicationIni("3.0"));
  EXPECT_EQ(version(command), "3.0");
}

}  // namespace
