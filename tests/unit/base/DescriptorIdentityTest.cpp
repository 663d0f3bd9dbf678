// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <unistd.h>

#include "ztportal/base/DescriptorIdentity.h"
#include "ztportal/base/FileDescriptor.h"

namespace {

using zt::DescriptorIdentity;
using zt::FileDescriptor;

FileDescriptor openedSocket() { return FileDescriptor(::socket(AF_UNIX, SOCK_STREAM, 0)); }

TEST(DescriptorIdentityTest, StaysAsLongAsTheDescriptorIsOpen) {
  const FileDescriptor socket = openedSocket();
  const DescriptorIdentity identity(socket.number());
  EXPECT_TRUE(identity.isStill(socket.number()));
  const FileDescriptor duplicate(::dup(socket.number()));
  EXPECT_TRUE(identity.isStill(duplicate.number()));
}

TEST(DescriptorIdentityTest, EndsWhenTheNumberIsClosedOrTakenByAnother) {
  FileDescriptor socket = openedSocket();
  const int number = socket.number();
  const DescriptorIdentity identity(number);
  socket.close();
  EXPECT_FALSE(identity.isStill(number));

  const FileDescriptor another = openedSocket();
  const FileDescriptor sameNumber(::dup2(another.number(), number));
  EXPECT_FALSE(identity.isStill(number));
}

TEST(DescriptorIdentityTest, OfNoDescriptorFitsNone) {
  EXPECT_FALSE(DescriptorIdentity().isStill(-1));
  EXPECT_FALSE(DescriptorIdentity(-1).isStill(-1));
  EXPECT_FALSE(DescriptorIdentity(-1).isStill(STDIN_FILENO));
}

}  // namespace
