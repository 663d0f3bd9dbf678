// SPDX-License-Identifier: Apache-2.0
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <string>

#include "tests/support/OpenDescriptors.h"
#include "tests/support/ScopedUmask.h"
#include "tests/support/Subprocess.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/unit/platform/files/LinuxFilesFixture.h"
#include "ztportal/base/FileDescriptor.h"

// Folders and files that only their owner may use.

namespace {

namespace fs = std::filesystem;
using testing::Optional;
using zt::test::inForkedProcess;
using zt::test::kNotPermitted;
using zt::test::modeOf;
using zt::test::openDescriptors;
using zt::test::ScopedUmask;

class LinuxPrivateFilesTest : public zt::test::LinuxFilesFixture {
 protected:
  zt::test::TemporaryFolder _outside;
};

TEST_F(LinuxPrivateFilesTest, NewOnesAreTheirOwnersAloneWhateverTheUmask) {
  for (const mode_t mask : {0U, 022U, 077U, 0277U, 0777U}) {
    const ScopedUmask umask(mask);
    const std::string folder = _folder.path("folder" + std::to_string(mask));
    ASSERT_TRUE(_files.createPrivateFolders(folder + "/below")) << mask;
    EXPECT_EQ(modeOf(folder), 0700U) << mask;
    EXPECT_EQ(modeOf(folder + "/below"), 0700U) << mask;
    ASSERT_TRUE(_files.writePrivate(folder + "/below/file", "content")) << mask;
    EXPECT_EQ(modeOf(folder + "/below/file"), 0600U) << mask;
    EXPECT_THAT(read(folder + "/below/file"), Optional(std::string("content"))) << mask;
  }
}

TEST_F(LinuxPrivateFilesTest, ExistingOnesKeepTheirModes) {
  const std::string file = _folder.write("a/file", "before");
  ASSERT_EQ(::chmod(_folder.path("a").c_str(), 0755), 0);
  ASSERT_EQ(::chmod(file.c_str(), 0640), 0);
  ASSERT_TRUE(_files.createPrivateFolders(_folder.path("a")));
  ASSERT_TRUE(_files.writePrivate(file, "after"));
  EXPECT_EQ(modeOf(_folder.path("a")), 0755U);
  EXPECT_EQ(modeOf(file), 0640U);
}

TEST_F(LinuxPrivateFilesTest, AReplacedFileIsItsOwnersAloneAndALinkInItsPlaceGoes) {
  const std::string outside = _outside.write("target", "untouched");
  fs::create_symlink(outside, _folder.path("link"));
  for (const mode_t mask : {0U, 0777U}) {
    const ScopedUmask umask(mask);
    for (const char* name : {"new", "link"}) {
      ASSERT_TRUE(_files.replacePrivate(_folder.path(name), "content")) << name;
      EXPECT_EQ(modeOf(_folder.path(name)), 0600U) << name;
    }
  }
  EXPECT_FALSE(fs::is_symlink(_folder.path("link")));
  EXPECT_THAT(read(outside), Optional(std::string("untouched")));
}

TEST_F(LinuxPrivateFilesTest, LinksToFoldersAreFollowed) {
  fs::create_symlink(_outside.path(), _folder.path("link"));
  fs::create_symlink("missing", _folder.path("nowhere"));
  EXPECT_TRUE(_files.createPrivateFolders(_folder.path("link")));
  EXPECT_TRUE(_files.createPrivateFolders(_folder.path("link/new")));
  EXPECT_TRUE(_files.writePrivate(_folder.path("link/new/file"), "x"));
  EXPECT_THAT(read(_outside.path("new/file")), Optional(std::string("x")));
  EXPECT_FALSE(_files.createPrivateFolders(_folder.path("nowhere")));
  EXPECT_FALSE(_files.createPrivateFolders(_folder.path("nowhere/new")));
  EXPECT_FALSE(_files.writePrivate(_folder.path("nowhere/file"), "x"));
}

TEST_F(LinuxPrivateFilesTest, ALinkInTheFilesPlaceIsNotWrittenTo) {
  const std::string target = _outside.write("target", "kept");
  fs::create_symlink(target, _folder.path("file"));
  fs::create_symlink(_outside.path("missing"), _folder.path("new"));
  EXPECT_FALSE(_files.writePrivate(_folder.path("file"), "x"));
  EXPECT_FALSE(_files.writePrivate(_folder.path("new"), "x"));
  EXPECT_THAT(read(target), Optional(std::string("kept")));
  EXPECT_TRUE(fs::is_symlink(_folder.path("file")));
  EXPECT_FALSE(_files.exists(_outside.path("missing")));
}

TEST_F(LinuxPrivateFilesTest, OnlyRegularFilesAreWrittenTo) {
  const std::string fifo = _folder.path("fifo");
  ASSERT_EQ(::mkfifo(fifo.c_str(), 0600), 0);
  fs::create_directory(_folder.path("folder"));
  EXPECT_FALSE(_files.writePrivate(fifo, "x")) << "and does not wait for a reader";
  const zt::FileDescriptor reader(::open(fifo.c_str(), O_RDONLY | O_NONBLOCK));
  EXPECT_FALSE(_files.writePrivate(fifo, "x")) << "nor gives it anything";
  EXPECT_FALSE(_files.writePrivate(_folder.path("folder"), "x"));
  EXPECT_TRUE(fs::is_fifo(fifo));
}

TEST_F(LinuxPrivateFilesTest, FoldersCanBeUsedByAUserWithoutSpecialRightsWhateverTheUmask) {
  ASSERT_EQ(::chmod(_folder.path().c_str(), 0777), 0);
  const int failed = inForkedProcess([&] {
    constexpr uid_t kNobody = 65534;
    if (::getuid() == 0 && (::setgid(kNobody) != 0 || ::setuid(kNobody) != 0)) {
      return kNotPermitted;
    }
    ::umask(0777);
    if (!_files.createFolders(_folder.path("a/b"))) return 1;
    if (!_files.write(_folder.path("a/b/file"), "x")) return 2;
    if (!_files.createPrivateFolders(_folder.path("c/d"))) return 3;
    if (!_files.writePrivate(_folder.path("c/d/file"), "x")) return 4;
    return read(_folder.path("c/d/file")) == "x" ? 0 : 5;
  });
  if (failed == kNotPermitted) GTEST_SKIP() << "another user cannot be taken";
  EXPECT_EQ(failed, 0);
}

TEST_F(LinuxPrivateFilesTest, ErrnoSaysWhyAWriteFailed) {
  const std::string file = _folder.write("file", "x");
  fs::create_symlink(file, _folder.path("link"));
  ASSERT_EQ(::mkfifo(_folder.path("fifo").c_str(), 0600), 0);
  const zt::FileDescriptor reader(::open(_folder.path("fifo").c_str(), O_RDONLY | O_NONBLOCK));
  const auto errorOf = [](bool isDone) { return isDone ? 0 : errno; };
  EXPECT_EQ(errorOf(_files.writePrivate("", "x")), EINVAL);
  EXPECT_EQ(errorOf(_files.writePrivate(_folder.path("no/file"), "x")), ENOENT);
  EXPECT_EQ(errorOf(_files.writePrivate(file + "/below", "x")), ENOTDIR);
  EXPECT_EQ(errorOf(_files.writePrivate(_folder.path(), "x")), EISDIR);
  EXPECT_EQ(errorOf(_files.writePrivate(_folder.path("link"), "x")), ELOOP);
  EXPECT_EQ(errorOf(_files.writePrivate(_folder.path("fifo"), "x")), EEXIST);
  EXPECT_EQ(errorOf(_files.write("/dev/full", "x")), ENOSPC);
  EXPECT_EQ(errorOf(_files.createPrivateFolders(std::string("a\0b", 3))), EINVAL);
  EXPECT_EQ(errorOf(_files.createPrivateFolders(file)), EEXIST);
  EXPECT_EQ(errorOf(_files.createPrivateFolders(file + "/a/b")), ENOTDIR);
  EXPECT_EQ(errorOf(_files.createFolders("/proc/self/a/b")), ENOENT);
}

TEST_F(LinuxPrivateFilesTest, LeavesNothingOpen) {
  fs::create_symlink("missing", _folder.path("link"));
  ASSERT_EQ(::mkfifo(_folder.path("fifo").c_str(), 0600), 0);
  const std::ptrdiff_t before = openDescriptors();
  for (const char* name : {"a/b", "link", "fifo", "fifo/a", "a"}) {
    _files.writePrivate(_folder.path(name), "x");
    _files.createPrivateFolders(_folder.path(name));
  }
  EXPECT_EQ(openDescriptors(), before);
}

}  // namespace
