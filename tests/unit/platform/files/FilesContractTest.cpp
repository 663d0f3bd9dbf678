// SPDX-License-Identifier: Apache-2.0
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <optional>
#include <string>
#include <vector>

#include "tests/support/TemporaryFolder.h"
#include "ztportal/platform/files/FakeFiles.h"
#include "ztportal/platform/files/LinuxFiles.h"

// What every implementation of `Files` does, the real one and the fake alike.

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Optional;
using testing::UnorderedElementsAre;

struct OnLinux {
  zt::LinuxFiles files;
  zt::test::TemporaryFolder folder;
  std::string root() const { return folder.path(); }
};

struct InMemory {
  zt::test::FakeFiles files;
  InMemory() { files.createFolders("/root"); }
  std::string root() const { return "/root"; }
};

template <class Subject>
class FilesContract : public testing::Test {
 protected:
  zt::Files& files() { return _subject.files; }
  std::optional<std::string> read(const std::string& path) {
    return files().read(path, zt::kReportFileLimit);
  }
  std::string path(const std::string& name) const { return _subject.root() + "/" + name; }
  std::string root() const { return _subject.root(); }

 private:
  Subject _subject;
};

using Subjects = testing::Types<OnLinux, InMemory>;
TYPED_TEST_SUITE(FilesContract, Subjects);

const std::string kNulByte(1, '\0');

TYPED_TEST(FilesContract, ThereIsNothingAtTheStart) {
  EXPECT_TRUE(this->files().isFolder(this->root()));
  EXPECT_THAT(this->files().list(this->root()), Optional(IsEmpty()));
  EXPECT_FALSE(this->files().exists(this->path("a")));
  EXPECT_FALSE(this->files().isFolder(this->path("a")));
}

TYPED_TEST(FilesContract, CreatesAFolderAndThoseAboveIt) {
  EXPECT_TRUE(this->files().createFolders(this->path("a/b/c")));
  for (const char* name : {"a", "a/b", "a/b/c", "a/b/c/", "a//b", "a/./b", "a/b/.."}) {
    EXPECT_TRUE(this->files().exists(this->path(name))) << name;
    EXPECT_TRUE(this->files().isFolder(this->path(name))) << name;
  }
  EXPECT_THAT(this->files().list(this->path("a")), Optional(ElementsAre("b")));
}

TYPED_TEST(FilesContract, CreatesTheMissingPartOfAPath) {
  ASSERT_TRUE(this->files().createFolders(this->path("a/b")));
  EXPECT_TRUE(this->files().createFolders(this->path("a/c/d/")));
  EXPECT_TRUE(this->files().isFolder(this->path("a/c/d")));
  EXPECT_THAT(this->files().list(this->path("a")), Optional(UnorderedElementsAre("b", "c")));
}

TYPED_TEST(FilesContract, AnExistingFolderIsCreatedWithSuccess) {
  ASSERT_TRUE(this->files().createFolders(this->path("a")));
  ASSERT_TRUE(this->files().write(this->path("a/file"), "kept"));
  EXPECT_TRUE(this->files().createFolders(this->path("a")));
  EXPECT_TRUE(this->files().createFolders(this->path("a/")));
  EXPECT_THAT(this->read(this->path("a/file")), Optional(std::string("kept")));
}

TYPED_TEST(FilesContract, NoFolderIsCreatedWhereAFileIsInTheWay) {
  ASSERT_TRUE(this->files().write(this->path("file"), "kept"));
  EXPECT_FALSE(this->files().createFolders(this->path("file")));
  EXPECT_FALSE(this->files().createFolders(this->path("file/a")));
  EXPECT_FALSE(this->files().createFolders(this->path("file/a/b")));
  EXPECT_FALSE(this->files().createPrivateFolders(this->path("file")));
  EXPECT_FALSE(this->files().createPrivateFolders(this->path("file/a")));
  EXPECT_THAT(this->read(this->path("file")), Optional(std::string("kept")));
}

