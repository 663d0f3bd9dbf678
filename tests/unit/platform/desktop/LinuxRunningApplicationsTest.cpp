// SPDX-License-Identifier: Apache-2.0
#include <gmock/gmock.h>
#include <grp.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <optional>
#include <string>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

#include "tests/support/ScopedEnvironment.h"
#include "tests/support/Subprocess.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/unit/platform/desktop/MadeUpDesktop.h"
#include "ztportal/platform/desktop/LinuxRunningApplications.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;
using zt::LinuxRunningApplications;
using zt::RunningApplication;
using zt::test::identified;
using zt::test::infoPlist;
using zt::test::inForkedProcess;
using zt::test::kNotPermitted;
using zt::test::ScopedEnvironment;
using zt::test::Subprocess;
using zt::test::TemporaryFolder;

/// "identifier path", in the order of the list.
std::vector<std::string> described(const std::vector<RunningApplication>& applications) {
  std::vector<std::string> texts;
  for (const RunningApplication& application : applications) {
    texts.push_back(std::string(application.bundleIdentifier.printed()) + " " +
                    application.bundlePath);
  }
  return texts;
}

/// A folder of bundles, and programs that run in them.
class LinuxRunningApplicationsTest : public testing::Test {
 protected:
  LinuxRunningApplicationsTest() {
    // As the kernel names it, where the way to it leads over links.
    _root = std::filesystem::canonical(_folder.path()).string();
  }

  std::string makeBundle(const std::string& name, const std::string& info) {
    _folder.write(name + "/Contents/Info.plist", info);
    std::filesystem::create_directories(_folder.path(name + "/Contents/Resources"));
    return _root + "/" + name;
  }

  std::string makeProgram(const std::string& name) {
    const std::string path = _root + "/" + name;
    std::filesystem::create_directories(std::filesystem::path(path).parent_path());
    std::filesystem::copy_file("/bin/sleep", path);
    return path;
  }

  /// A command of the shell that waits, without starting a program.
  std::string waiting() const {
    const std::string pipe = _folder.path("pipe");
    ::mkfifo(pipe.c_str(), S_IRUSR | S_IWUSR);
    return "read line <" + pipe;
  }

  /// Waits until `process` has become `program`. It has its command line a little later.
  static void waitUntilItRuns(const Subprocess& process, const std::string& program) {
    const std::string folder = "/proc/" + std::to_string(process.pid());
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(60);
    std::error_code error;
    while (std::filesystem::read_symlink(folder + "/exe", error) != program ||
           std::ifstream(folder + "/cmdline").get() == std::ifstream::traits_type::eof()) {
      ASSERT_LT(std::chrono::steady_clock::now(), end) << program << " does not start";
      std::this_thread::yield();
    }
  }

  /// What runs in this test's own folder.
  std::vector<std::string> running() {
    std::vector<RunningApplication> applications = LinuxRunningApplications().list();
    std::erase_if(applications, [this](const RunningApplication& application) {
      return !application.bundlePath.starts_with(_root);
    });
    return described(applications);
  }

  TemporaryFolder _folder;
  std::string _root;
};

TEST_F(LinuxRunningApplicationsTest, ListsAProgramThatRunsInABundle) {
  const std::string bundle = makeBundle("Some.app", identified("com.example.some"));
  const std::string program = makeProgram("Some.app/Contents/Linux/some");
  EXPECT_THAT(running(), IsEmpty());
  {
    const Subprocess process({program, "60"});
    EXPECT_THAT(running(), ElementsAre("com.example.some " + bundle));
  }
  EXPECT_THAT(running(), IsEmpty());
}

TEST_F(LinuxRunningApplicationsTest, ListsABundleOnceForEachOfItsProcesses) {
  const std::string bundle = makeBundle("Some.app", identified("com.example.some"));
  const std::string program = makeProgram("Some.app/Contents/Linux/some");
  const std::string helper = makeProgram("Some.app/Contents/Linux/deeper/helper");
  const Subprocess first({program, "60"});
  const Subprocess second({program, "60"});
  const Subprocess third({helper, "60"});
  const std::string expected = "com.example.some " + bundle;
  EXPECT_THAT(running(), ElementsAre(expected, expected, expected));
}

TEST_F(LinuxRunningApplicationsTest, AProcessCountsForItsNearestBundle) {
  makeBundle("Outer.app", identified("com.example.outer"));
  const std::string inner =
      makeBundle("Outer.app/Contents/Inner.app", identified("com.example.inner"));
  const Subprocess process({makeProgram("Outer.app/Contents/Inner.app/program"), "60"});
  EXPECT_THAT(running(), ElementsAre("com.example.inner " + inner));
}

TEST_F(LinuxRunningApplicationsTest, DoesNotListAProcessOutsideAnyBundle) {
  makeBundle("Some.app", identified("com.example.some"));
  const Subprocess process({makeProgram("program"), "60"});
  EXPECT_THAT(running(), IsEmpty());
}

