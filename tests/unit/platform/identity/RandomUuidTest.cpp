#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <set>
#include <string>

#include "ztportal/platform/identity/MachineIdentity.h"
#include "ztportal/platform/identity/UuidText.h"

namespace {

using testing::MatchesRegex;

TEST(RandomUuidTest, IsAUuidOfVersion4InUpperCase) {
  for (int i = 0; i < 100; ++i) {
    EXPECT_THAT(
        std::string(zt::randomUuid().view()),
        MatchesRegex("[0-9A-F]{8}-[0-9A-F]{4}-4[0-9A-F]{3}-[89AB][0-9A-F]{3}-[0-9A-F]{12}"));
  }
}

TEST(RandomUuidTest, IsAnotherOneEachTime) {
  std::set<ZtString> seen;
  for (int i = 0; i < 1000; ++i) seen.insert(zt::randomUuid());
  EXPECT_EQ(seen.size(), 1000U);
}

TEST(UuidTextTest, WritesTheBytesInTheirOrder) {
  using Bytes = std::array<std::uint8_t, 16>;
  EXPECT_EQ(zt::uuidText(Bytes{0x0f, 0x1d, 0x6a, 0x52, 0x93, 0xe5, 0x4e, 0x0b, 0x8d, 0x57, 0x5a,
                               0x2c, 0x7d, 0x3b, 0x9e, 0x11}),
            "0F1D6A52-93E5-4E0B-8D57-5A2C7D3B9E11");
  EXPECT_EQ(zt::uuidText(Bytes{}), "00000000-0000-0000-0000-000000000000");
}

}  // namespace