TYPED_TEST(FilesContract, ReadsEveryByteThatWasWritten) {
  const std::string contents[] = {"",
                                  "a",
                                  "no end of line",
                                  "lines\r\n\n\x1a\n",
                                  std::string("nul\0\0nul", 8),
                                  "\xff\xfe\xc3\xa4",
                                  std::string(64 * 1024 - 1, 'x'),
                                  std::string(64 * 1024, 'y'),
                                  std::string(3 * 1024 * 1024 + 7, 'z')};
  for (const std::string& content : contents) {
    const std::string path = this->path("file" + std::to_string(content.size()));
    EXPECT_TRUE(this->files().write(path, content)) << content.size();
    EXPECT_TRUE(this->files().exists(path)) << content.size();
    EXPECT_FALSE(this->files().isFolder(path)) << content.size();
    EXPECT_TRUE(this->read(path) == content) << content.size();
  }
}

TYPED_TEST(FilesContract, AWriteReplacesTheWholeContent) {
  const std::string path = this->path("file");
  for (const char* content : {"long content", "short", "", "longer than ever before"}) {
    EXPECT_TRUE(this->files().write(path, content)) << content;
    EXPECT_THAT(this->read(path), Optional(std::string(content)));
  }
  EXPECT_THAT(this->files().list(this->root()), Optional(ElementsAre("file")));
}

TYPED_TEST(FilesContract, MakesPrivateFoldersAndFiles) {
  EXPECT_FALSE(this->files().writePrivate(this->path("a/b/file"), "x"));
  EXPECT_TRUE(this->files().createPrivateFolders(this->path("a/b")));
  EXPECT_TRUE(this->files().createPrivateFolders(this->path("a//b/")));
  EXPECT_TRUE(this->files().createPrivateFolders(this->path("a/b/c")));
  EXPECT_TRUE(this->files().writePrivate(this->path("a/b/file"), "long content"));
  EXPECT_TRUE(this->files().writePrivate(this->path("a/b/file"), "short"));
  EXPECT_THAT(this->read(this->path("a/b/file")), Optional(std::string("short")));
  EXPECT_THAT(this->files().list(this->path("a/b")), Optional(UnorderedElementsAre("c", "file")));
}

TYPED_TEST(FilesContract, ReplacesAPrivateFileAsAWhole) {
  EXPECT_TRUE(this->files().replacePrivate(this->path("file"), "a longer text"));
  EXPECT_TRUE(this->files().replacePrivate(this->path("file"), "short"));
  EXPECT_THAT(this->read(this->path("file")), Optional(std::string("short")));
  EXPECT_THAT(this->files().list(this->root()), Optional(ElementsAre("file")));
  ASSERT_TRUE(this->files().createFolders(this->path("folder")));
  for (const std::string& path : {this->path("folder"), this->path("missing/file"), std::string(),
                                  this->path("file") + kNulByte}) {
    EXPECT_FALSE(this->files().replacePrivate(path, "x")) << path;
  }
  EXPECT_THAT(this->files().list(this->root()), Optional(UnorderedElementsAre("file", "folder")));
}

TYPED_TEST(FilesContract, WritesNoFileWithoutItsFolder) {
  EXPECT_FALSE(this->files().write(this->path("missing/file"), "x"));
  EXPECT_FALSE(this->files().exists(this->path("missing")));
  ASSERT_TRUE(this->files().write(this->path("file"), "kept"));
  EXPECT_FALSE(this->files().write(this->path("file/below"), "x"));
  EXPECT_FALSE(this->files().write(this->path("file/"), "x"));
  EXPECT_FALSE(this->files().writePrivate(this->path("file/below"), "x"));
  EXPECT_FALSE(this->files().writePrivate(this->path("file/"), "x"));
  EXPECT_THAT(this->read(this->path("file")), Optional(std::string("kept")));
}

TYPED_TEST(FilesContract, WritesNothingOverAFolder) {
  ASSERT_TRUE(this->files().createFolders(this->path("a")));
  EXPECT_FALSE(this->files().write(this->path("a"), "x"));
  EXPECT_FALSE(this->files().write(this->path("a/"), "x"));
  EXPECT_FALSE(this->files().writePrivate(this->path("a"), "x"));
  EXPECT_TRUE(this->files().isFolder(this->path("a")));
  EXPECT_THAT(this->files().list(this->path("a")), Optional(IsEmpty()));
}

