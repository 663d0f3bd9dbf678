// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include "tests/support/NetworkNamespace.h"
#include "ztportal/platform/network/NetworkChanges.h"

namespace zt::test {
namespace {

/// 0 if every change is seen once. Otherwise the number of the expectation that failed.
int seeEachChangeOnce() {
  NetworkChanges changes;
  if (changes.take()) return 1;
  if (!setLoopback(true)) return 2;
  if (!changes.take()) return 3;
  if (changes.take()) return 4;
  if (!setLoopback(false)) return 5;
  return changes.take() ? 0 : 6;
}

TEST(LinuxNetworkChangesTest, SeesALinkGoUpAndDown) {
  const int result = inOwnNetwork(seeEachChangeOnce);
  if (result < 0) GTEST_SKIP() << "this machine does not allow network namespaces";
  EXPECT_EQ(result, 0);
}

/// 0 if a descriptor that the host has closed and used again is neither read nor closed.
int leaveTheHostsDescriptorAlone() {
  const int before = ::dup(0);
  ::close(before);
  {
    NetworkChanges changes;  // has the number `before`
    ::close(before);
    if (::dup(0) != before) return 1;
    setLoopback(true);
    if (changes.take()) return 2;
  }
  return ::close(before) == 0 ? 0 : 3;
}

TEST(LinuxNetworkChangesTest, LeavesADescriptorAloneThatIsTheHostsNow) {
  const int result = inOwnNetwork(leaveTheHostsDescriptorAlone);
  if (result < 0) GTEST_SKIP() << "this machine does not allow network namespaces";
  EXPECT_EQ(result, 0);
}

}  // namespace
}  // namespace zt::test