TEST_F(LinuxRunningApplicationsTest, ABundleMayHaveNoIdentifier) {
  const std::string bundle = makeBundle("Some.app", infoPlist(""));
  const Subprocess process({makeProgram("Some.app/program"), "60"});
  const std::vector<RunningApplication> applications = LinuxRunningApplications().list();
  const auto found = std::find_if(applications.begin(), applications.end(),
                                  [&](const auto& each) { return each.bundlePath == bundle; });
  ASSERT_NE(found, applications.end());
  EXPECT_TRUE(found->bundleIdentifier.isNull());
}

TEST_F(LinuxRunningApplicationsTest, AReplacedExecutableStillCountsForItsBundle) {
  const std::string bundle = makeBundle("Some.app", identified("com.example.some"));
  const std::string program = makeProgram("Some.app/program");
  const Subprocess process({program, "60"});
  std::filesystem::remove(program);
  EXPECT_THAT(running(), ElementsAre("com.example.some " + bundle));
}

TEST_F(LinuxRunningApplicationsTest, AProcessThatEndedButWasNotWaitedForIsLeftOut) {
  makeBundle("Some.app", identified("com.example.some"));
  const Subprocess process({makeProgram("Some.app/program"), "60"});
  process.signal(SIGKILL);
  siginfo_t ended{};
  ASSERT_EQ(::waitid(P_PID, static_cast<id_t>(process.pid()), &ended, WEXITED | WNOWAIT), 0);
  EXPECT_THAT(running(), IsEmpty());
}

/// Runs `body` in a process that is user `user`; the result is that of inForkedProcess().
template <class Body>
int asUser(uid_t user, Body body) {
  return inForkedProcess([&] {
    if (::setgroups(0, nullptr) != 0 || ::setgid(user) != 0 || ::setuid(user) != 0) {
      return kNotPermitted;
    }
    return body();
  });
}

constexpr uid_t kUser = 30001;
constexpr uid_t kOtherUser = 30002;

// The applications of all users counted: anybody could send the reports of others to the test
// server.
TEST_F(LinuxRunningApplicationsTest, OtherUsersApplicationsDoNotCount) {
  std::filesystem::permissions(_root, std::filesystem::perms(0755));
  const std::string bundle = makeBundle("Some.app", identified("com.example.some"));
  const std::string program = makeProgram("Some.app/program");
  if (::geteuid() != 0) GTEST_SKIP() << "needs root";
  const std::vector<std::string> asOther = {"/usr/bin/setpriv", "--reuid=30002", "--regid=30002",
                                            "--clear-groups",   program,         "60"};
  const Subprocess process(asOther);
  waitUntilItRuns(process, program);
  EXPECT_THAT(running(), IsEmpty());
  EXPECT_EQ(asUser(kUser, [&] { return running().empty() ? 0 : 1; }), 0);
  EXPECT_EQ(asUser(kOtherUser, [&] { return running().size() == 1 ? 0 : 1; }), 0);
}

TEST_F(LinuxRunningApplicationsTest, RootsApplicationsCountForEverybody) {
  std::filesystem::permissions(_root, std::filesystem::perms(0755));
  const std::string bundle = makeBundle("Some.app", identified("com.example.some"));
  const std::string program = makeProgram("Some.app/program");
  if (::geteuid() != 0) GTEST_SKIP() << "needs root";
  const Subprocess process({program, "60"});
  waitUntilItRuns(process, program);
  // Another user may not read the link to the executable.
  EXPECT_EQ(asUser(kUser, [&] { return running().size() == 1 ? 0 : 1; }), 0);
}

/// A script in a bundle is run by a program that is in none.
TEST_F(LinuxRunningApplicationsTest, AScriptCountsForItsBundle) {
  const std::string bundle = makeBundle("Some.app", identified("com.example.some"));
  const std::string script = _root + "/Some.app/Contents/Linux/some";
  _folder.write("Some.app/Contents/Linux/some", "#!/bin/sh -e\necho started\n" + waiting());
  std::filesystem::permissions(script, std::filesystem::perms::owner_all);
  const std::string expected = "com.example.some " + bundle;
  const std::vector<std::string> commands[] = {
      {script},
      {script, "--option"},
      {"/bin/sh", script, _root},
      {"/bin/bash", "-u", script},
      {"/usr/bin/env", "-C", _root + "/Some.app/Contents", "/bin/sh", "Linux/some"},
  };
  for (const auto& command : commands) {
    Subprocess process(command);
    ASSERT_EQ(process.readLine(std::chrono::seconds(60)), "started");
    EXPECT_THAT(running(), ElementsAre(expected)) << testing::PrintToString(command);
  }
}