TYPED_TEST(FilesContract, ReadsNothingButFiles) {
  ASSERT_TRUE(this->files().createFolders(this->path("a")));
  ASSERT_TRUE(this->files().write(this->path("file"), "x"));
  EXPECT_EQ(this->read(this->path("a")), std::nullopt);
  EXPECT_EQ(this->read(this->path("missing")), std::nullopt);
  EXPECT_EQ(this->read(this->path("missing/file")), std::nullopt);
  EXPECT_EQ(this->read(this->path("file/below")), std::nullopt);
  EXPECT_EQ(this->read(this->path("file/")), std::nullopt);
}

TYPED_TEST(FilesContract, ReadsNothingBeyondTheLimit) {
  ASSERT_TRUE(this->files().write(this->path("file"), "12345"));
  EXPECT_THAT(this->files().read(this->path("file"), 5), Optional(std::string("12345")));
  EXPECT_EQ(this->files().read(this->path("file"), 4), std::nullopt);
}

TYPED_TEST(FilesContract, ListsFilesAndFoldersButNotWhatIsBelow) {
  ASSERT_TRUE(this->files().createFolders(this->path("a/b/c")));
  ASSERT_TRUE(this->files().write(this->path("a/.hidden"), "x"));
  ASSERT_TRUE(this->files().write(this->path("a/name with blank"), "x"));
  ASSERT_TRUE(this->files().write(this->path("a/not UTF-8 \xff"), "x"));
  EXPECT_THAT(this->files().list(this->path("a")),
              Optional(UnorderedElementsAre("b", ".hidden", "name with blank", "not UTF-8 \xff")));
}

TYPED_TEST(FilesContract, ListsAnUnchangedFolderInTheSameOrder) {
  for (int i = 0; i < 100; ++i) {
    ASSERT_TRUE(this->files().write(this->path("file" + std::to_string(i * 37 % 100)), "x"));
  }
  const std::optional<std::vector<std::string>> first = this->files().list(this->root());
  ASSERT_TRUE(first.has_value());
  EXPECT_EQ(first->size(), 100U);
  EXPECT_EQ(this->files().list(this->root()), first);
}

TYPED_TEST(FilesContract, ListsNothingButFolders) {
  ASSERT_TRUE(this->files().write(this->path("file"), "x"));
  EXPECT_EQ(this->files().list(this->path("file")), std::nullopt);
  EXPECT_EQ(this->files().list(this->path("file/")), std::nullopt);
  EXPECT_EQ(this->files().list(this->path("missing")), std::nullopt);
}

TYPED_TEST(FilesContract, RemovesAFile) {
  ASSERT_TRUE(this->files().write(this->path("file"), "x"));
  ASSERT_TRUE(this->files().write(this->path("other"), "kept"));
  EXPECT_TRUE(this->files().remove(this->path("file")));
  EXPECT_FALSE(this->files().exists(this->path("file")));
  EXPECT_EQ(this->read(this->path("file")), std::nullopt);
  EXPECT_THAT(this->files().list(this->root()), Optional(ElementsAre("other")));
  EXPECT_FALSE(this->files().remove(this->path("file")));
}

TYPED_TEST(FilesContract, RemovesAFolderOnlyWhenItIsEmpty) {
  ASSERT_TRUE(this->files().createFolders(this->path("a")));
  ASSERT_TRUE(this->files().write(this->path("a/file"), "kept"));
  EXPECT_FALSE(this->files().remove(this->path("a")));
  EXPECT_THAT(this->read(this->path("a/file")), Optional(std::string("kept")));
  ASSERT_TRUE(this->files().remove(this->path("a/file")));
  EXPECT_TRUE(this->files().remove(this->path("a")));
  EXPECT_FALSE(this->files().exists(this->path("a")));
}

TYPED_TEST(FilesContract, TellsSizeAndTimeOfAFile) {
  const auto before = std::chrono::system_clock::now();
  ASSERT_TRUE(this->files().write(this->path("file"), "12345"));
  const auto facts = this->files().facts(this->path("file"));
  ASSERT_TRUE(facts);
  EXPECT_EQ(facts->bytes, 5U);
  EXPECT_LT(std::chrono::abs(facts->time - before), std::chrono::minutes(1));
  EXPECT_TRUE(this->files().facts(this->root()));
  EXPECT_FALSE(this->files().facts(this->path("missing")));
}

