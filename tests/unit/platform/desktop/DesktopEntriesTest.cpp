// SPDX-License-Identifier: Apache-2.0
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/support/ScopedEnvironment.h"
#include "tests/unit/platform/desktop/MadeUpDesktop.h"
#include "ztportal/platform/desktop/DesktopEntries.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using zt::bundleIdentifierOf;
using zt::dataFolders;
using zt::desktopEntryFiles;
using zt::desktopIdOf;
using zt::desktopIdsOf;
using zt::test::MadeUpDesktop;
using zt::test::ScopedEnvironment;

TEST(DesktopIdsTest, AreTheNamesOfPackagesFlatpaksAndSnaps) {
  EXPECT_THAT(
      desktopIdsOf("org.mozilla.firefox"),
      ElementsAre("firefox.desktop", "firefox-esr.desktop", "org.mozilla.firefox.desktop",
                  "firefox_firefox.desktop", "firefox-bin.desktop", "mozilla-firefox.desktop"));
  EXPECT_THAT(desktopIdsOf("org.mozilla.thunderbird"),
              ElementsAre("thunderbird.desktop", "thunderbird-esr.desktop",
                          "net.thunderbird.Thunderbird.desktop", "org.mozilla.thunderbird.desktop",
                          "org.mozilla.thunderbird_esr.desktop", "org.mozilla.Thunderbird.desktop",
                          "thunderbird_thunderbird.desktop", "thunderbird-bin.desktop",
                          "mozilla-thunderbird.desktop"));
  EXPECT_THAT(desktopIdsOf("com.operasoftware.Opera"),
              ElementsAre("opera.desktop", "opera-stable.desktop", "com.opera.Opera.desktop",
                          "opera_opera.desktop"));
  EXPECT_THAT(desktopIdsOf("com.google.Chrome"),
              ElementsAre("google-chrome.desktop", "google-chrome-stable.desktop",
                          "com.google.Chrome.desktop"));
}

TEST(DesktopIdsTest, BelongToTheirIdentifier) {
  for (const char* identifier : {"org.mozilla.firefox", "org.mozilla.thunderbird",
                                 "com.operasoftware.Opera", "com.google.Chrome"}) {
    for (const std::string& desktopId : desktopIdsOf(identifier)) {
      EXPECT_EQ(bundleIdentifierOf(desktopId, ""), identifier) << desktopId;
    }
  }
}

TEST(DesktopIdsTest, AnyOtherIdentifierHasTheEntryOfItsOwnName) {
  for (const char* identifier : {"com.apple.Safari", "com.apple.mail", "com.microsoft.Entourage",
                                 "com.microsoft.Outlook", "chromium", "Org.Mozilla.Firefox"}) {
    const std::string desktopId = std::string(identifier) + ".desktop";
    EXPECT_THAT(desktopIdsOf(identifier), ElementsAre(desktopId));
    EXPECT_EQ(bundleIdentifierOf(desktopId, ""), identifier);
  }
}

TEST(DesktopIdsTest, AnEntryHasOneIdentifierOnly) {
  EXPECT_THAT(desktopIdsOf("firefox"), IsEmpty());
  EXPECT_THAT(desktopIdsOf("org.mozilla.Thunderbird"), IsEmpty());
  EXPECT_THAT(desktopIdsOf(""), IsEmpty());
}

TEST(DesktopIdsTest, OtherChannelsAreOtherApplications) {
  for (const char* desktopId :
       {"firefox-beta.desktop", "firefox-nightly.desktop", "google-chrome-beta.desktop",
        "opera-developer.desktop", "thunderbird-beta.desktop", "chromium.desktop",
        "Firefox.desktop"}) {
    const std::string name(desktopId);
    EXPECT_EQ(bundleIdentifierOf(name, ""), name.substr(0, name.size() - 8));
  }
  EXPECT_EQ(bundleIdentifierOf("no ending", ""), "no ending");
}

// GIO gives such an entry to an application that makes itself the default one. It belonged to no
// application, so none was the default.
TEST(DesktopIdsTest, AnEntryThatAnApplicationMadeForItselfIsItsOwn) {
  const struct {
    const char* desktopId;
    const char* program;
    const char* identifier;
  } rows[] = {
      {"userapp-Firefox-AB12CD.desktop", "/usr/lib/firefox/firefox", "org.mozilla.firefox"},
      {"userapp-Firefox-AB12CD.desktop", "/home/a/firefox-esr", "org.mozilla.firefox"},
      {"userapp-firefox-bin-AB12CD.desktop", "/opt/firefox-bin", "org.mozilla.firefox"},
      {"userapp-Firefox ESR-AB12CD.desktop", "firefox", "org.mozilla.firefox"},
      {"userapp-Thunderbird-AB12CD.desktop", "/a/thunderbird", "org.mozilla.thunderbird"},
      {"userapp-Google Chrome-AB12CD.desktop", "/a/google-chrome", "com.google.Chrome"},
      // Not what it says that it is.
      {"userapp-Firefox-AB12CD.desktop", "/usr/bin/chromium", "userapp-Firefox-AB12CD"},
      {"userapp-Firefox-AB12CD.desktop", "/usr/bin/opera", "userapp-Firefox-AB12CD"},
      {"userapp-Firefox-AB12CD.desktop", "", "userapp-Firefox-AB12CD"},
      {"userapp-Nightly-AB12CD.desktop", "/opt/nightly/firefox", "userapp-Nightly-AB12CD"},
      {"my-firefox.desktop", "/usr/lib/firefox/firefox", "my-firefox"},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(bundleIdentifierOf(row.desktopId, row.program), row.identifier)
        << row.desktopId << " " << row.program;
  }
}

