#include <dlfcn.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>

#include "TestPaths.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/ScopedEnvironment.h"
#include "tests/support/TemporaryFolder.h"
#include "ztportal/platform/Free.h"
#include "ztportal/platform/process/ProgramPath.h"

namespace {

using zt::test::ChildProcess;
using zt::test::ScopedEnvironment;
using zt::test::TemporaryFolder;

constexpr const char* kTellFolder = "ZT_TEST_TELL_LIBEXEC_FOLDER";

/// A copy of this program that is started with the variable set says where it finds the folder.
const bool kIsTelling = [] {
  if (std::getenv(kTellFolder) == nullptr) return false;
  std::puts(zt::libexecFolder().c_str());
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

  /// A copy of `file` at `name`.
  std::string copy(const std::string& file, const std::string& name) {
    std::string path = _root + "/" + name;
    std::filesystem::create_directories(std::filesystem::path(path).parent_path());
    std::filesystem::copy_file(file, path);
    return path;
  }

  /// What a copy of this program, which the library is linked into, finds.
  std::optional<std::string> foundByProgram(const std::string& name) {
    const ScopedEnvironment tell(kTellFolder, "");
    ChildProcess program({copy("/proc/self/exe", name)});
    return program.readLine(std::chrono::seconds(60));
  }

  /// What a copy of a shared library with the code in it finds.
  std::string foundByLibrary(const std::string& name) {
    const std::string path = copy(zt::test::paths::kLibexecLibrary, name);
    const std::unique_ptr<void, zt::Free<::dlclose>> library(::dlopen(path.c_str(), RTLD_NOW));
    if (!library) return ::dlerror();
    using Function = const char*();
    auto* const function = reinterpret_cast<Function*>(::dlsym(library.get(), "zt_libexec_folder"));
    return function != nullptr ? function() : "no such function";
  }

  TemporaryFolder _folder;
  std::string _root;
};

TEST_F(LibexecFolderTest, HoldsTheProgramsOfThisBuild) {
  EXPECT_EQ(::access((zt::libexecFolder() + "/dscl").c_str(), X_OK), 0) << zt::libexecFolder();
}

TEST_F(LibexecFolderTest, StandsBesideTheFolderOfTheProgram) {
  const std::string libexec = makeFolder("libexec/ztportal");
  EXPECT_EQ(foundByProgram("bin/program"), libexec);
}

TEST_F(LibexecFolderTest, StandsBesideTheFolderOfTheLibrary) {
  const std::string libexec = makeFolder("prefix/libexec/ztportal");
  EXPECT_EQ(foundByLibrary("prefix/lib/libsome.so"), libexec);
  EXPECT_EQ(foundByLibrary("prefix/lib64/libsome.so"), libexec);
  EXPECT_EQ(foundByLibrary("prefix/lib/x86_64-linux-gnu/libsome.so"), libexec);
}

TEST_F(LibexecFolderTest, TheNearestCounts) {
  const std::string near = makeFolder("a/b/libexec/ztportal");
  makeFolder("a/libexec/ztportal");
  EXPECT_EQ(foundByLibrary("a/b/lib/libsome.so"), near);
}

TEST_F(LibexecFolderTest, LinksToTheLibraryAreFollowed) {
  const std::string libexec = makeFolder("real/libexec/ztportal");
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

TEST_F(LibexecFolderTest, LastIsWhereTheBuildWasToBeInstalled) {
  const std::string configured = zt::test::paths::kLibexecFolder;
  const std::string expected = std::filesystem::is_directory(configured) ? configured : "";
  EXPECT_EQ(foundByProgram("bin/program"), expected);
  _folder.write("libexec/ztportal", "a file");
  EXPECT_EQ(foundByLibrary("lib/libsome.so"), expected);
}

}  // namespace
