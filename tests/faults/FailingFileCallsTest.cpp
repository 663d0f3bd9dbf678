#include <gtest/gtest.h>

#include <cerrno>
#include <optional>
#include <string>

#include "tests/faults/FolderContent.h"
#include "tests/faults/Preload.h"
#include "tests/support/TemporaryFolder.h"
#include "ztportal/platform/files/LinuxFiles.h"

// Files of the store when the system's calls fail.

namespace zt::torture {
namespace {

// A report that was written whole was removed again when a signal cut its close() short, so it was
// lost for nothing: on Linux such a close() has closed, and what was written stays.
TEST(FailingFileCallsTest, ACloseThatASignalCutsShortLosesNothing) {
  const test::TemporaryFolder folder;
  const std::string path = folder.path("report");
  Armed armed({Call::kClose, 1, Effect::kFail, EINTR, false});
  const bool written = LinuxFiles().write(path, "content");
  EXPECT_TRUE(armed.disarm().struck);
  EXPECT_TRUE(written);
  EXPECT_EQ(fileContent(path), "content");
}

TEST(FailingFileCallsTest, WhatCannotBeWrittenToItsEndLeavesNoFile) {
  const struct {
    Call call;
    int error;
  } rows[] = {{Call::kWrite, ENOSPC},
              {Call::kWrite, EIO},
              {Call::kClose, EIO},
              {Call::kClose, ENOSPC},
              {Call::kOpen, EMFILE}};
  for (const auto& row : rows) {
    const test::TemporaryFolder folder;
    Armed armed({row.call, 1, Effect::kFail, row.error, false});
    const bool written = LinuxFiles().write(folder.path("report"), "content");
    EXPECT_TRUE(armed.disarm().struck);
    EXPECT_FALSE(written);
    EXPECT_TRUE(folderContent(folder.path()).empty());
  }
}

TEST(FailingFileCallsTest, AnInterruptionIsTriedAgain) {
  const struct {
    Call call;
    Effect effect;
  } rows[] = {
      {Call::kOpen, Effect::kFail}, {Call::kWrite, Effect::kFail}, {Call::kWrite, Effect::kShort}};
  for (const auto& row : rows) {
    const test::TemporaryFolder folder;
    Armed armed({row.call, 1, row.effect, EINTR, false});
    const bool written = LinuxFiles().write(folder.path("report"), "content");
    EXPECT_TRUE(armed.disarm().struck);
    EXPECT_TRUE(written);
    EXPECT_EQ(fileContent(folder.path("report")), "content");
  }
}

}  // namespace
}  // namespace zt::torture
