// SPDX-License-Identifier: Apache-2.0
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <string>

#include "tests/support/TemporaryFolder.h"
#include "ztportal/platform/plist/Bundle.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Optional;
using testing::Pair;
using zt::Bundle;
using zt::test::TemporaryFolder;

constexpr std::string_view kInfo =
    "<plist><dict><key>CFBundleName</key><string>Setup</string>"
    "<key>CFBundleVersion</key><integer>7</integer></dict></plist>";

TEST(Bundle, TellsTheStringsOfItsInfo) {
  const TemporaryFolder folder;
  folder.write("Setup.app/Contents/Info.plist", kInfo);
  const auto bundle = Bundle::at(folder.path("Setup.app"));
  ASSERT_TRUE(bundle);
  EXPECT_EQ(bundle->path(), folder.path("Setup.app"));
  EXPECT_EQ(bundle->info("CFBundleName"), "Setup");
  EXPECT_EQ(bundle->info("CFBundleVersion"), nullptr);
  EXPECT_EQ(bundle->info("CFBundleIdentifier"), nullptr);
  EXPECT_THAT(bundle->info(),
              ElementsAre(Pair("CFBundleName", "Setup"), Pair("CFBundleVersion", nullptr)));
}

TEST(Bundle, ReadsABinaryInfo) {
  const TemporaryFolder folder;
  // {"CFBundleName": "Setup"}
  constexpr std::string_view kBinary(
      "bplist00\xD1\1\2\x5C"
      "CFBundleName\x55Setup"
      "\x8\xB\x18"
      "\0\0\0\0\0\0\1\1"
      "\0\0\0\0\0\0\0\3"
      "\0\0\0\0\0\0\0\0"
      "\0\0\0\0\0\0\0\x1E",
      65);
  folder.write("Setup.app/Contents/Info.plist", kBinary);
  const auto bundle = Bundle::at(folder.path("Setup.app"));
  ASSERT_TRUE(bundle);
  EXPECT_THAT(bundle->info(), ElementsAre(Pair("CFBundleName", "Setup")));
}

TEST(Bundle, IsNoneWithoutAReadableInfo) {
  const TemporaryFolder folder;
  std::filesystem::create_directories(folder.path("Empty.app"));
  folder.write("Garbage.app/Contents/Info.plist", "garbage");
  folder.write("Nothing.app/Contents/Info.plist", "");
  folder.write("Array.app/Contents/Info.plist", "<plist><array/></plist>");
  std::filesystem::create_directories(folder.path("Folder.app/Contents/Info.plist"));
  folder.write("Elsewhere.app/Info.plist", kInfo);
  std::filesystem::create_directories(folder.path("Pipe.app/Contents"));
  ASSERT_EQ(mkfifo(folder.path("Pipe.app/Contents/Info.plist").c_str(), 0600), 0);
  for (const char* name : {"Missing.app", "Empty.app", "Garbage.app", "Nothing.app", "Array.app",
                           "Folder.app", "Elsewhere.app", "Pipe.app"}) {
    EXPECT_FALSE(Bundle::at(folder.path(name))) << name;
  }
  EXPECT_FALSE(Bundle::at(""));
}

TEST(Bundle, ReadsAnInfoOfAtMostOneMebibyte) {
  const TemporaryFolder folder;
  std::string info(kInfo);
  info.resize(1024 * 1024, '\n');
  folder.write("Large.app/Contents/Info.plist", info);
  EXPECT_TRUE(Bundle::at(folder.path("Large.app")));
  folder.write("TooLarge.app/Contents/Info.plist", info + '\n');
  EXPECT_FALSE(Bundle::at(folder.path("TooLarge.app")));
}

