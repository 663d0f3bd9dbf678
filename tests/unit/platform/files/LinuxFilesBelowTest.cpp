#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <optional>
#include <string>

#include "tests/support/OpenDescriptors.h"
#include "tests/support/ScopedUmask.h"
#include "tests/support/Subprocess.h"
#include "tests/support/TemporaryFolder.h"
#include "ztportal/base/FileDescriptor.h"
#include "ztportal/platform/files/LinuxFiles.h"

// Folders and files below a root where someone may have planted what leads out of it.

namespace {

namespace fs = std::filesystem;
using testing::IsEmpty;
using testing::Optional;
using zt::LinuxFiles;
using zt::test::inForkedProcess;
using zt::test::kNotPermitted;
using zt::test::modeOf;
using zt::test::openDescriptors;
using zt::test::ScopedUmask;
using zt::test::TemporaryFolder;

class LinuxFilesBelowTest : public testing::Test {
 protected:
  std::optional<std::string> read(const std::string& path) {
    return _files.read(path, zt::kReportFileLimit);
  }
  /// What is in the folder that planted links lead to.
  std::vector<std::string> outside() { return _files.list(_outside.path()).value(); }

  LinuxFiles _files;
  TemporaryFolder _root;
  TemporaryFolder _outside;
};

TEST_F(LinuxFilesBelowTest, NewFoldersAreTheirOwnersAloneWhateverTheUmask) {
  for (const mode_t mask : {0U, 022U, 077U, 0277U, 0777U}) {
    const ScopedUmask umask(mask);
    const std::string name = "folder" + std::to_string(mask);
    ASSERT_TRUE(_files.createFoldersBelow(_root.path(), name + "/below")) << mask;
    EXPECT_EQ(modeOf(_root.path(name)), 0700U) << mask;
    EXPECT_EQ(modeOf(_root.path(name + "/below")), 0700U) << mask;
    ASSERT_TRUE(_files.writeBelow(_root.path(), name + "/below/file", "content")) << mask;
    EXPECT_EQ(modeOf(_root.path(name + "/below/file")), 0600U) << mask;
  }
}

TEST_F(LinuxFilesBelowTest, AnExistingFolderKeepsItsMode) {
  ASSERT_TRUE(_files.createFolders(_root.path("a")));
  ASSERT_EQ(::chmod(_root.path("a").c_str(), 0755), 0);
  ASSERT_TRUE(_files.createFoldersBelow(_root.path(), "a"));
  EXPECT_EQ(modeOf(_root.path("a")), 0755U);
}

TEST_F(LinuxFilesBelowTest, NoLinkInAFoldersPlaceIsFollowed) {
  for (const char* link : {"a", "b/c", "b/d"}) {
    fs::create_directories(fs::path(_root.path(link)).parent_path());
    fs::create_symlink(_outside.path(), _root.path(link));
  }
  fs::create_symlink("b", _root.path("inside"));
  fs::create_symlink("missing", _root.path("nowhere"));
  for (const char* folder : {"a", "a/", "a/new", "b/c", "b/d/new/new", "inside", "inside/new",
                             "nowhere", "nowhere/new"}) {
    EXPECT_FALSE(_files.createFoldersBelow(_root.path(), folder)) << folder;
    EXPECT_FALSE(_files.writeBelow(_root.path(), std::string(folder) + "/file", "x")) << folder;
  }
  EXPECT_THAT(outside(), IsEmpty());
}

TEST_F(LinuxFilesBelowTest, ALinkInTheFilesPlaceIsNotWrittenTo) {
  const std::string target = _outside.write("target", "kept");
  fs::create_symlink(target, _root.path("file"));
  fs::create_symlink(_outside.path("missing"), _root.path("new"));
  EXPECT_FALSE(_files.writeBelow(_root.path(), "file", "x"));
  EXPECT_FALSE(_files.writeBelow(_root.path(), "new", "x"));
  EXPECT_THAT(read(target), Optional(std::string("kept")));
  EXPECT_TRUE(fs::is_symlink(_root.path("file")));
  EXPECT_FALSE(_files.exists(_outside.path("missing")));
}

TEST_F(LinuxFilesBelowTest, OnlyRegularFilesAreWrittenTo) {
  ASSERT_EQ(::mkfifo(_root.path("fifo").c_str(), 0600), 0);
  fs::create_directory(_root.path("folder"));
  EXPECT_FALSE(_files.writeBelow(_root.path(), "fifo", "x")) << "and does not wait for a reader";
  const zt::FileDescriptor reader(::open(_root.path("fifo").c_str(), O_RDONLY | O_NONBLOCK));
  EXPECT_FALSE(_files.writeBelow(_root.path(), "fifo", "x")) << "nor gives it anything";
  EXPECT_FALSE(_files.writeBelow(_root.path(), "folder", "x"));
  EXPECT_TRUE(fs::is_fifo(_root.path("fifo")));
}

TEST_F(LinuxFilesBelowTest, TheRootMayBeALink) {
  const std::string link = _outside.path("link");
  fs::create_symlink(_root.path(), link);
  EXPECT_TRUE(_files.createFoldersBelow(link, "a/b"));
  EXPECT_TRUE(_files.writeBelow(link, "a/b/file", "x"));
  EXPECT_THAT(read(_root.path("a/b/file")), Optional(std::string("x")));
}

TEST_F(LinuxFilesBelowTest, FoldersCanBeUsedByAUserWithoutSpecialRightsWhateverTheUmask) {
  ASSERT_EQ(::chmod(_root.path().c_str(), 0777), 0);
  const int failed = inForkedProcess([&] {
    constexpr uid_t kNobody = 65534;
    if (::getuid() == 0 && (::setgid(kNobody) != 0 || ::setuid(kNobody) != 0)) {
      return kNotPermitted;
    }
    ::umask(0777);
    if (!_files.createFolders(_root.path("a/b"))) return 1;
    if (!_files.write(_root.path("a/b/file"), "x")) return 2;
    if (!_files.createFoldersBelow(_root.path(), "c/d")) return 3;
    if (!_files.writeBelow(_root.path(), "c/d/file", "x")) return 4;
    return read(_root.path("c/d/file")) == "x" ? 0 : 5;
  });
  if (failed == kNotPermitted) GTEST_SKIP() << "another user cannot be taken";
  EXPECT_EQ(failed, 0);
}

TEST_F(LinuxFilesBelowTest, LeavesNothingOpen) {
  fs::create_symlink(_outside.path(), _root.path("link"));
  ASSERT_EQ(::mkfifo(_root.path("fifo").c_str(), 0600), 0);
  const std::ptrdiff_t before = openDescriptors();
  for (const char* name : {"a/b", "link/a", "fifo/a", "a"}) {
    _files.createFoldersBelow(_root.path(), name);
    _files.writeBelow(_root.path(), name, "x");
  }
  _files.writeBelow(_root.path(), "fifo", "x");
  EXPECT_EQ(openDescriptors(), before);
}

}  // namespace
