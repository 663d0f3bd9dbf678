#include <gtest/gtest.h>

#include "TestPaths.h"
#include "tests/package/docs/MarkdownBlocks.h"
#include "tests/support/Printing.h"
#include "ztportal/platform/plist/PropertyList.h"

namespace {

TEST(NotificationDocTest, TheListOfTheCompanionSwitchesTheTestModeOn) {
  const auto blocks = zt::test::markdownBlocks(zt::test::paths::kSource + "/docs/notification.md");
  ASSERT_EQ(blocks.size(), 1U);
  ASSERT_EQ(blocks[0].language, "xml");
  const auto entries = zt::parsePropertyList(blocks[0].content);
  ASSERT_TRUE(entries.has_value());
  EXPECT_EQ(entries->at("ztTestMode"), "1");
}

}  // namespace