TEST(Bundle, IsTheNearestOneAboveAnExecutable) {
  const TemporaryFolder folder;
  folder.write("Outer.app/Contents/Info.plist", kInfo);
  folder.write("Outer.app/Contents/Helpers/Inner.app/Contents/Info.plist",
               "<plist><dict><key>CFBundleName</key><string>Inner</string></dict></plist>");
  struct {
    const char* executable;
    const char* bundle;
  } const rows[] = {
      {"Outer.app/setup", "Outer.app"},
      {"Outer.app/Contents/setup", "Outer.app"},
      {"Outer.app/Contents/Linux/x86_64/bin/setup", "Outer.app"},
      {"Outer.app/Contents/Helpers/setup", "Outer.app"},
      {"Outer.app/Contents/Helpers/Inner.app/Contents/Linux/helper",
       "Outer.app/Contents/Helpers/Inner.app"},
      {"Outer.app/Contents/Helpers/Inner.app", "Outer.app"},
  };
  for (const auto& row : rows) {
    const std::string executable = folder.path(row.executable);
    EXPECT_THAT(Bundle::pathAbove(executable), Optional(folder.path(row.bundle))) << executable;
    const auto bundle = Bundle::above(executable);
    ASSERT_TRUE(bundle) << executable;
    EXPECT_EQ(bundle->path(), folder.path(row.bundle)) << executable;
  }
}

TEST(Bundle, IsNoneAboveAnExecutableOutside) {
  const TemporaryFolder folder;
  folder.write("Setup.app/Contents/Info.plist", kInfo);
  for (const std::string& executable :
       {folder.path("setup"), folder.path("Setup.app"), std::string("/usr/bin/env"),
        std::string("/"), std::string("setup"), std::string()}) {
    EXPECT_EQ(Bundle::pathAbove(executable), std::nullopt) << executable;
    EXPECT_FALSE(Bundle::above(executable)) << executable;
  }
}

TEST(Bundle, HidesTheOuterOneEvenWithABrokenInfo) {
  const TemporaryFolder folder;
  folder.write("Outer.app/Contents/Info.plist", kInfo);
  folder.write("Outer.app/Contents/Inner.app/Contents/Info.plist", "garbage");
  const std::string executable = folder.path("Outer.app/Contents/Inner.app/Contents/setup");
  EXPECT_THAT(Bundle::pathAbove(executable), Optional(folder.path("Outer.app/Contents/Inner.app")));
  EXPECT_FALSE(Bundle::above(executable));
}

TEST(Bundle, FindsItsResources) {
  const TemporaryFolder folder;
  folder.write("Setup.app/Contents/Info.plist", kInfo);
  const std::string file = folder.write("Setup.app/Contents/Resources/Reporting.xml", "<a/>");
  const std::string plain = folder.write("Setup.app/Contents/Resources/LICENSE", "");
  std::filesystem::create_directories(folder.path("Setup.app/Contents/Resources/Folder.xml"));
  folder.write("Setup.app/Contents/Other.xml", "");
  const auto bundle = Bundle::at(folder.path("Setup.app"));
  ASSERT_TRUE(bundle);
  EXPECT_THAT(bundle->resource("Reporting", "xml"), Optional(file));
  EXPECT_THAT(bundle->resource("LICENSE", ""), Optional(plain));
  EXPECT_EQ(bundle->resource("Reporting", "txt"), std::nullopt);
  EXPECT_EQ(bundle->resource("Folder", "xml"), std::nullopt);
  EXPECT_EQ(bundle->resource("Other", "xml"), std::nullopt);
}

TEST(Bundle, ListsItsLocalizationsSorted) {
  const TemporaryFolder folder;
  folder.write("Setup.app/Contents/Info.plist", kInfo);
  for (const char* name : {"fr.lproj", "de.lproj", "English.lproj", "zh_CN.lproj", ".lproj",
                           "de.lproj.old", "images"}) {
    std::filesystem::create_directories(folder.path("Setup.app/Contents/Resources/") + name);
  }
  folder.write("Setup.app/Contents/Resources/file.lproj", "");
  const auto bundle = Bundle::at(folder.path("Setup.app"));
  ASSERT_TRUE(bundle);
  EXPECT_THAT(bundle->localizations(), ElementsAre("English", "de", "fr", "zh_CN"));
}

TEST(Bundle, HasNoLocalizationsWithoutResources) {
  const TemporaryFolder folder;
  folder.write("Setup.app/Contents/Info.plist", kInfo);
  const auto bundle = Bundle::at(folder.path("Setup.app"));
  ASSERT_TRUE(bundle);
  EXPECT_THAT(bundle->localizations(), IsEmpty());
}

