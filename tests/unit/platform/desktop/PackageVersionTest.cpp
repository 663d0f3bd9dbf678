// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/unit/platform/desktop/MadeUpDesktop.h"
#include "ztportal/base/RegularFile.h"
#include "ztportal/platform/desktop/PackageVersion.h"

namespace {

using zt::packageVersion;
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
    return packageVersion(kFile, guesses, _desktop.root());
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
  EXPECT_EQ(packageVersion(kFile, {}, _desktop.path("nowhere")), "");
}

class RpmVersionTest : public testing::Test {
 protected:
  std::string version() const { return packageVersion(kFile, {}, _desktop.root()); }

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

// Applications that pacman, apk or Portage installed had no version, unless they brought it
// themselves.

TEST(PackageVersionTest, PacmanHasAFolderForEachPackage) {
  const MadeUpDesktop desktop;
  const std::string local = "var/lib/pacman/local/";
  const auto version = [&] { return packageVersion(kFile, {"mail"}, desktop.root()); };
  desktop.write(local + "ALPM_DB_VERSION", "9\n");
  desktop.write(local + "mail-data-9-1/files", "%FILES%\nusr/\nusr/share/applications/\n");
  desktop.write(local + "mail-data-9-1/desc", "%NAME%\nmail-data\n\n%VERSION%\n9-1\n");
  EXPECT_EQ(version(), "");
  desktop.write(local + "client-1-1/files",
                "%FILES%\nusr/\nusr/share/applications/mail.desktop\n\n%BACKUP%\netc/mail\t0\n");
  const struct {
    const char* description;
    const char* version;
  } rows[] = {
      {"%NAME%\nclient\n\n%VERSION%\n1:128.5.0-1\n\n%BASE%\nclient\n", "128.5.0"},
      {"%VERSION%\n131.0.6778.85-1\n", "131.0.6778.85"},
      {"%VERSION%\n1.2_rc1-1.1\n", "1.2_rc1"},
      {"%NAME%\nclient\n", ""},
      {"%VERSION%", ""},
      {"", ""},
  };
  for (const auto& row : rows) {
    desktop.write(local + "client-1-1/desc", row.description);
    EXPECT_EQ(version(), row.version) << row.description;
  }
  // A package of a likely name is looked at first.
  desktop.write(local + "mail-2-1/files", "%FILES%\nusr/share/applications/mail.desktop\n");
  desktop.write(local + "mail-2-1/desc", "%VERSION%\n2-1\n");
  desktop.write(local + "client-1-1/desc", "%VERSION%\n1-1\n");
  EXPECT_EQ(version(), "2");
}

TEST(PackageVersionTest, ApkHasOneFile) {
  const std::string other =
      "C:Q1x=\nP:other\nV:9-r0\nF:usr/share/applications\nR:other.desktop\n\n";
  const struct {
    std::string installed;
    const char* version;
  } rows[] = {
      {other +
           "P:mail\nV:128.5.0-r0\nF:usr\nF:usr/share/applications\nR:a.desktop\nZ:Q1=\n"
           "R:mail.desktop\nZ:Q1=\nF:usr/bin\nR:mail\n\n" +
           other,
       "128.5.0"},
      {"P:mail\nV:1.2_rc1-r12\nF:usr/share/applications\nR:mail.desktop", "1.2_rc1"},
      {"P:mail\nV:1.2\nF:usr/share/applications\nR:mail.desktop\n", "1.2"},
      {"P:mail\nV:1.2-r0\nF:usr/share/applications\nF:usr/share\nR:mail.desktop\n", ""},
      {"P:mail\nV:1.2-r0\nF:usr/share/applications/more\nR:mail.desktop\n", ""},
      {"P:mail\nV:1.2-r0\nF:share/applications\nR:mail.desktop\n", ""},
      {other, ""},
      {"", ""},
  };
  for (const char* file : {"lib/apk/db/installed", "usr/lib/apk/db/installed"}) {
    const MadeUpDesktop desktop;
    for (const auto& row : rows) {
      desktop.write(file, row.installed);
      EXPECT_EQ(packageVersion(kFile, {}, desktop.root()), row.version) << row.installed;
    }
  }
}

TEST(PackageVersionTest, PortageHasTheVersionInTheNameOfAFolder) {
  const struct {
    const char* package;
    const char* version;
  } rows[] = {
      {"mail-128.5.0", "128.5.0"},
      {"mail-bin-128.5.0-r1", "128.5.0"},
      {"mail-1.2_rc1_p20240101-r12", "1.2_rc1_p20240101"},
      {"other-1", "1"},
      {"mail-r-2", "2"},
      {"mail-1-rc", "rc"},
  };
  for (const auto& row : rows) {
    const MadeUpDesktop desktop;
    const std::string file = "var/db/pkg/mail-client/" + std::string(row.package) + "/CONTENTS";
    desktop.write("var/db/pkg/mail-client/mail-data-9/CONTENTS",
                  std::string("dir /usr\nobj ") + kFile + "x 0 1\nsym " + kFile + " -> x 1\n");
    for (const std::string start : {"", "dir /usr/share\n"}) {
      desktop.write(file,
                    start + "obj " + kFile + " d41d8cd98f00b204e9800998ecf8427e 1732190400\n");
      EXPECT_EQ(packageVersion(kFile, {"mail"}, desktop.root()), row.version) << row.package;
    }
    desktop.write(file, "dir /usr\n");
    EXPECT_EQ(packageVersion(kFile, {"mail"}, desktop.root()), "") << row.package;
  }
}

TEST(PackageVersionTest, APathThatIsNotAbsoluteIsInNoPackage) {
  const MadeUpDesktop desktop;
  desktop.write("lib/apk/db/installed", "V:1\nF:\nR:mail.desktop\n");
  EXPECT_EQ(packageVersion("mail.desktop", {}, desktop.root()), "");
  EXPECT_EQ(packageVersion("", {}, desktop.root()), "");
  EXPECT_EQ(packageVersion("/mail.desktop", {}, desktop.root()), "1");
}

}  // namespace
