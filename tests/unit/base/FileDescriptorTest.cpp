// SPDX-License-Identifier: Apache-2.0
#include <fcntl.h>
#include <gtest/gtest.h>

#include <utility>

#include "ztportal/base/FileDescriptor.h"

namespace {

using zt::FileDescriptor;

FileDescriptor opened() { return FileDescriptor(::open("/dev/null", O_RDONLY | O_CLOEXEC)); }
bool isOpen(int number) { return ::fcntl(number, F_GETFD) != -1; }

TEST(FileDescriptorTest, ClosesWithItsLastOwner) {
  EXPECT_FALSE(FileDescriptor().isOpen());
  int number = -1;
  {
    FileDescriptor first = opened();
    number = first.number();
    const FileDescriptor second = std::move(first);
    EXPECT_EQ(first.number(), -1);  // NOLINT(bugprone-use-after-move)
    EXPECT_TRUE(isOpen(second.number()));
  }
  EXPECT_FALSE(isOpen(number));
}

TEST(FileDescriptorTest, ClosesWhatAssignmentReplaces) {
  FileDescriptor file = opened();
  const int number = file.number();
  FileDescriptor next = opened();
  const int nextNumber = next.number();
  file = std::move(next);
  EXPECT_EQ(file.number(), nextNumber);
  next.close();  // NOLINT(bugprone-use-after-move)
  EXPECT_FALSE(isOpen(number));
  EXPECT_TRUE(isOpen(nextNumber));
}

TEST(FileDescriptorTest, LeavesAReleasedNumberOpen) {
  int number = -1;
  {
    FileDescriptor file = opened();
    number = file.release();
    EXPECT_FALSE(file.isOpen());
  }
  EXPECT_TRUE(isOpen(number));
  ::close(number);
}

}  // namespace
