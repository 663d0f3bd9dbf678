#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "ztportal/platform/desktop/DesktopEntries.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using zt::bundleIdentifierOf;
using zt::desktopIdsOf;

TEST(DesktopIdsTest, AreTheNamesOfPackagesFlatpaksAndSnaps) {
  EXPECT_THAT(desktopIdsOf("org.mozilla.firefox"),
              ElementsAre("firefox.desktop", "firefox-esr.desktop", "org.mozilla.firefox.desktop",
                          "firefox_firefox.desktop", "mozilla-firefox.desktop"));
  EXPECT_THAT(desktopIdsOf("org.mozilla.thunderbird"),
              ElementsAre("thunderbird.desktop", "thunderbird-esr.desktop",
                          "net.thunderbird.Thunderbird.desktop", "org.mozilla.thunderbird.desktop",
                          "org.mozilla.thunderbird_esr.desktop", "org.mozilla.Thunderbird.desktop",
                          "thunderbird_thunderbird.desktop", "mozilla-thunderbird.desktop"));
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
      EXPECT_EQ(bundleIdentifierOf(desktopId), identifier) << desktopId;
    }
  }
}

TEST(DesktopIdsTest, AnyOtherIdentifierHasTheEntryOfItsOwnName) {
  for (const char* identifier : {"com.apple.Safari", "com.apple.mail", "com.microsoft.Entourage",
                                 "com.microsoft.Outlook", "chromium", "Org.Mozilla.Firefox"}) {
    const std::string desktopId = std::string(identifier) + ".desktop";
    EXPECT_THAT(desktopIdsOf(identifier), ElementsAre(desktopId));
    EXPECT_EQ(bundleIdentifierOf(desktopId), identifier);
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
    EXPECT_EQ(bundleIdentifierOf(name), name.substr(0, name.size() - 8));
  }
  EXPECT_EQ(bundleIdentifierOf("no ending"), "no ending");
}

}  // namespace
