#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/unit/platform/desktop/MadeUpDesktop.h"
#include "ztportal/platform/desktop/ApplicationVersion.h"
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
  EXPECT_EQ(zt::regularFile(log),
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

}  // namespace
