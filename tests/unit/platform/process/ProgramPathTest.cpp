// SPDX-License-Identifier: Apache-2.0
#include <dlfcn.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "TestPaths.h"
#include "tests/support/ScopedEnvironment.h"
#include "tests/support/Subprocess.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/unit/platform/desktop/MadeUpDesktop.h"
#include "ztportal/base/Free.h"
#include "ztportal/platform/process/ProgramPath.h"

namespace {

using zt::programPath;
using zt::test::inForkedProcess;
using zt::test::MadeUpDesktop;
using zt::test::ScopedEnvironment;
using zt::test::Subprocess;
using zt::test::TemporaryFolder;

constexpr const char* kTellPath = "ZT_TEST_TELL_EXECUTABLE_PATH";

/// A copy of this program that is started with the variable set says where it is and does nothing
/// else; with "deleted" it deletes its own file before.
const bool kIsTellingPath = [] {
  const char* how = std::getenv(kTellPath);
  if (how == nullptr) return false;
  if (std::string(how) == "deleted") std::filesystem::remove(zt::executablePath());
  std::puts(zt::executablePath().c_str());
  std::exit(0);
}();

/// The output of a copy of this program at `path`.
std::optional<std::string> toldBy(const std::string& path, const char* how) {
  std::filesystem::create_directories(std::filesystem::path(path).parent_path());
  std::filesystem::copy_file("/proc/self/exe", path);
  const ScopedEnvironment environment(kTellPath, how);
  Subprocess copy({path});
  std::optional<std::string> told = copy.readLine(std::chrono::seconds(60));
  EXPECT_EQ(copy.wait(), 0);
  return told;
}

class ExecutableTest : public testing::Test {
 protected:
  ExecutableTest() : _root(std::filesystem::canonical(_folder.path()).string()) {}

  TemporaryFolder _folder;
  std::string _root;
};

TEST_F(ExecutableTest, IsThisProgram) {
  const std::string path = zt::executablePath();
  EXPECT_TRUE(path.starts_with('/')) << path;
  EXPECT_TRUE(std::filesystem::equivalent(path, "/proc/self/exe")) << path;
}

TEST_F(ExecutableTest, MayBeLong) {
  std::string path = _root;
  for (int i = 0; i < 15; ++i) path += "/" + std::string(200, static_cast<char>('a' + i));
  EXPECT_EQ(toldBy(path + "/program", ""), path + "/program");
}

TEST_F(ExecutableTest, MayHaveAnyName) {
  const std::string path = _root + "/\xc3\xa4 \xff (1)/program (x)";
  EXPECT_EQ(toldBy(path, ""), path);
}

TEST_F(ExecutableTest, KeepsItsPathWhenItIsDeleted) {
  EXPECT_EQ(toldBy(_root + "/program", "deleted"), _root + "/program");
  EXPECT_FALSE(std::filesystem::exists(_root + "/program"));
}

TEST_F(ExecutableTest, MayBeNamedLikeADeletedFile) {
  const std::string path = _root + "/program (deleted)";
  EXPECT_EQ(toldBy(path, ""), path);
  std::filesystem::remove(path);
  EXPECT_EQ(toldBy(path, "deleted"), path);
}

constexpr const char* kTellFolder = "ZT_TEST_TELL_LIBEXEC_FOLDER";

/// A copy of this program that is started with the variable set says where it finds the folder, or
/// if it is "missing" which programs it does not find.
const bool kIsTellingFolder = [] {
  const char* const what = std::getenv(kTellFolder);
  if (what == nullptr) return false;
  std::string told = zt::libexecFolder();
  if (what == std::string_view("missing")) {
    told.clear();
    for (const std::string& path : zt::missingLibexecPrograms()) told.append(path).append(" ");
  }
  std::puts(told.c_str());
  std::fflush(stdout);
  ::_exit(0);
}();

class LibexecFolderTest : public testing::Test {
 protected:
  LibexecFolderTest() : _root(std::filesystem::canonical(_folder.path()).string()) {}

  std::string makeFolder(const std::string& name) {
    std::filesystem::create_directories(_root + "/" + name);
    return _root + "/" + name;
  }

  /// Copies `file` to `name`.
  std::string copy(const std::string& file, const std::string& name) {
    std::string path = _root + "/" + name;
    std::filesystem::create_directories(std::filesystem::path(path).parent_path());
    std::filesystem::copy_file(file, path);
    return path;
  }

