#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>

#include <algorithm>
#include <cstddef>
#include <filesystem>
#include <iterator>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "tests/support/Subprocess.h"
#include "tests/support/TemporaryFolder.h"
#include "ztportal/platform/desktop/LinuxRunningApplications.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;
using zt::LinuxRunningApplications;
using zt::RunningApplication;
using zt::test::Subprocess;
using zt::test::TemporaryFolder;

std::string infoPlist(const std::string& entries) {
  return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist version=\"1.0\"><dict>" + entries +
         "</dict></plist>\n";
}

std::string identified(const std::string& identifier) {
  return infoPlist("<key>CFBundleIdentifier</key><string>" + identifier + "</string>");
}

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

/// A process table that is made up: a folder for each process, with a link to its executable.
class MadeUpProcessTableTest : public LinuxRunningApplicationsTest {
 protected:
  void addProcess(const std::string& name, const std::string& executable) {
    std::filesystem::create_directories(_folder.path("proc/" + name));
    std::filesystem::create_symlink(executable, _folder.path("proc/" + name + "/exe"));
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
  addProcess("1234567890123456789012345678901234567890", inBundle);
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

TEST_F(MadeUpProcessTableTest, WithoutATableNothingRuns) { EXPECT_THAT(listed(), IsEmpty()); }

}  // namespace