// Any user could put a bundle above the programs of others, as /tmp/Contents above an AppImage.
TEST(Bundle, IsNoneIfSomebodyElseMayChangeIt) {
  const TemporaryFolder folder;
  constexpr uid_t kOther = 30001;
  struct Row {
    const char* path;
    mode_t mode;
    uid_t owner;
    gid_t group;
    bool isBundle;
  } const rows[] = {
      {"", 0755, 0, 0, true},
      {"", 0775, 0, 0, true},  // the group "root" has no other members
      {"", 0775, 0, 30001, false},
      {"", 0755, 0, 30001, true},
      {"", 0777, 0, 0, false},
      {"", 01777, 0, 0, false},
      {"", 0755, kOther, 0, false},
      {"/Contents", 0777, 0, 0, false},
      {"/Contents", 0755, kOther, 0, false},
      {"/Contents/Info.plist", 0666, 0, 0, false},
      {"/Contents/Info.plist", 0664, 0, 30001, false},
      {"/Contents/Info.plist", 0644, kOther, 0, false},
      {"/Contents/Linux", 0777, kOther, 0, true},  // only what is read from the bundle counts
  };
  for (const Row& row : rows) {
    const std::string bundle = folder.path("Setup.app");
    std::filesystem::create_directories(bundle + "/Contents/Linux");
    folder.write("Setup.app/Contents/Info.plist", kInfo);
    const std::string path = bundle + row.path;
    ASSERT_EQ(::chmod(path.c_str(), row.mode), 0);
    if (::chown(path.c_str(), row.owner, row.group) != 0) GTEST_SKIP() << "needs root";
    const std::string executable = bundle + "/Contents/Linux/setup";
    SCOPED_TRACE(testing::Message() << path << " " << std::oct << row.mode << std::dec << " "
                                    << row.owner << ":" << row.group);
    EXPECT_EQ(Bundle::at(bundle).has_value(), row.isBundle);
    EXPECT_EQ(Bundle::pathAbove(executable).has_value(), row.isBundle);
    EXPECT_EQ(Bundle::above(executable).has_value(), row.isBundle);
    std::filesystem::remove_all(bundle);
  }
}

TEST(Bundle, IsTheNextOneAboveOneThatDoesNotCount) {
  const TemporaryFolder folder;
  folder.write("Outer.app/Contents/Info.plist", kInfo);
  folder.write("Outer.app/Inner.app/Contents/Info.plist", kInfo);
  std::filesystem::permissions(folder.path("Outer.app/Inner.app"), std::filesystem::perms::all);
  EXPECT_THAT(Bundle::pathAbove(folder.path("Outer.app/Inner.app/setup")),
              Optional(folder.path("Outer.app")));
}

/// Who owns the program could change it as well as the bundle.
TEST(Bundle, AboveAProgramMayBelongToItsOwner) {
  const TemporaryFolder folder;
  constexpr uid_t kOther = 30001;
  folder.write("Setup.app/Contents/Info.plist", kInfo);
  const std::string executable = folder.write("Setup.app/setup", "");
  for (const char* path : {"Setup.app", "Setup.app/Contents", "Setup.app/Contents/Info.plist"}) {
    if (::chown(folder.path(path).c_str(), kOther, kOther) != 0) GTEST_SKIP() << "needs root";
  }
  EXPECT_FALSE(Bundle::above(executable));
  ASSERT_EQ(::chown(executable.c_str(), kOther, kOther), 0);
  EXPECT_TRUE(Bundle::above(executable));
  EXPECT_FALSE(Bundle::pathAbove(executable));
  EXPECT_FALSE(Bundle::at(folder.path("Setup.app")));
}

TEST(Bundle, HasNoResourceThatSomebodyElseMayChange) {
  const TemporaryFolder folder;
  folder.write("Setup.app/Contents/Info.plist", kInfo);
  const std::string file = folder.write("Setup.app/Contents/Resources/ghost.plist", "");
  const auto bundle = Bundle::at(folder.path("Setup.app"));
  ASSERT_TRUE(bundle);
  ASSERT_TRUE(bundle->resource("ghost", "plist"));
  ASSERT_EQ(::chmod(file.c_str(), 0666), 0);
  EXPECT_FALSE(bundle->resource("ghost", "plist"));
  ASSERT_EQ(::chmod(file.c_str(), 0644), 0);
  ASSERT_EQ(::chmod(folder.path("Setup.app/Contents/Resources").c_str(), 0777), 0);
  EXPECT_FALSE(bundle->resource("ghost", "plist"));
}

}  // namespace