  /// What a copy of this program finds; the library is linked into it.
  std::optional<std::string> foundByProgram(const std::string& name, const char* what = "") {
    const ScopedEnvironment tell(kTellFolder, what);
    Subprocess program({copy("/proc/self/exe", name)});
    return program.readLine(std::chrono::seconds(60));
  }

  /// The folder that a copy of a shared library with this code finds.
  std::string foundByLibrary(const std::string& name, const char* symbol = "zt_libexec_folder") {
    const std::string path = copy(zt::test::paths::kLibexecLibrary, name);
    const std::unique_ptr<void, zt::Free<::dlclose>> library(::dlopen(path.c_str(), RTLD_NOW));
    if (!library) return ::dlerror();
    using Function = const char*();
    auto* const function = reinterpret_cast<Function*>(::dlsym(library.get(), symbol));
    return function != nullptr ? function() : "no such function";
  }

  TemporaryFolder _folder;
  std::string _root;
};

TEST_F(LibexecFolderTest, ContainsTheProgramsOfThisBuild) {
  EXPECT_EQ(::access((zt::libexecFolder() + "/dscl").c_str(), X_OK), 0) << zt::libexecFolder();
}

TEST_F(LibexecFolderTest, IsNextToTheFolderOfTheProgram) {
  const std::string libexec = makeFolder("libexec/ztportal-1");
  EXPECT_EQ(foundByProgram("bin/program"), libexec);
}

TEST_F(LibexecFolderTest, IsNextToTheFolderOfTheLibrary) {
  const std::string libexec = makeFolder("prefix/libexec/ztportal-1");
  EXPECT_EQ(foundByLibrary("prefix/lib/libsome.so"), libexec);
  EXPECT_EQ(foundByLibrary("prefix/lib64/libsome.so"), libexec);
  EXPECT_EQ(foundByLibrary("prefix/lib/x86_64-linux-gnu/libsome.so"), libexec);
}

TEST_F(LibexecFolderTest, TheNearestCounts) {
  const std::string near = makeFolder("a/b/libexec/ztportal-1");
  makeFolder("a/libexec/ztportal-1");
  EXPECT_EQ(foundByLibrary("a/b/lib/libsome.so"), near);
}

TEST_F(LibexecFolderTest, LinksToTheLibraryAreFollowed) {
  const std::string libexec = makeFolder("real/libexec/ztportal-1");
  copy(zt::test::paths::kLibexecLibrary, "real/lib/libsome.so.1");
  makeFolder("elsewhere");
  std::filesystem::create_symlink(_root + "/real/lib/libsome.so.1",
                                  _root + "/elsewhere/libsome.so");
  const std::unique_ptr<void, zt::Free<::dlclose>> library(
      ::dlopen((_root + "/elsewhere/libsome.so").c_str(), RTLD_NOW));
  ASSERT_NE(library, nullptr);
  using Function = const char*();
  EXPECT_EQ(reinterpret_cast<Function*>(::dlsym(library.get(), "zt_libexec_folder"))(), libexec);
}

// The prefix was trusted whoever had made the folder. It is any path that a build was given, such
// as one in /tmp, and may not be there where the library runs.
TEST_F(LibexecFolderTest, TheInstallationPrefixIsTheLastResort) {
  const std::string installed = foundByLibrary("lib/libasked.so", "zt_installed_folder");
  std::filesystem::remove_all(installed);
  EXPECT_EQ(foundByLibrary("lib/libfirst.so"), "");
  std::filesystem::create_directories(installed);
  EXPECT_EQ(foundByLibrary("lib/libsecond.so"), installed);
  ASSERT_EQ(::chmod(installed.c_str(), 0777), 0);
  EXPECT_EQ(foundByLibrary("lib/libthird.so"), "");
  ASSERT_EQ(::chmod(installed.c_str(), 0755), 0);
  _folder.write("libexec/ztportal-1", "a file");
  EXPECT_EQ(foundByLibrary("lib/libfourth.so"), installed);
  std::filesystem::remove_all(installed);
}

// A program in /tmp/setup ran whatever somebody had put into /tmp/libexec/ztportal-1.
TEST_F(LibexecFolderTest, OneThatSomebodyElseMayChangeIsNone) {
  const std::string configured = zt::test::paths::kLibexecFolder;
  const std::string none = std::filesystem::is_directory(configured) ? configured : "";
  const std::string folder = makeFolder("libexec/ztportal-1");
  ASSERT_EQ(foundByProgram("bin/first"), folder);
  for (const char* name : {"libexec", "libexec/ztportal-1"}) {
    const std::string path = _root + "/" + name;
    ASSERT_EQ(::chmod(path.c_str(), 0777), 0);
    EXPECT_EQ(foundByProgram("bin/writable" + std::to_string(path.size())), none) << name;
    ASSERT_EQ(::chmod(path.c_str(), 0755), 0);
    if (::chown(path.c_str(), 30001, 0) != 0) continue;  // needs root
    EXPECT_EQ(foundByProgram("bin/other" + std::to_string(path.size())), none) << name;
    ASSERT_EQ(::chown(path.c_str(), ::geteuid(), 0), 0);
  }
  EXPECT_EQ(foundByProgram("bin/last"), folder);
}

TEST_F(LibexecFolderTest, NamesWhatIsMissing) {
  if (std::filesystem::is_directory(zt::test::paths::kLibexecFolder)) {
    GTEST_SKIP() << "the library is installed here";
  }
  const std::string folder = _root + "/libexec/ztportal-1/";
  const std::string all = folder + "dscl " + folder + "ztportal-applications ";
  EXPECT_EQ(foundByProgram("bin/first", "missing"), all);
  EXPECT_EQ(foundByProgram("lib/x86_64-linux-gnu/second", "missing"), all);
  copy("/bin/true", "libexec/ztportal-1/dscl");
  EXPECT_EQ(foundByProgram("bin/third", "missing"), folder + "ztportal-applications ");
  copy("/bin/true", "libexec/ztportal-1/ztportal-applications");
  EXPECT_EQ(foundByProgram("bin/fourth", "missing"), "");
  EXPECT_TRUE(zt::missingLibexecPrograms().empty()) << "of this build";
}

class ProgramPathTest : public testing::Test {
 protected:
  std::string in(const std::string& path, const std::string& name) const {
    const ScopedEnvironment scoped("PATH", path.c_str());
    return programPath(name);
  }