TEST_F(LinuxRunningApplicationsTest, AFileThatIsOnlyReadDoesNotCount) {
  makeBundle("Some.app", identified("com.example.some"));
  const std::string file = _folder.write("Some.app/Contents/file", "");
  const Subprocess reader({"/usr/bin/tail", "-f", file});
  waitUntilItRuns(reader, "/usr/bin/tail");
  const Subprocess shell({"/bin/sh", "-c", waiting(), file});
  waitUntilItRuns(shell, std::filesystem::canonical("/bin/sh").string());
  EXPECT_THAT(running(), IsEmpty());
}

/// Inside Flatpak an application is in /app, wherever that is on the machine.
TEST_F(LinuxRunningApplicationsTest, AnApplicationInsideFlatpakCountsForItsBundle) {
  makeBundle("Some.app", identified("com.example.some"));
  makeProgram("Some.app/program");
  const std::string script =
      "mount -t tmpfs none " + _root + "/sandbox && cd " + _root +
      "/sandbox && "
      "mkdir usr app && mount --rbind /usr usr && mount --bind " +
      _root +
      " app && "
      "cp -P /lib /lib64 . && { [ -z \"$FLATPAK\" ] || touch .flatpak-info; } && "
      "pivot_root . . && cd / && echo ready && exec /app/Some.app/program 60";
  std::filesystem::create_directories(_folder.path("sandbox"));
  for (const bool isFlatpak : {true, false}) {
    const ScopedEnvironment flatpak("FLATPAK", isFlatpak ? "1" : "");
    Subprocess process({"/usr/bin/unshare", "--mount", "/bin/sh", "-c", script});
    if (process.readLine(std::chrono::seconds(60)) != "ready") {
      GTEST_SKIP() << "no mounts can be made here";
    }
    waitUntilItRuns(process, "/app/Some.app/program");
    const std::string root = "/proc/" + std::to_string(process.pid()) + "/root";
    std::vector<RunningApplication> found = LinuxRunningApplications().list();
    std::erase_if(found, [&](const RunningApplication& application) {
      return !application.bundlePath.starts_with(root);
    });
    if (isFlatpak) {
      EXPECT_THAT(described(found), ElementsAre("com.example.some " + root + "/app/Some.app"));
    } else {
      EXPECT_THAT(described(found), IsEmpty()) << "another container";
    }
  }
}

/// A process table that is made up: a folder for each process, with a link to its executable.
class MadeUpProcessTableTest : public LinuxRunningApplicationsTest {
 protected:
  void addProcess(const std::string& name, const std::string& executable) {
    std::filesystem::create_directories(_folder.path("proc/" + name));
    std::filesystem::create_symlink(executable, _folder.path("proc/" + name + "/exe"));
    _folder.write("proc/" + name + "/status",
                  "Name:\tprogram\nUid:\t" + std::to_string(::geteuid()) + "\t0\t0\t0\n");
  }
  std::vector<std::string> listed() {
    return described(LinuxRunningApplications(_folder.path("proc")).list());
  }
};

TEST_F(MadeUpProcessTableTest, BrokenEntriesAreLeftOut) {
  const std::string bundle = makeBundle("Some.app", identified("com.example.some"));
  const std::string inBundle = bundle + "/program";
  addProcess("1", inBundle);
  std::filesystem::create_directories(_folder.path("proc/2"));  // a thread of the kernel
  _folder.write("proc/3", "not a folder");
  _folder.write("proc/4/exe", "not a link");
  addProcess("5", "relative/" + inBundle);
  addProcess("6", "(unreachable)" + inBundle);
  addProcess("7", "anon_inode:[memory]");
  addProcess("8", "/");
  addProcess("9", "/program");
  addProcess("self", inBundle);
  addProcess("10x", inBundle);
  addProcess("-11", inBundle);
  addProcess("12", "/" + std::string(3000, 'x') + "/program");
  addProcess("13", inBundle);
  EXPECT_THAT(listed(), ElementsAre("com.example.some " + bundle, "com.example.some " + bundle));
}

TEST_F(MadeUpProcessTableTest, AMarkOfDeletionDoesNoHarm) {
  const std::string bundle = makeBundle("Some.app", identified("com.example.some"));
  addProcess("1", bundle + "/program (deleted)");
  addProcess("2", _root + "/Gone.app/program (deleted)");
  EXPECT_THAT(listed(), ElementsAre("com.example.some " + bundle));
}

TEST_F(MadeUpProcessTableTest, ABundleWithoutAReadableInfoIsNone) {
  const std::string broken = makeBundle("Broken.app", "not a property list");
  addProcess("1", broken + "/program");
  addProcess("2", broken + "/program");
  EXPECT_THAT(listed(), IsEmpty());
}

