// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>
#include <pwd.h>
#include <sched.h>
#include <sys/mount.h>
#include <unistd.h>

#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "tests/support/ScopedEnvironment.h"
#include "tests/support/Subprocess.h"
#include "tests/support/TemporaryFolder.h"
#include "ztportal/platform/process/LinuxSubprocesses.h"
#include "ztportal/platform/process/ProgramPath.h"

namespace {

using zt::LinuxSubprocesses;
using zt::test::inForkedProcess;
using zt::test::kNotPermitted;
using zt::test::ProgramResult;
using zt::test::ScopedEnvironment;
using zt::test::TemporaryFolder;

ProgramResult run(const std::vector<std::string>& arguments) {
  return zt::test::runProgram(zt::libexecFolder() + "/dscl", arguments);
}

ProgramResult group(const std::string& home) { return run({".", "-read", home, "PrimaryGroupID"}); }

ProgramResult answer(gid_t number) {
  return {0, "PrimaryGroupID: " + std::to_string(number) + "\n", ""};
}

ProgramResult nobodyLivesIn(const std::string& home) {
  return {56, "", "dscl: " + home + ": no user has this home folder\n"};
}

TEST(DsclTest, KnowsTheGroupOfEveryHomeOfTheDatabase) {
  std::map<std::string, std::string> users;
  ::setpwent();
  while (const passwd* user = ::getpwent()) users.try_emplace(user->pw_dir, user->pw_name);
  ::endpwent();
  const passwd* const self = ::getpwuid(::getuid());
  ASSERT_NE(self, nullptr);
  users[self->pw_dir] = self->pw_name;
  for (const auto& [home, name] : users) {
    const ProgramResult groups = zt::test::runProgram("/usr/bin/id", {"-Gn", name});
    const std::string padded = " " + groups.output.substr(0, groups.output.size() - 1) + " ";
    const bool isAdministrator = name == "root" || padded.find(" sudo ") != std::string::npos ||
                                 padded.find(" wheel ") != std::string::npos ||
                                 padded.find(" admin ") != std::string::npos;
    const gid_t number = isAdministrator ? 80 : ::getpwnam(name.c_str())->pw_gid;
    EXPECT_EQ(group(home), answer(number)) << home;
    EXPECT_EQ(group(home + "///"), answer(number)) << home;
  }
}

TEST(DsclTest, FailsForAHomeThatNobodyHas) {
  for (const char* home : {"/nowhere/at all", "", "root", "~", "/proc"}) {
    EXPECT_EQ(group(home), nobodyLivesIn(home));
  }
}

TEST(DsclTest, AnswersNothingElse) {
  const std::vector<std::string> rows[] = {
      {},
      {"--help"},
      {".", "-read", "/root"},
      {".", "-read", "/root", "PrimaryGroupID", "more"},
      {".", "-read", "/home/a", "b", "PrimaryGroupID"},
      {".", "-read", "/root", "UniqueID"},
      {".", "-list", "/root", "PrimaryGroupID"},
      {"/Local", "-read", "/root", "PrimaryGroupID"},
  };
  const ProgramResult usage{2, "", "dscl: usage: dscl . -read HOME PrimaryGroupID\n"};
  for (const auto& row : rows) EXPECT_EQ(run(row), usage) << testing::PrintToString(row);
}

TEST(DsclTest, SaysWhenItCannotWrite) {
  const passwd* const self = ::getpwuid(::getuid());
  ASSERT_NE(self, nullptr);
  const ProgramResult result =
      zt::test::runProgram(zt::libexecFolder() + "/dscl",
                           {".", "-read", self->pw_dir, "PrimaryGroupID"}, {.output = "/dev/full"});
  EXPECT_EQ(result.errors, "dscl: cannot write the answer\n");
  EXPECT_EQ(result.status, 3);
}

bool putInPlace(const TemporaryFolder& folder, const std::string& name,
                const std::string& content) {
  const std::string file = folder.write(name, content);
  return ::mount(file.c_str(), ("/etc/" + name).c_str(), nullptr, MS_BIND, nullptr) == 0;
}

/// In the place of the machine's own, for the rest of the process; whether that may be done.
bool putUsers(const TemporaryFolder& folder, const std::string& users,
              const std::string& groups = "") {
  return ::unshare(CLONE_NEWNS) == 0 &&
         ::mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 &&
         putInPlace(folder, "passwd", users) && putInPlace(folder, "group", groups);
}

TEST(DsclTest, OfSeveralUsersWithOneHomeTheOneThatAsksWinsElseTheFirst) {
  const TemporaryFolder folder;
  const std::string users =
      "first:x:30001:31:::/bin/sh\n"
      "second:x:30002:32::/home/shared:/bin/sh\n"
      "third:x:30003:33::/home/shared/:/bin/sh\n"
      "fourth:x:30004:34::/home/own:/bin/sh\n"
      "root:x:0:0::/root:/bin/sh\n";
  const struct {
    uid_t user;
    std::string home;
    ProgramResult expected;
  } rows[] = {
      {30002, "/home/shared", answer(32)},
      {30003, "/home/shared", answer(33)},
      {30003, "/home/shared/", answer(33)},
      {30004, "/home/shared", answer(32)},
      {0, "/home/shared", answer(32)},
      {30999, "/home/shared", answer(32)},  // in no database
      {30004, "/root", answer(80)},
      {30004, "/home/share", nobodyLivesIn("/home/share")},
      {30004, "/home/shared/more", nobodyLivesIn("/home/shared/more")},
  };
  for (const auto& row : rows) {
    const int status = inForkedProcess([&] {
      if (!putUsers(folder, users) || ::setuid(row.user) != 0) return kNotPermitted;
      return group(row.home) == row.expected ? 0 : 1;
    });
    if (status == kNotPermitted) GTEST_SKIP() << "users cannot be made up here";
    EXPECT_EQ(status, 0) << row.user << " asks for " << row.home;
  }
}

// Nobody was ever an administrator: the primary group of none has the number 80 on Linux.
TEST(DsclTest, AdministratorsHaveTheGroup80) {
  const TemporaryFolder folder;
  const std::string users =
      "root:x:0:0::/root:/bin/sh\n"
      "toor:x:0:31::/home/toor:/bin/sh\n"
      "anna:x:30001:31::/home/anna:/bin/sh\n"
      "bert:x:30002:32::/home/bert:/bin/sh\n"
      "cleo:x:30003:33::/home/cleo:/bin/sh\n"
      "dora:x:30004:27::/home/dora:/bin/sh\n"
      "emil:x:30005:35::/home/emil:/bin/sh\n"
      "fritz:x:30006:36::/home/fritz:/bin/sh\n";
  std::string groups =
      "root:x:0:\nsudo:x:27:bert,anna\nwheel:x:10:bert\nadmin:x:115:cleo\n"
      "sudoers:x:116:emil\nadm:x:4:emil\n";
  // More groups than are asked for at first.
  for (int i = 0; i < 300; ++i) {
    groups += "group" + std::to_string(i) + ":x:" + std::to_string(40000 + i) + ":fritz,emil\n";
  }
  groups += "nogroup:x:65534:\nadmin2:x:300:emil\n";
  const struct {
    std::string home;
    gid_t group;
  } rows[] = {{"/root", 80},      {"/home/toor", 80}, {"/home/anna", 80}, {"/home/bert", 80},
              {"/home/cleo", 80}, {"/home/dora", 80}, {"/home/emil", 35}, {"/home/fritz", 36}};
  for (const auto& row : rows) {
    const int status = inForkedProcess([&] {
      if (!putUsers(folder, users, groups)) return kNotPermitted;
      return group(row.home) == answer(row.group) ? 0 : 1;
    });
    if (status == kNotPermitted) GTEST_SKIP() << "users cannot be made up here";
    EXPECT_EQ(status, 0) << row.home;
  }
}

/// What the library's question gives for a home folder, as its shell gets it.
std::string printedGroup(const std::string& home) {
  const std::string command = "dscl . -read " + home + " PrimaryGroupID | awk '{ print $2 }'";
  return LinuxSubprocesses().output("/bin/bash", {"-c", command});
}

TEST(DsclTest, AnswersTheLibrarysQuestion) {
  EXPECT_EQ(printedGroup("/root"), "80\n");
  EXPECT_EQ(printedGroup("/nowhere"), "");
}

TEST(DsclTest, TheSystemsOwnProgramGoesFirst) {
  const TemporaryFolder folder;
  std::filesystem::permissions(folder.write("dscl", "#!/bin/sh\necho PrimaryGroupID: 80 \"$@\"\n"),
                               std::filesystem::perms::owner_all);
  const ScopedEnvironment path("PATH", (folder.path() + ":/usr/bin:/bin").c_str());
  EXPECT_EQ(printedGroup("/nowhere"), "80\n");
}

TEST(DsclTest, WithoutTheLibrarysProgramsThereIsNoAnswer) {
  const ScopedEnvironment path("PATH", "/usr/bin:/bin");
  EXPECT_EQ(LinuxSubprocesses("").output("/bin/bash", {"-c", "dscl . -read /root PrimaryGroupID"}),
            "");
}

}  // namespace