TYPED_TEST(FilesContract, MovesAFileAndReplacesNothing) {
  ASSERT_TRUE(this->files().createFolders(this->path("a")));
  ASSERT_TRUE(this->files().write(this->path("file"), "moved"));
  ASSERT_TRUE(this->files().write(this->path("other"), "kept"));
  EXPECT_FALSE(this->files().move(this->path("file"), this->path("other")));
  EXPECT_FALSE(this->files().move(this->path("missing"), this->path("new")));
  EXPECT_FALSE(this->files().move(this->path("file"), this->path("missing/new")));
  EXPECT_TRUE(this->files().move(this->path("file"), this->path("a/new")));
  EXPECT_THAT(this->read(this->path("a/new")), Optional(std::string("moved")));
  EXPECT_THAT(this->read(this->path("other")), Optional(std::string("kept")));
  EXPECT_FALSE(this->files().exists(this->path("file")));
}

TYPED_TEST(FilesContract, LocksAFileUntilTheLockIsReleased) {
  const zt::FileLock first = this->files().lock(this->path("lock"));
  EXPECT_TRUE(first.held);
  EXPECT_FALSE(first.isBusy);
  {
    const zt::FileLock other = this->files().lock(this->path("other"));
    EXPECT_TRUE(other.held);
    const zt::FileLock second = this->files().lock(this->path("lock"));
    EXPECT_FALSE(second.held);
    EXPECT_TRUE(second.isBusy);
  }
  EXPECT_TRUE(this->files().lock(this->path("other")).held);
  const zt::FileLock nowhere = this->files().lock(this->path("missing/lock"));
  EXPECT_FALSE(nowhere.held);
  EXPECT_FALSE(nowhere.isBusy);
}

TYPED_TEST(FilesContract, AnEmptyTextNamesNothing) {
  EXPECT_FALSE(this->files().exists(""));
  EXPECT_FALSE(this->files().isFolder(""));
  EXPECT_FALSE(this->files().createFolders(""));
  EXPECT_EQ(this->files().list(""), std::nullopt);
  EXPECT_EQ(this->read(""), std::nullopt);
  EXPECT_FALSE(this->files().write("", "x"));
  EXPECT_FALSE(this->files().createPrivateFolders(""));
  EXPECT_FALSE(this->files().writePrivate("", "x"));
  EXPECT_FALSE(this->files().remove(""));
  EXPECT_FALSE(this->files().facts(""));
  EXPECT_FALSE(this->files().move("", this->path("new")));
  EXPECT_FALSE(this->files().lock("").held);
}

TYPED_TEST(FilesContract, APathWithANulByteNamesNothing) {
  ASSERT_TRUE(this->files().createFolders(this->path("a")));
  ASSERT_TRUE(this->files().write(this->path("file"), "kept"));
  const std::string folder = this->path("a") + kNulByte + "x";
  const std::string file = this->path("file") + kNulByte + "x";
  EXPECT_FALSE(this->files().exists(file));
  EXPECT_FALSE(this->files().isFolder(folder));
  EXPECT_FALSE(this->files().createFolders(this->path("new") + kNulByte));
  EXPECT_EQ(this->files().list(folder), std::nullopt);
  EXPECT_EQ(this->read(file), std::nullopt);
  EXPECT_FALSE(this->files().write(file, "x"));
  EXPECT_FALSE(this->files().createPrivateFolders(this->path("new") + kNulByte));
  EXPECT_FALSE(this->files().writePrivate(file, "x"));
  EXPECT_FALSE(this->files().remove(file));
  EXPECT_FALSE(this->files().facts(file));
  EXPECT_FALSE(this->files().move(file, this->path("new")));
  EXPECT_FALSE(this->files().lock(file).held);
  EXPECT_THAT(this->read(this->path("file")), Optional(std::string("kept")));
  EXPECT_THAT(this->files().list(this->root()), Optional(UnorderedElementsAre("a", "file")));
}

}  // namespace