  MadeUpDesktop _desktop;
  std::string _a = _desktop.path("a");
  std::string _b = _desktop.path("b");
};

TEST_F(ProgramPathTest, IsTheFirstInThePath) {
  _desktop.program("a/one");
  _desktop.program("b/one");
  _desktop.program("b/two");
  EXPECT_EQ(in(_a + ":" + _b, "one"), _a + "/one");
  EXPECT_EQ(in(_b + ":" + _a, "one"), _b + "/one");
  EXPECT_EQ(in(_a + ":" + _b, "two"), _b + "/two");
  EXPECT_EQ(in(_a + ":" + _b, "three"), "");
  EXPECT_EQ(in(_a, ""), "");
}

TEST_F(ProgramPathTest, OnlyWhatCanBeRunCounts) {
  _desktop.write("a/one", "no program");
  _desktop.write("a/folder/file", "");
  _desktop.link("a/link", "/nowhere");
  const std::string program = _desktop.program("b/one");
  EXPECT_EQ(in(_a + ":" + _b, "one"), program);
  EXPECT_EQ(in(_a, "one"), "");
  EXPECT_EQ(in(_a, "folder"), "");
  EXPECT_EQ(in(_a, "link"), "");
}

TEST_F(ProgramPathTest, ANameWithASlashIsThePath) {
  const std::string program = _desktop.program("a/one");
  EXPECT_EQ(in("", program), program);
  EXPECT_EQ(in(_a, "b/one"), "");
  EXPECT_EQ(in(_a, _b + "/one"), "");
}

TEST_F(ProgramPathTest, AnEmptyPlaceIsTheWorkingFolder) {
  _desktop.program("a/one");
  const int status = inForkedProcess([this] {
    std::filesystem::current_path(_a);
    for (const std::string& path : {std::string(), ":" + _b, _b + ":", _b + "::" + _b}) {
      if (in(path, "one") != "./one") return 1;
    }
    return in(_b, "one").empty() ? 0 : 2;
  });
  EXPECT_EQ(status, 0);
}

TEST_F(ProgramPathTest, WithoutAPathTheStandardOneIsSearched) {
  const ScopedEnvironment unset("PATH", nullptr);
  EXPECT_TRUE(programPath("sh").ends_with("/sh")) << programPath("sh");
  EXPECT_NE(zt::standardPath(), "");
}

}  // namespace
