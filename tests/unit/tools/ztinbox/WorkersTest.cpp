#include <gtest/gtest.h>

#include <atomic>
#include <future>
#include <vector>

#include "tools/ztinbox/http/Workers.h"

namespace {

using zt::inbox::Workers;

TEST(WorkersTest, EveryJobIsDoneBeforeTheyAreGone) {
  std::atomic<int> done = 0;
  {
    Workers workers(3);
    for (int i = 0; i < 100; ++i) workers.run([&done] { ++done; });
  }
  EXPECT_EQ(done, 100);
}

TEST(WorkersTest, BlockedJobsDoNotHoldUpOthersBelowTheLimit) {
  std::promise<void> release;
  const std::shared_future<void> released = release.get_future().share();
  Workers workers(8);
  for (int i = 0; i < 7; ++i) workers.run([released] { released.wait(); });
  for (int i = 0; i < 10; ++i) {
    std::promise<void> done;
    workers.run([&done] { done.set_value(); });
    done.get_future().wait();
  }
  release.set_value();
}

}  // namespace