std::vector<std::string> folders(const char* dataHome, const char* dataFolderList) {
  const ScopedEnvironment home("HOME", "/home/anna");
  const ScopedEnvironment scopedHome("XDG_DATA_HOME", dataHome);
  const ScopedEnvironment scopedFolders("XDG_DATA_DIRS", dataFolderList);
  return dataFolders("/root");
}

TEST(DataFoldersTest, AreTheStandardOnesWithoutVariables) {
  for (const char* unset : {static_cast<const char*>(nullptr), ""}) {
    EXPECT_THAT(folders(unset, unset),
                ElementsAre("/home/anna/.local/share", "/root/usr/local/share", "/root/usr/share",
                            "/home/anna/.local/share/flatpak/exports/share",
                            "/root/var/lib/flatpak/exports/share", "/root/var/lib/snapd/desktop"));
  }
}

TEST(DataFoldersTest, FollowTheVariables) {
  EXPECT_THAT(folders("/data", "/a:/b/:relative::/a:/"),
              ElementsAre("/data", "/a", "/b", "/", "/data/flatpak/exports/share",
                          "/root/var/lib/flatpak/exports/share", "/root/var/lib/snapd/desktop"));
}

TEST(DataFoldersTest, TheVariablesGiveFlatpakAndSnapTheirPlace) {
  EXPECT_THAT(
      folders("/data",
              "/root/var/lib/snapd/desktop:/root/var/lib/flatpak/exports/share/:"
              "/data/flatpak/exports/share:/a"),
      ElementsAre("/data", "/root/var/lib/snapd/desktop", "/root/var/lib/flatpak/exports/share",
                  "/data/flatpak/exports/share", "/a"));
}

TEST(DesktopEntryFilesTest, AreInTheOrderOfTheFolders) {
  const MadeUpDesktop desktop;
  const std::string system = desktop.entry("usr/share/applications/mail.desktop", "");
  const std::string local = desktop.entry("usr/local/share/applications/mail.desktop", "");
  const std::string own = desktop.entry("home/.local/share/applications/mail.desktop", "");
  desktop.entry("usr/share/applications/mail2.desktop", "");
  const std::vector<std::string> all = dataFolders(desktop.root());
  EXPECT_THAT(desktopEntryFiles(all, "mail.desktop"), ElementsAre(own, local, system));
  EXPECT_THAT(desktopEntryFiles(all, "Mail.desktop"), IsEmpty());
  EXPECT_THAT(desktopEntryFiles(all, "mail"), IsEmpty());
  EXPECT_THAT(desktopEntryFiles(all, ""), IsEmpty());
}

TEST(DesktopEntryFilesTest, ADashMayStandForAFolder) {
  const MadeUpDesktop desktop;
  const std::string below = desktop.entry("usr/share/applications/a/b/c-d.desktop", "");
  const std::string dashed = desktop.entry("usr/local/share/applications/a-b/c-d.desktop", "");
  const std::vector<std::string> all = dataFolders(desktop.root());
  EXPECT_THAT(desktopEntryFiles(all, "a-b-c-d.desktop"), ElementsAre(dashed, below));
  EXPECT_THAT(desktopEntryFiles(all, "b-c-d.desktop"), IsEmpty());
  EXPECT_THAT(desktopEntryFiles(all, "-a-b-c-d.desktop"), IsEmpty());
  for (const std::string& file : {below, dashed}) {
    EXPECT_EQ(desktopIdOf(all, file), "a-b-c-d.desktop");
  }
}

TEST(DesktopEntryFilesTest, OnlyFilesOfTheFoldersCount) {
  const MadeUpDesktop desktop;
  desktop.write("usr/share/applications/folder.desktop/file", "");
  desktop.link("usr/share/applications/nothing.desktop", "/nowhere");
  desktop.entry("usr/share/other.desktop", "");
  const std::vector<std::string> all = dataFolders(desktop.root());
  EXPECT_THAT(desktopEntryFiles(all, "folder.desktop"), IsEmpty());
  EXPECT_THAT(desktopEntryFiles(all, "nothing.desktop"), IsEmpty());
  EXPECT_THAT(desktopEntryFiles(all, "../other.desktop"), IsEmpty());
  EXPECT_EQ(desktopIdOf(all, "/elsewhere/a/other.desktop"), "other.desktop");
  EXPECT_EQ(desktopIdOf(all, "other.desktop"), "other.desktop");
}

TEST(DesktopEntryFilesTest, FlatpakAndSnapNeedNoVariable) {
  const MadeUpDesktop desktop;
  const std::string own =
      desktop.entry("home/.local/share/flatpak/exports/share/applications/a.desktop", "");
  const std::string system =
      desktop.entry("var/lib/flatpak/exports/share/applications/a.desktop", "");
  const std::string snap = desktop.entry("var/lib/snapd/desktop/applications/a.desktop", "");
  EXPECT_THAT(desktopEntryFiles(dataFolders(desktop.root()), "a.desktop"),
              ElementsAre(own, system, snap));
}

}  // namespace