TEST_F(MadeUpProcessTableTest, KeepsSeveralBundlesApart) {
  const std::string first = makeBundle("First.app", identified("com.example.first"));
  const std::string second = makeBundle("Second.app", identified("com.example.second"));
  for (int i = 0; i < 100; ++i) {
    addProcess(std::to_string(1000 + i), first + "/a" + std::to_string(i % 10) + "/program");
  }
  addProcess("1", second + "/program");
  addProcess("2", _root + "/program");
  const std::vector<std::string> texts = listed();
  EXPECT_EQ(std::count(texts.begin(), texts.end(), "com.example.first " + first), 100);
  EXPECT_EQ(std::count(texts.begin(), texts.end(), "com.example.second " + second), 1);
  EXPECT_EQ(texts.size(), 101U);
}

TEST_F(MadeUpProcessTableTest, FindsTheBundleFromEveryDepth) {
  const std::string outer = makeBundle("Outer.app", identified("outer"));
  const std::string inner = makeBundle("Outer.app/a/Inner.app", identified("inner"));
  std::string deep = inner;
  while (deep.size() < 3000) deep += "/d";
  const std::pair<std::string, std::string> rows[] = {
      {outer + "/program", "outer " + outer},     {inner + "/program", "inner " + inner},
      {outer + "/a/program", "outer " + outer},   {deep + "/program", "inner " + inner},
      {outer + "/a/b/program", "outer " + outer}, {inner + "/b/program", "inner " + inner},
  };
  for (std::size_t i = 0; i < std::size(rows); ++i) addProcess(std::to_string(i), rows[i].first);
  std::vector<std::string> expected;
  for (const auto& entry : std::filesystem::directory_iterator(_folder.path("proc"))) {
    expected.push_back(rows[std::stoul(entry.path().filename().string())].second);
  }
  EXPECT_EQ(listed(), expected);
}

TEST_F(MadeUpProcessTableTest, IsInTheOrderOfTheTable) {
  std::vector<std::string> expected;
  for (const char* number : {"5", "3", "10", "1", "7"}) {
    const std::string name = std::string("Of") + number + ".app";
    addProcess(number, makeBundle(name, identified(number)) + "/program");
  }
  for (const auto& entry : std::filesystem::directory_iterator(_folder.path("proc"))) {
    const std::string number = entry.path().filename().string();
    expected.push_back(number + " " + _root + "/Of" + number + ".app");
  }
  EXPECT_EQ(listed(), expected);
}

TEST_F(MadeUpProcessTableTest, SeesABundleThatChangesBetweenTwoCalls) {
  addProcess("1", makeBundle("Some.app", identified("before")) + "/program");
  ASSERT_THAT(listed(), ElementsAre("before " + _root + "/Some.app"));
  makeBundle("Some.app", identified("after"));
  EXPECT_THAT(listed(), ElementsAre("after " + _root + "/Some.app"));
}

TEST_F(MadeUpProcessTableTest, PathsInsideFlatpakStartAtTheRootOfTheProcess) {
  const std::string bundle = makeBundle("proc/1/root/none/Some.app", identified("some"));
  const std::string script = _folder.write("proc/1/root/none/Some.app/Contents/some.py", "");
  addProcess("1", "/none/Some.app/program");
  addProcess("2", "/usr/bin/python3.11");
  _folder.write("proc/1/root/none/Some.app/program", "");
  std::filesystem::create_symlink(_root + "/proc/1/root", _folder.path("proc/2/root"));
  EXPECT_THAT(listed(), IsEmpty());
  _folder.write("proc/1/root/.flatpak-info", "");
  EXPECT_THAT(listed(), ElementsAre("some " + bundle));
  for (const std::string file : {"/none/Some.app/Contents/some.py", "Contents/some.py"}) {
    _folder.write("proc/2/cmdline", std::string("python\0-u\0", 10) + file + std::string(1, '\0'));
    std::filesystem::remove(_folder.path("proc/2/cwd"));
    std::filesystem::create_symlink("/none/Some.app", _folder.path("proc/2/cwd"));
    EXPECT_THAT(listed(), UnorderedElementsAre("some " + bundle,
                                               "some " + _root + "/proc/2/root/none/Some.app"));
  }
}

TEST_F(MadeUpProcessTableTest, AProcessOfAnUnknownUserIsLeftOut) {
  addProcess("1", makeBundle("Some.app", identified("some")) + "/program");
  for (const char* status : {"", "Name:\tprogram\n", "Uid:\t0\n", "Name:\tprogram\nUid:\t\n",
                             "Name:\tprogram\nUid:\t30002\t0\t0\t0\n"}) {
    _folder.write("proc/1/status", status);
    EXPECT_THAT(listed(), IsEmpty()) << status;
  }
}

TEST_F(MadeUpProcessTableTest, WithoutATableNothingRuns) { EXPECT_THAT(listed(), IsEmpty()); }

}  // namespace
