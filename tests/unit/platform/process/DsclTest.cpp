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
  std::map<std::string, gid_t> groups;
  ::setpwent();
  while (const passwd* user = ::getpwent()) groups.try_emplace(user->pw_dir, user->pw_gid);
  ::endpwent();
  const passwd* const self = ::getpwuid(::getuid());
  ASSERT_NE(self, nullptr);
  groups[self->pw_dir] = self->pw_gid;
  for (const auto& [home, number] : groups) {
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

/// In the place of the machine's own, for the rest of the process; whether that may be done.
bool putUsers(const TemporaryFolder& folder, const std::string& users) {
  const std::string file = folder.write("passwd", users);
  return ::unshare(CLONE_NEWNS) == 0 &&
         ::mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 &&
         ::mount(file.c_str(), "/etc/passwd", nullptr, MS_BIND, nullptr) == 0;
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
      {30004, "/root", answer(0)},
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

/// What the library's question gives for a home folder, as its shell gets it.
std::string printedGroup(const std::string& home) {
  const std::string command = "dscl . -read " + home + " PrimaryGroupID | awk '{ print $2 }'";
  return LinuxSubprocesses().output("/bin/bash", {"-c", command});
}

TEST(DsclTest, AnswersTheLibrarysQuestion) {
  const passwd* const self = ::getpwuid(::getuid());
  ASSERT_NE(self, nullptr);
  EXPECT_EQ(printedGroup(self->pw_dir), std::to_string(self->pw_gid) + "\n");
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
