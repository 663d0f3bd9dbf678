// SPDX-License-Identifier: Apache-2.0
#include <dirent.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sched.h>
#include <signal.h>
#include <sys/mount.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstring>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "tests/support/OpenDescriptors.h"
#include "tests/support/ScopedUmask.h"
#include "tests/support/Subprocess.h"
#include "tests/unit/platform/files/LinuxFilesFixture.h"

namespace {

using testing::IsEmpty;
using testing::Optional;
using zt::test::inForkedProcess;
using zt::test::kNotPermitted;
using zt::test::modeOf;
using zt::test::openDescriptors;
using zt::test::ScopedUmask;

/// A file system in memory over `folder`, seen by this process alone.
bool mountTmpfs(const std::string& folder, const char* options) {
  return ::unshare(CLONE_NEWNS) == 0 &&
         ::mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 &&
         ::mount("none", folder.c_str(), "tmpfs", 0, options) == 0;
}

class LinuxFilesTest : public zt::test::LinuxFilesFixture {};

// Regression: a new file had mode 0600 whatever the umask.
TEST_F(LinuxFilesTest, NewFilesAndFoldersGetTheModeThatTheUmaskLeaves) {
  for (const mode_t mask : {0U, 022U, 027U, 077U}) {
    const ScopedUmask umask(mask);
    const std::string name = "folder" + std::to_string(mask);
    ASSERT_TRUE(_files.createFolders(_folder.path(name + "/below"))) << mask;
    EXPECT_EQ(modeOf(_folder.path(name)), 0777U & ~mask) << mask;
    EXPECT_EQ(modeOf(_folder.path(name + "/below")), 0777U & ~mask) << mask;
    ASSERT_TRUE(_files.write(_folder.path(name + "/file"), "content")) << mask;
    EXPECT_EQ(modeOf(_folder.path(name + "/file")), 0666U & ~mask) << mask;
  }
}

TEST_F(LinuxFilesTest, AnExistingFileKeepsItsModeAndStaysTheSameFile) {
  const std::string path = _folder.write("file", "before");
  const std::string otherName = _folder.path("other");
  std::filesystem::create_hard_link(path, otherName);
  ASSERT_EQ(::chmod(path.c_str(), 0640), 0);
  ASSERT_TRUE(_files.write(path, "after"));
  EXPECT_EQ(modeOf(path), 0640U);
  EXPECT_THAT(read(otherName), Optional(std::string("after")));
}

TEST_F(LinuxFilesTest, FollowsLinks) {
  _folder.write("folder/file", "before");
  std::filesystem::create_symlink("folder", _folder.path("link"));
  EXPECT_TRUE(_files.isFolder(_folder.path("link")));
  EXPECT_TRUE(_files.createFolders(_folder.path("link")));
  EXPECT_TRUE(_files.createFolders(_folder.path("link/below")));
  EXPECT_TRUE(_files.write(_folder.path("link/file"), "after"));
  EXPECT_THAT(read(_folder.path("folder/file")), Optional(std::string("after")));
  EXPECT_TRUE(_files.isFolder(_folder.path("folder/below")));
}

TEST_F(LinuxFilesTest, ALinkToNothingDoesNotExistAndCanBeRemoved) {
  const std::string link = _folder.path("link");
  std::filesystem::create_symlink("missing", link);
  EXPECT_FALSE(_files.exists(link));
  EXPECT_EQ(read(link), std::nullopt);
  EXPECT_FALSE(_files.createFolders(link + "/below"));
  EXPECT_TRUE(_files.remove(link));
  EXPECT_FALSE(std::filesystem::is_symlink(link));
}

// Regression: nothing was written through a link to a missing file.
TEST_F(LinuxFilesTest, WritingThroughALinkToNothingCreatesTheTarget) {
  std::filesystem::create_symlink("target", _folder.path("link"));
  EXPECT_TRUE(_files.write(_folder.path("link"), "content"));
  EXPECT_THAT(read(_folder.path("target")), Optional(std::string("content")));
  EXPECT_TRUE(std::filesystem::is_symlink(_folder.path("link")));
  std::filesystem::create_symlink("missing/target", _folder.path("nowhere"));
  EXPECT_FALSE(_files.write(_folder.path("nowhere"), "content"));
}

TEST_F(LinuxFilesTest, ListsInTheOrderOfTheFolder) {
  for (int i = 0; i < 50; ++i) _folder.write("file" + std::to_string(i * 7 % 50), "");
  std::vector<std::string> expected;
  const std::unique_ptr<DIR, int (*)(DIR*)> folder(::opendir(_folder.path().c_str()), ::closedir);
  ASSERT_NE(folder, nullptr);
  while (const dirent* entry = ::readdir(folder.get())) {
    const std::string name = entry->d_name;
    if (name != "." && name != "..") expected.push_back(name);
  }
  EXPECT_EQ(_files.list(_folder.path()), expected);
}

TEST_F(LinuxFilesTest, ReadsFilesWhoseSizeTheSystemDoesNotTell) {
  const std::optional<std::string> status = read("/proc/self/status");
  ASSERT_TRUE(status.has_value());
  EXPECT_TRUE(status->starts_with("Name:\t")) << *status;
}

TEST_F(LinuxFilesTest, AReadErrorMidwayGivesNothing) {
  // Opens for everyone who may trace this process; no memory is mapped at the address 0.
  ASSERT_TRUE(_files.exists("/proc/self/mem"));
  EXPECT_EQ(read("/proc/self/mem"), std::nullopt);
}

TEST_F(LinuxFilesTest, AFileBeyondTheSizeLimitIsNotLeftBehind) {
  const std::string path = _folder.path("file");
  const std::string link = _folder.path("link");
  const std::string target = _folder.write("target", "before");
  std::filesystem::create_symlink("target", link);
  const int failed = inForkedProcess([&] {
    ::signal(SIGXFSZ, SIG_IGN);
    const struct rlimit limit { 100'000, 100'000 };
    if (::setrlimit(RLIMIT_FSIZE, &limit) != 0) return kNotPermitted;
    if (!_files.write(path, std::string(100'000, 'x'))) return 1;
    if (_files.write(path, std::string(100'001, 'x'))) return 2;
    if (_files.write(link, std::string(300'000, 'x'))) return 3;
    if (_files.write(_folder.path("new"), std::string(300'000, 'x'))) return 4;
    return 0;
  });
  ASSERT_EQ(failed, 0);
  EXPECT_FALSE(_files.exists(path));
  EXPECT_FALSE(_files.exists(_folder.path("new")));
  EXPECT_FALSE(std::filesystem::is_symlink(link));
  EXPECT_THAT(read(target), Optional(std::string())) << "half a file is left";
}

TEST_F(LinuxFilesTest, AFileOnAFullFileSystemIsNotLeftBehind) {
  const int failed = inForkedProcess([&] {
    if (!mountTmpfs(_folder.path(), "size=64k")) return kNotPermitted;
    if (!_files.write(_folder.path("small"), "fits")) return 1;
    if (_files.write(_folder.path("large"), std::string(1024 * 1024, 'x'))) return 2;
    if (_files.list(_folder.path()) != std::vector<std::string>{"small"}) return 3;
    return _files.write(_folder.path("after"), "fits again") ? 0 : 4;
  });
  if (failed == kNotPermitted) GTEST_SKIP() << "mounting is not permitted";
  EXPECT_EQ(failed, 0);
}

TEST_F(LinuxFilesTest, ADeviceThatTakesNothingIsNotRemoved) {
  const std::string link = _folder.path("full");
  std::filesystem::create_symlink("/dev/full", link);
  EXPECT_FALSE(_files.write(link, "content"));
  EXPECT_TRUE(std::filesystem::is_symlink(link));
}

TEST_F(LinuxFilesTest, NothingIsChangedOnAReadOnlyFileSystem) {
  const int failed = inForkedProcess([&] {
    if (!mountTmpfs(_folder.path(), "")) return kNotPermitted;
    const std::string file = _folder.write("file", "kept");
    if (::mount("none", _folder.path().c_str(), "tmpfs", MS_REMOUNT | MS_RDONLY, "") != 0) {
      return kNotPermitted;
    }
    if (_files.write(file, "x")) return 1;
    if (_files.write(_folder.path("new"), "x")) return 2;
    if (_files.createFolders(_folder.path("a/b"))) return 3;
    if (_files.remove(file)) return 4;
    if (read(file) != "kept") return 5;
    return _files.createFolders(_folder.path()) ? 0 : 6;
  });
  if (failed == kNotPermitted) GTEST_SKIP() << "mounting is not permitted";
  EXPECT_EQ(failed, 0);
}

TEST_F(LinuxFilesTest, NothingIsChangedWithoutTheRightTo) {
  const std::string closed = _folder.path("closed");
  _folder.write("closed/file", "kept");
  ASSERT_EQ(::chmod(_folder.path().c_str(), 0755), 0);
  ASSERT_EQ(::chmod(closed.c_str(), 0555), 0);
  const std::string secret = _folder.path("secret");
  _folder.write("secret/file", "kept");
  ASSERT_EQ(::chmod(secret.c_str(), 0), 0);
  const int failed = inForkedProcess([&] {
    constexpr uid_t kNobody = 65534;
    if (::getuid() == 0 && (::setgid(kNobody) != 0 || ::setuid(kNobody) != 0)) {
      return kNotPermitted;
    }
    if (_files.write(closed + "/new", "x")) return 1;
    if (_files.createFolders(closed + "/a/b")) return 2;
    if (_files.remove(closed + "/file")) return 3;
    if (_files.list(secret)) return 4;
    if (_files.exists(secret + "/file")) return 5;
    if (read(secret + "/file")) return 6;
    return _files.list(closed) == std::vector<std::string>{"file"} ? 0 : 7;
  });
  ASSERT_EQ(::chmod(closed.c_str(), 0755), 0);
  ASSERT_EQ(::chmod(secret.c_str(), 0755), 0);
  if (failed == kNotPermitted) GTEST_SKIP() << "another user cannot be taken";
  EXPECT_EQ(failed, 0);
}

TEST_F(LinuxFilesTest, TheKernelsOwnFoldersTakeNoFile) {
  EXPECT_FALSE(_files.write("/proc/self/new", "x"));
  EXPECT_FALSE(_files.createFolders("/proc/self/new/folder"));
  EXPECT_FALSE(_files.remove("/proc/self/status"));
}

TEST_F(LinuxFilesTest, LeavesNoFileOpen) {
  const std::ptrdiff_t before = openDescriptors();
  for (int i = 0; i < 10; ++i) {
    _files.write(_folder.path("file"), "x");
    _files.write(_folder.path("missing/file"), "x");
    read(_folder.path("file"));
    read(_folder.path());
    _files.list(_folder.path());
    _files.list(_folder.path("file"));
  }
  EXPECT_EQ(openDescriptors(), before);
}

}  // namespace
