// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "tests/support/Subprocess.h"
#include "tests/support/TemporaryFolder.h"
#include "ztportal/platform/identity/LinuxGestalt.h"

namespace {

using zt::LinuxGestalt;
using zt::test::Subprocess;
using zt::test::TemporaryFolder;

using Numbers = std::optional<std::array<std::int32_t, 3>>;

/// The three separate numbers; nullopt if all of them fail.
Numbers numbersOf(LinuxGestalt& gestalt) {
  const auto major = gestalt.ask(zt::kGestaltSystemVersionMajor);
  const auto minor = gestalt.ask(zt::kGestaltSystemVersionMinor);
  const auto bugFix = gestalt.ask(zt::kGestaltSystemVersionBugFix);
  EXPECT_EQ(major.has_value(), minor.has_value());
  EXPECT_EQ(major.has_value(), bugFix.has_value());
  EXPECT_EQ(major.has_value(), gestalt.ask(zt::kGestaltSystemVersion).has_value());
  if (!major || !minor || !bugFix) return std::nullopt;
  return std::array{*major, *minor, *bugFix};
}

Numbers numbersFor(const std::map<std::string, std::string>& files) {
  const TemporaryFolder root;
  for (const auto& [name, content] : files) root.write(name, content);
  LinuxGestalt gestalt(root.path());
  return numbersOf(gestalt);
}

Numbers numbers(std::int32_t major, std::int32_t minor, std::int32_t bugFix) {
  return std::array{major, minor, bugFix};
}

std::string printed(const Numbers& numbers) {
  if (!numbers) return "nothing";
  return std::to_string((*numbers)[0]) + " " + std::to_string((*numbers)[1]) + " " +
         std::to_string((*numbers)[2]);
}

TEST(LinuxGestaltTest, ReturnsTheNumbersOfTheVersion) {
  const std::pair<const char*, Numbers> rows[] = {
      {"12", numbers(12, 0, 0)},
      {"40", numbers(40, 0, 0)},
      {"20240101", numbers(20240101, 0, 0)},
      {"22.04", numbers(22, 4, 0)},
      {"15.5", numbers(15, 5, 0)},
      {"9.3", numbers(9, 3, 0)},
      {"3.18.4", numbers(3, 18, 4)},
      {"1.2.3.4", numbers(1, 2, 3)},
      {"0.0.0", numbers(0, 0, 0)},
      {"007.08", numbers(7, 8, 0)},
      {"12.", numbers(12, 0, 0)},
      {"12..5", numbers(12, 0, 0)},
      {"3.19_alpha20230901", numbers(3, 19, 0)},
      {"24-rc1", numbers(24, 0, 0)},
      {"2147483647.2147483647.2147483647", numbers(2147483647, 2147483647, 2147483647)},
      {"2147483648", std::nullopt},
      {"1.2147483648", std::nullopt},
      {"1.2.99999999999999999999", std::nullopt},
      {"1.2.3.99999999999999999999", numbers(1, 2, 3)},
      {"", std::nullopt},
      {"rolling", std::nullopt},
      {"v12", std::nullopt},
      {".5", std::nullopt},
      {"-12", std::nullopt},
      {"+12", std::nullopt},
  };
  for (const auto& [version, expected] : rows) {
    const std::string text = std::string("VERSION_ID=") + version + "\n";
    EXPECT_EQ(printed(numbersFor({{"etc/os-release", text}})), printed(expected)) << version;
  }
}

TEST(LinuxGestaltTest, ReadsTheReleaseFileAsAShellDoes) {
  const std::pair<std::string, Numbers> rows[] = {
      {"VERSION_ID=12", numbers(12, 0, 0)},
      {"VERSION_ID=\"12.5\"\n", numbers(12, 5, 0)},
      {"VERSION_ID='12.5'\n", numbers(12, 5, 0)},
      {"VERSION_ID=\"12\".'5'.6\n", numbers(12, 5, 6)},
      {"VERSION_ID=1\\2.5\n", numbers(12, 5, 0)},
      {"VERSION_ID=\"\\\"12\"\n", std::nullopt},
      {"VERSION_ID='1\\2'\n", numbers(1, 0, 0)},
      {"VERSION_ID=\"1\\2\"\n", numbers(1, 0, 0)},
      {"VERSION_ID=12.5   \t\n", numbers(12, 5, 0)},
      {"VERSION_ID=12.5 # a comment\n", numbers(12, 5, 0)},
      {"VERSION_ID=12.5\r\n", numbers(12, 5, 0)},
      {"VERSION_ID=\"12.5\"\r\nNAME=x\r\n", numbers(12, 5, 0)},
      {"\n\n# VERSION_ID=1\n  \tVERSION_ID=12\n", numbers(12, 0, 0)},
      {"NAME=\"VERSION_ID=1\"\nVERSION_ID=12\nVERSION=13\n", numbers(12, 0, 0)},
      {"OLD_VERSION_ID=1\nVERSION_ID_X=2\nVERSION_ID=12\n", numbers(12, 0, 0)},
      {"VERSION_ID=11\nVERSION_ID=12\n", numbers(12, 0, 0)},
      {"VERSION_ID=12\nVERSION_ID=\"13\n", numbers(12, 0, 0)},
      {"VERSION_ID=\"12\n", std::nullopt},
      {"VERSION_ID = 12\n", std::nullopt},
      {"VERSION_ID\n", std::nullopt},
      {"version_id=12\n", std::nullopt},
      {"=12\n", std::nullopt},
      {"NAME=Rolling\nID=rolling\nBUILD_ID=rolling\n", std::nullopt},
      {"", std::nullopt},
      {std::string("\0\0VERSION_ID=12", 15), std::nullopt},
  };
  for (const auto& [text, expected] : rows) {
    EXPECT_EQ(printed(numbersFor({{"etc/os-release", text}})), printed(expected)) << text;
  }
}

TEST(LinuxGestaltTest, TheFirstReleaseFileThatCanBeReadCounts) {
  EXPECT_EQ(printed(numbersFor({{"usr/lib/os-release", "VERSION_ID=5\n"}})), "5 0 0");
  EXPECT_EQ(printed(numbersFor(
                {{"etc/os-release", "VERSION_ID=6\n"}, {"usr/lib/os-release", "VERSION_ID=5\n"}})),
            "6 0 0");
  EXPECT_EQ(printed(numbersFor(
                {{"etc/os-release", "ID=rolling\n"}, {"usr/lib/os-release", "VERSION_ID=5\n"}})),
            "nothing");
  EXPECT_EQ(printed(numbersFor(
                {{"etc/os-release/is a folder", ""}, {"usr/lib/os-release", "VERSION_ID=5\n"}})),
            "5 0 0");
  EXPECT_EQ(printed(numbersFor({})), "nothing");
}

TEST(LinuxGestaltTest, IsRefinedByTheDistributionsOwnFile) {
  const struct {
    const char* release;
    const char* file;
    const char* content;
    const char* expected;
  } rows[] = {
      {"ID=debian\nVERSION_ID=\"12\"\n", "etc/debian_version", "12.11\n", "12 11 0"},
      {"ID=\"debian\"\nVERSION_ID=12\n", "etc/debian_version", "12.11.3\n", "12 11 3"},
      {"ID=debian\nVERSION_ID=12\n", "etc/debian_version", "12\n", "12 0 0"},
      {"ID=debian\nVERSION_ID=12\n", "etc/debian_version", "13.1\n", "12 0 0"},
      {"ID=debian\nVERSION_ID=1\n", "etc/debian_version", "12.11\n", "1 0 0"},
      {"ID=debian\nVERSION_ID=12\n", "etc/debian_version", "trixie/sid\n", "12 0 0"},
      {"ID=debian\nVERSION_ID=12\n", "etc/debian_version", "", "12 0 0"},
      {"ID=debian\nVERSION_ID=12\n", "etc/debian_version", "12.99999999999\n", "12 0 0"},
      {"ID=debian\nVERSION_ID=12.4\n", "etc/debian_version", "12.5.6\n", "12 4 0"},
      {"ID=debian\n", "etc/debian_version", "12.11\n", "nothing"},
      {"ID=ubuntu\nID_LIKE=debian\nVERSION_ID=22.04\n", "etc/debian_version", "22.04.3\n",
       "22 4 0"},
      {"ID=centos\nVERSION_ID=\"7\"\n", "etc/redhat-release",
       "CentOS Linux release 7.9.2009 (Core)\n", "7 9 2009"},
      {"ID=centos\nVERSION_ID=\"7\"\n", "etc/centos-release",
       "CentOS Linux release 7.9.2009 (Core)\n", "7 9 2009"},
      {"ID=rocky\nVERSION_ID=9.3\n", "etc/redhat-release", "Rocky Linux release 9.3 (Blue Onyx)\n",
       "9 3 0"},
      {"ID=centos\nVERSION_ID=9\n", "etc/redhat-release", "CentOS Stream release 9\n", "9 0 0"},
      {"ID=fedora\nVERSION_ID=40\n", "etc/redhat-release", "Fedora release 41.1 (Forty One)\n",
       "40 0 0"},
      {"ID=x\nVERSION_ID=7\n", "etc/redhat-release", "no number: release\n", "7 0 0"},
      {"ID=x\nVERSION_ID=7\n", "etc/redhat-release", "release seven\n", "7 0 0"},
      {"ID=x\nVERSION_ID=7\n", "etc/redhat-release", "Seven 7.5\n", "7 0 0"},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(printed(numbersFor({{"etc/os-release", row.release}, {row.file, row.content}})),
              row.expected)
        << row.release << row.file << ": " << row.content;
  }
}

// Every Ubuntu had the bug-fix number 0.
TEST(LinuxGestaltTest, IsRefinedByTheVersionForPeople) {
  const std::pair<const char*, const char*> rows[] = {
      {"ID=ubuntu\nVERSION_ID=\"22.04\"\nVERSION=\"22.04.3 LTS (Jammy Jellyfish)\"\n", "22 4 3"},
      {"VERSION=\"20.04.6 LTS (Focal Fossa)\"\nVERSION_ID=\"20.04\"\nID=ubuntu\n", "20 4 6"},
      {"ID=ubuntu\nVERSION_ID=\"23.10\"\nVERSION=\"23.10 (Mantic Minotaur)\"\n", "23 10 0"},
      {"ID=ubuntu\nVERSION_ID=\"22.04\"\nVERSION=\"24.04.1 LTS\"\n", "22 4 0"},
      {"ID=sles\nVERSION_ID=\"15.5\"\nVERSION=\"15-SP5\"\n", "15 5 0"},
      {"ID=ubuntu\nVERSION=\"22.04.3 LTS\"\n", "nothing"},
  };
  for (const auto& [release, expected] : rows) {
    EXPECT_EQ(printed(numbersFor({{"etc/os-release", release}})), expected) << release;
  }
}

TEST(LinuxGestaltTest, PacksTheVersionButNeverBelowTheSeparateNumbersFirst) {
  const std::pair<const char*, std::int32_t> rows[] = {
      {"12.3.4", 0x1234},
      {"22.04", 0x2240},
      {"20.10", 0x2090},
      {"10.4", 0x1040},
      {"10.4.11", 0x1049},
      {"10.3.9", 0x1040},
      {"7.9.2009", 0x1040},
      {"0", 0x1040},
      {"99.9.9", 0x9999},
      {"100", 0x9900},
      {"20240101", 0x9900},
      {"40", 0x4000},
      {"2147483647.2147483647.2147483647", 0x9999},
  };
  for (const auto& [version, expected] : rows) {
    const TemporaryFolder root;
    root.write("etc/os-release", std::string("VERSION_ID=") + version);
    EXPECT_EQ(LinuxGestalt(root.path()).ask(zt::kGestaltSystemVersion), expected) << version;
  }
}

TEST(LinuxGestaltTest, OtherSelectorsFail) {
  const TemporaryFolder root;
  root.write("etc/os-release", "VERSION_ID=12.3.4\n");
  LinuxGestalt gestalt(root.path());
  ASSERT_EQ(gestalt.ask(zt::kGestaltSystemVersionMajor), 12);
  for (const std::uint32_t selector :
       {0U, 0xFFFFFFFFU, zt::gestaltSelector("sys0"), zt::gestaltSelector("sys4"),
        zt::gestaltSelector("SYSV"), zt::gestaltSelector("vsys"), zt::gestaltSelector("mach")}) {
    EXPECT_EQ(gestalt.ask(selector), std::nullopt) << selector;
  }
}

/// This machine's version as the shell reads it, "12 11 0"; as the distribution refines it.
std::string versionByTheShell() {
  Subprocess shell({"/bin/sh", "-c",
                    "if [ -r /etc/os-release ]; then . /etc/os-release; "
                    "else . /usr/lib/os-release; fi; full=$VERSION_ID; finer=; "
                    "if [ \"$ID\" = debian ]; then finer=$(cat /etc/debian_version); fi; "
                    "for file in /etc/redhat-release /etc/centos-release; do "
                    "if [ -z \"$finer\" ] && [ -r $file ]; then "
                    "finer=$(sed 's/.*release \\([0-9.]*\\).*/\\1/' $file); fi; done; "
                    "case $finer in \"$full\".*) full=$finer;; esac; "
                    "echo \"$full\" | awk -F. '{print $1 + 0, $2 + 0, $3 + 0}'"});
  return shell.readLine(std::chrono::seconds(10)).value_or("no answer");
}

TEST(LinuxGestaltTest, ReturnsThisMachinesVersion) {
  LinuxGestalt gestalt;
  const Numbers version = numbersOf(gestalt);
  if (!version) GTEST_SKIP() << "this machine's distribution has no version";
  EXPECT_EQ(printed(version), versionByTheShell());
}

}  // namespace
