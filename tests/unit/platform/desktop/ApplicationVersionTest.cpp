#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/unit/platform/desktop/MadeUpDesktop.h"
#include "ztportal/platform/desktop/ApplicationVersion.h"
#include "ztportal/platform/desktop/DesktopEntries.h"
#include "ztportal/platform/files/LinuxFiles.h"

namespace {

using zt::dpkgVersion;
using zt::rpmVersion;
using zt::test::MadeUpDesktop;

constexpr const char* kFile = "/usr/share/applications/mail.desktop";

class DpkgVersionTest : public testing::Test {
 protected:
  DpkgVersionTest() {
    _desktop.write("var/lib/dpkg/info/other.list", "/.\n/usr\n/usr/share/applications\n");
  }
  void putStatus(const std::string& version) const {
    _desktop.write("var/lib/dpkg/status",
                   "Package: mail-client-data\nStatus: install ok installed\nVersion: 9\n\n"
                   "Package: mail-client\nStatus: install ok installed\nPriority: optional\n"
                   "Description: reads mail\n Version: 8\n .\n Package: other\n"
                   "Version: " +
                       version + "\nDepends: libc6\n\nPackage: other\nVersion: 7\n");
  }
  std::string version(const std::vector<std::string>& guesses = {}) const {
    return dpkgVersion(kFile, guesses, _desktop.root());
  }

  MadeUpDesktop _desktop;
};

TEST_F(DpkgVersionTest, IsTheUpstreamPart) {
  _desktop.write("var/lib/dpkg/info/mail-client.list", std::string("/.\n") + kFile + "\n");
  const struct {
    const char* written;
    const char* upstream;
  } rows[] = {
      {"1.2", "1.2"},           {"1.2-3", "1.2"},
      {"1:1.2-3", "1.2"},       {"1:128.5.0esr-1~deb12u1", "128.5.0esr"},
      {"1.2-rc1-3", "1.2-rc1"}, {"131.0.6778.85-1", "131.0.6778.85"},
  };
  for (const auto& row : rows) {
    putStatus(row.written);
    EXPECT_EQ(version(), row.upstream) << row.written;
  }
}

TEST_F(DpkgVersionTest, IsThatOfThePackageThatHasTheFile) {
  putStatus("1.2");
  EXPECT_EQ(version(), "");
  const std::string file(kFile);
  for (const std::string& list :
       {file + "x\n", "/old" + file + "\n", file + "/below\n", file.substr(1) + "\n"}) {
    _desktop.write("var/lib/dpkg/info/mail-client.list", list);
    EXPECT_EQ(version(), "") << list;
  }
  _desktop.write("var/lib/dpkg/info/mail-client.md5sums", file);
  EXPECT_EQ(version(), "");
  for (const std::string& list : {file, file + "\n", "/usr\n" + file, file + "x\n" + file + "\n"}) {
    _desktop.write("var/lib/dpkg/info/mail-client.list", list);
    EXPECT_EQ(version(), "1.2") << list;
  }
}

TEST_F(DpkgVersionTest, APackageMayHaveSeveralArchitectures) {
  putStatus("1.2");
  _desktop.write("var/lib/dpkg/info/mail-client:amd64.list", kFile);
  EXPECT_EQ(version(), "1.2");
}

TEST_F(DpkgVersionTest, GuessesAreLookedAtFirst) {
  putStatus("1.2");
  _desktop.write("var/lib/dpkg/info/mail-client.list", kFile);
  EXPECT_EQ(version({"missing", "other", "mail-client"}), "1.2");
  // As is shown by a file that would be found otherwise.
  _desktop.write("var/lib/dpkg/info/mail-client-data.list", kFile);
  EXPECT_EQ(version({"mail-client-data"}), "9");
  EXPECT_EQ(version({"mail-client"}), "1.2");
}

TEST_F(DpkgVersionTest, IsEmptyWithoutAStatus) {
  _desktop.write("var/lib/dpkg/info/mail-client.list", kFile);
  EXPECT_EQ(version(), "");
  _desktop.write("var/lib/dpkg/status", "Package: mail-client\nStatus: install ok installed\n\n");
  EXPECT_EQ(version(), "");
  EXPECT_EQ(dpkgVersion(kFile, {}, _desktop.path("nowhere")), "");
}

class RpmVersionTest : public testing::Test {
 protected:
  std::string version() const { return rpmVersion(kFile, _desktop.root()); }

  MadeUpDesktop _desktop;
};

TEST_F(RpmVersionTest, IsAskedOfTheProgram) {
  _desktop.write("var/lib/rpm/rpmdb.sqlite", "");
  const std::string log = _desktop.path("asked");
  _desktop.script("usr/bin/rpm",
                  "printf '%s|' \"$@\" >" + log + "\necho Version: 128.5.0\necho Version: 1\n");
  EXPECT_EQ(version(), "128.5.0");
  EXPECT_EQ(zt::regularFile(log, zt::kSettingsFileLimit),
            "-q|-f|--queryformat|Version: %{VERSION}\\n|/usr/share/applications/mail.desktop|");
}

TEST_F(RpmVersionTest, IsEmptyForAFileOfNoPackage) {
  _desktop.write("usr/lib/sysimage/rpm/rpmdb.sqlite", "");
  _desktop.script("usr/bin/rpm", "echo \"file $5 is not owned by any package\"; exit 1\n");
  EXPECT_EQ(version(), "");
}

TEST_F(RpmVersionTest, IsNotAskedWithoutADatabase) {
  _desktop.program("usr/bin/rpm");
  EXPECT_EQ(version(), "");
  EXPECT_FALSE(_desktop.startedAProgram());
  _desktop.write("var/lib/rpm/Packages", "");
  EXPECT_EQ(version(), "");
  EXPECT_TRUE(_desktop.startedAProgram());
}

TEST_F(RpmVersionTest, IsEmptyWithoutTheProgram) {
  _desktop.write("var/lib/rpm/Packages.db", "");
  EXPECT_EQ(version(), "");
}

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

TEST_F(ApplicationVersionTest, TheApplicationGoesBeforeItsMetainfoAndThatBeforeThePackage) {
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

TEST_F(ApplicationVersionTest, RpmIsAskedWhereDpkgKnowsNothing) {
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

TEST_F(ApplicationVersionTest, AFlatpakTellsItWhereItIsDeployed) {
  const std::vector<std::string> command = {
      "/usr/bin/flatpak", "run", "--command=mail", "org.mail", "@@u", "%u", "@@"};
  const std::string files = "var/lib/flatpak/app/org.mail/current/active/files/";
  _desktop.write(files + "share/appdata/org.mail.appdata.xml", metainfo("2.0"));
  EXPECT_EQ(version(command), "2.0");
  _desktop.write(files + "lib/mail/application.ini", applicationIni("1.0"));
  EXPECT_EQ(version(command), "1.0");
}

TEST_F(ApplicationVersionTest, ASnapTellsItInItsDescription) {
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
