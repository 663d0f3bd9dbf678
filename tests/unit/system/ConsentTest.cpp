// SPDX-License-Identifier: Apache-2.0
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "tests/support/FailingFiles.h"
#include "ztportal/platform/FakePlatform.h"
#include "ztportal/system/ZtHost.h"

namespace zt::test {
namespace {

using ::testing::ElementsAre;
using ::testing::Optional;
using Operation = FailingFiles::Operation;

constexpr const char* kFolder = "/home/user/.local/share/Kelvane/Setup";
constexpr const char* kConsentFile = "/home/user/.local/share/Kelvane/Setup/consent";

class ConsentTest : public ::testing::Test {
 protected:
  ConsentTest() { ZtHost::setBundleInfo({{"CFBundleName", "Setup"}}); }
  ~ConsentTest() override {
    platform.replacedFiles = nullptr;
    ZtHost::setBundleInfo({{"CFBundleName", "Setup"}});
    ZtHost::setConsent(ZtConsent::Unset);  // also ends a revocation that could not be kept
    ZtHost::setBundleInfo({});
  }

  void write(const std::string& content) {
    ASSERT_TRUE(platform.files_.createFolders(kFolder));
    ASSERT_TRUE(platform.files_.write(kConsentFile, content));
  }

  FakePlatform platform;
};

TEST_F(ConsentTest, IsUnsetAtFirstAndAskingCreatesNothing) {
  EXPECT_EQ(ZtHost::consent(), ZtConsent::Unset);
  EXPECT_FALSE(platform.files_.exists("/home/user"));
}

TEST_F(ConsentTest, IsKeptInTheHostsFolder) {
  const std::pair<ZtConsent, std::string> rows[] = {{ZtConsent::Given, "given\n"},
                                                    {ZtConsent::Revoked, "revoked\n"}};
  for (const auto& [consent, content] : rows) {
    EXPECT_TRUE(ZtHost::setConsent(consent));
    EXPECT_EQ(ZtHost::consent(), consent);
    EXPECT_THAT(platform.files_.read(kConsentFile, 64), Optional(content));
  }
  EXPECT_TRUE(ZtHost::setConsent(ZtConsent::Unset));
  EXPECT_TRUE(ZtHost::setConsent(ZtConsent::Unset));
  EXPECT_EQ(ZtHost::consent(), ZtConsent::Unset);
  EXPECT_FALSE(platform.files_.exists(kConsentFile));
}

TEST_F(ConsentTest, IsReadAnewAndBelongsToOneHost) {
  write("revoked\n");
  EXPECT_EQ(ZtHost::consent(), ZtConsent::Revoked);
  write("given\n");
  EXPECT_EQ(ZtHost::consent(), ZtConsent::Given);
  ZtHost::setBundleInfo({{"CFBundleName", "Other"}});
  EXPECT_EQ(ZtHost::consent(), ZtConsent::Unset);
}

TEST_F(ConsentTest, WhatCannotBeUnderstoodIsARevocation) {
  std::vector<std::string> messages;
  ZtHost::setLogHandler([&messages](ZtLogLevel, std::string_view module, std::string_view text) {
    messages.push_back(std::string(module) + ": " + std::string(text));
  });
  for (const std::string content : {"", "given", "yes\n", "given\n\n"}) {
    write(content);
    EXPECT_EQ(ZtHost::consent(), ZtConsent::Revoked) << content;
  }
  write("given\n");
  FailingFiles files(platform.files_);
  files.failAlways(Operation::Read);
  platform.replacedFiles = &files;
  EXPECT_EQ(ZtHost::consent(), ZtConsent::Revoked);
  ZtHost::setLogHandler(nullptr);
  EXPECT_EQ(messages.size(), 5U);
  EXPECT_EQ(messages.front(), std::string("consent: ") + kConsentFile +
                                  " cannot be understood, so the consent is revoked");
}

TEST_F(ConsentTest, ARevocationThatCannotBeKeptIsValidForThisProcess) {
  ASSERT_TRUE(ZtHost::setConsent(ZtConsent::Given));
  FailingFiles files(platform.files_);
  files.failAlways(Operation::Write);
  platform.replacedFiles = &files;
  EXPECT_FALSE(ZtHost::setConsent(ZtConsent::Revoked));
  EXPECT_EQ(ZtHost::consent(), ZtConsent::Revoked);
  EXPECT_FALSE(ZtHost::setConsent(ZtConsent::Given));
  EXPECT_EQ(ZtHost::consent(), ZtConsent::Revoked);
  files.failNoMore(Operation::Write);
  EXPECT_TRUE(ZtHost::setConsent(ZtConsent::Given));
  EXPECT_EQ(ZtHost::consent(), ZtConsent::Given);
}

TEST_F(ConsentTest, CannotBeKeptWithoutAFolder) {
  platform.supportFolder_.folder = std::nullopt;
  EXPECT_EQ(ZtHost::consent(), ZtConsent::Unset);
  EXPECT_FALSE(ZtHost::setConsent(ZtConsent::Given));
  EXPECT_EQ(ZtHost::consent(), ZtConsent::Unset);
  platform.supportFolder_.folder = "/home/user/.local/share";
}

}  // namespace
}  // namespace zt::test
