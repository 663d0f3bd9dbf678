#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <memory>
#include <vector>

#include "tests/faults/Usage.h"

// That a leak of the smallest size is seen, and that nothing else is taken for one.

namespace zt::torture {
namespace {

TEST(UsageTest, ADescriptorMoreEachTimeIsALeak) {
  std::vector<int> leaked;
  EXPECT_EQ(
      growingWithEachRound([&] { leaked.push_back(::open("/dev/null", O_RDONLY | O_CLOEXEC)); }),
      "open descriptors");
  for (const int descriptor : leaked) ::close(descriptor);
}

TEST(UsageTest, ABlockMoreEachTimeIsALeak) {
  if (usageNow().bytes == 0) GTEST_SKIP() << "a sanitizer's allocator tells nothing";
  std::vector<std::unique_ptr<char>> leaked(16);
  std::size_t next = 0;
  EXPECT_EQ(growingWithEachRound([&] { leaked.at(next++) = std::make_unique<char>(); }),
            "memory in use");
}

TEST(UsageTest, ACacheIsNoLeak) {
  std::vector<std::unique_ptr<char>> cache;
  EXPECT_EQ(growingWithEachRound([&] {
              if (cache.size() < 8) cache.push_back(std::make_unique<char>());
            }),
            "");
}

}  // namespace
}  // namespace zt::torture
