#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "ztportal/platform/files/FailingFiles.h"
#include "ztportal/platform/files/FakeFiles.h"

namespace {

using zt::test::FailingFiles;
using zt::test::FakeFiles;
using Operation = FailingFiles::Operation;

class FailingFilesTest : public testing::Test {
 protected:
  FailingFilesTest() { _memory.write("/file", "before"); }

  FakeFiles _memory;
  FailingFiles _files{_memory};
};

TEST_F(FailingFilesTest, PassesEverythingOnUnlessToldOtherwise) {
  EXPECT_TRUE(_files.exists("/file"));
  EXPECT_TRUE(_files.isFolder("/"));
  EXPECT_TRUE(_files.createFolders("/a/b"));
  EXPECT_TRUE(_files.write("/a/file", "content"));
  EXPECT_EQ(_files.read("/a/file"), "content");
  EXPECT_EQ(_files.list("/a"), (std::vector<std::string>{"b", "file"}));
  EXPECT_TRUE(_files.remove("/a/file"));
  EXPECT_FALSE(_files.exists("/a/file"));
}

TEST_F(FailingFilesTest, TheNthCallFailsAndNoOther) {
  const struct {
    const char* name;
    Operation operation;
    std::function<bool()> call;
  } rows[] = {
      {"createFolders", Operation::CreateFolders, [&] { return _files.createFolders("/a"); }},
      {"list", Operation::List, [&] { return _files.list("/").has_value(); }},
      {"read", Operation::Read, [&] { return _files.read("/file").has_value(); }},
      {"write", Operation::Write, [&] { return _files.write("/file", "x"); }},
      {"write midway", Operation::WriteMidway, [&] { return _files.write("/file", "x"); }},
      {"remove", Operation::Remove,
       [&] { return _memory.write("/gone", "") && _files.remove("/gone"); }},
  };
  for (const auto& row : rows) {
    _files.failOnce(row.operation, 3);
    EXPECT_TRUE(row.call()) << row.name;
    EXPECT_TRUE(row.call()) << row.name;
    EXPECT_FALSE(row.call()) << row.name;
    EXPECT_TRUE(row.call()) << row.name;
    _files.failAlways(row.operation);
    EXPECT_FALSE(row.call()) << row.name;
    EXPECT_FALSE(row.call()) << row.name;
    _files.failNoMore(row.operation);
    EXPECT_TRUE(row.call()) << row.name;
  }
}

TEST_F(FailingFilesTest, AFailedOperationLeavesEverythingAsItWas) {
  _files.failAlways(Operation::CreateFolders);
  _files.failAlways(Operation::Write);
  _files.failAlways(Operation::Remove);
  EXPECT_FALSE(_files.createFolders("/a"));
  EXPECT_FALSE(_files.write("/file", "after"));
  EXPECT_FALSE(_files.remove("/file"));
  EXPECT_FALSE(_memory.exists("/a"));
  EXPECT_EQ(_memory.read("/file"), "before");
}

TEST_F(FailingFilesTest, AWriteThatFailsMidwayLeavesNoFile) {
  _files.failOnce(Operation::WriteMidway, 1);
  EXPECT_FALSE(_files.write("/file", "after"));
  EXPECT_FALSE(_memory.exists("/file"));
}

TEST(FakeFilesTest, ListsEntriesInTheOrderInWhichTheyWereMade) {
  FakeFiles files;
  files.write("/b", "");
  files.createFolders("/c");
  files.write("/a", "");
  EXPECT_EQ(files.list("/"), (std::vector<std::string>{"b", "c", "a"}));
  files.remove("/b");
  files.write("/b", "");
  EXPECT_EQ(files.list("/"), (std::vector<std::string>{"c", "a", "b"}));
}

}  // namespace
