// SPDX-License-Identifier: Apache-2.0
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <cstddef>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

#include "tests/support/Printing.h"
#include "tests/support/ScopedEnvironment.h"
#include "tests/unit/platform/desktop/MadeUpDesktop.h"
#include "ztportal/platform/desktop/LinuxInstalledApplications.h"

namespace {

using testing::ElementsAre;
using testing::Pair;
using zt::InstalledApplications;
using zt::LinuxInstalledApplications;
using zt::test::identified;
using zt::test::infoPlist;
using zt::test::MadeUpDesktop;
using zt::test::ScopedEnvironment;

constexpr const char* kFirefox = "org.mozilla.firefox";

class LinuxInstalledApplicationsTest : public testing::Test {
 protected:
  std::optional<std::string> withIdentifier(const std::string& identifier) {
    return _applications.withIdentifier(identifier);
  }
  std::optional<InstalledApplications::Info> info(const std::string& path) {
    return _applications.info(path);
  }
  ZtString name(const std::string& path) {
    const auto told = info(path);
    const auto found = told->find("CFBundleName");
    return found != told->end() ? found->second : ZtString();
  }
  /// Adds a system-wide entry for a program that exists.
  std::string entry(const std::string& file, const std::string& lines = "Name=Some\n") const {
    return _desktop.entry("usr/share/applications/" + file, lines + "Exec=some %u\n");
  }
  void putDefaults(const std::string& list) const {
    _desktop.write("home/.config/mimeapps.list", "[Default Applications]\n" + list);
  }

  MadeUpDesktop _desktop;
  std::string _program = _desktop.program("usr/bin/some");
  LinuxInstalledApplications _applications{zt::libexecFolder(), _desktop.root()};
};

TEST_F(LinuxInstalledApplicationsTest, NothingIsInstalledOnAnEmptyMachine) {
  for (const char* identifier :
       {"com.apple.mail", "org.mozilla.thunderbird", "com.microsoft.Entourage",
        "com.microsoft.Outlook", "com.apple.Safari", "org.mozilla.firefox",
        "com.operasoftware.Opera", "com.google.Chrome", "chromium", ""}) {
    EXPECT_EQ(withIdentifier(identifier), std::nullopt) << identifier;
  }
  for (const char* url : {"http:", "mailto:", "http", ":", ""}) {
    EXPECT_EQ(_applications.defaultFor(url), std::nullopt) << url;
  }
}

TEST_F(LinuxInstalledApplicationsTest, AnEntryUnderAnyOfItsNamesIsTheApplication) {
  const struct {
    const char* identifier;
    const char* file;
  } rows[] = {
      {"org.mozilla.firefox", "usr/share/applications/firefox.desktop"},
      {"org.mozilla.firefox", "usr/share/applications/firefox-esr.desktop"},
      {"org.mozilla.firefox", "usr/share/applications/firefox-bin.desktop"},
      {"org.mozilla.thunderbird", "usr/share/applications/thunderbird-bin.desktop"},
      {"org.mozilla.firefox", "usr/share/applications/org.mozilla.firefox.desktop"},
      {"org.mozilla.firefox",
       "var/lib/flatpak/exports/share/applications/org.mozilla.firefox.desktop"},
      {"org.mozilla.firefox", "var/lib/snapd/desktop/applications/firefox_firefox.desktop"},
      {"org.mozilla.thunderbird", "usr/share/applications/thunderbird.desktop"},
      {"org.mozilla.thunderbird", "usr/share/applications/net.thunderbird.Thunderbird.desktop"},
      {"org.mozilla.thunderbird",
       "home/.local/share/flatpak/exports/share/applications/org.mozilla.Thunderbird.desktop"},
      {"org.mozilla.thunderbird",
       "var/lib/snapd/desktop/applications/thunderbird_thunderbird.desktop"},
      {"com.operasoftware.Opera", "usr/share/applications/opera.desktop"},
      {"com.google.Chrome", "usr/local/share/applications/google-chrome.desktop"},
      {"com.google.Chrome", "home/.local/share/applications/com.google.Chrome.desktop"},
      {"chromium", "usr/share/applications/chromium.desktop"},
  };
  for (const auto& row : rows) {
    const std::string file = _desktop.entry(row.file, "Name=Some\nExec=some\n");
    EXPECT_EQ(withIdentifier(row.identifier), file);
    EXPECT_THAT(*info(file), ElementsAre(Pair("CFBundleIdentifier", row.identifier),
                                         Pair("CFBundleName", "Some")));
    std::filesystem::remove(file);
    EXPECT_EQ(withIdentifier(row.identifier), std::nullopt);
    EXPECT_EQ(info(file), std::nullopt);
  }
}

TEST_F(LinuxInstalledApplicationsTest, TheFirstNameCounts) {
  const std::string snap = _desktop.entry(
      "var/lib/snapd/desktop/applications/firefox_firefox.desktop", "Name=Snap\nExec=some\n");
  EXPECT_EQ(withIdentifier(kFirefox), snap);
  const std::string esr = entry("firefox-esr.desktop");
  EXPECT_EQ(withIdentifier(kFirefox), esr);
  const std::string firefox = entry("firefox.desktop");
  EXPECT_EQ(withIdentifier(kFirefox), firefox);
}

TEST_F(LinuxInstalledApplicationsTest, LetterCaseMatters) {
  entry("Firefox.desktop");
  EXPECT_EQ(withIdentifier(kFirefox), std::nullopt);
  entry("firefox.desktop");
  EXPECT_EQ(withIdentifier("org.mozilla.Firefox"), std::nullopt);
}

TEST_F(LinuxInstalledApplicationsTest, AnEntryWithoutItsProgramIsNotAnApplication) {
  const char* const rows[] = {
      "Name=Some\nExec=missing\n",
      "Name=Some\nExec=/missing/program %u\n",
      "Name=Some\nExec=some\nTryExec=missing\n",
      "Name=Some\nExec=some \"\n",
  };
  for (const char* lines : rows) {
    const std::string file = _desktop.entry("usr/share/applications/firefox.desktop", lines);
    EXPECT_EQ(withIdentifier(kFirefox), std::nullopt) << lines;
    EXPECT_EQ(info(file), std::nullopt) << lines;
  }
  _desktop.write("usr/share/applications/firefox.desktop", "[Desktop Entry]\nType=Link\nURL=/\n");
  EXPECT_EQ(withIdentifier(kFirefox), std::nullopt);
  _desktop.write("usr/share/applications/firefox.desktop", "no entry");
  EXPECT_EQ(withIdentifier(kFirefox), std::nullopt);
}

TEST_F(LinuxInstalledApplicationsTest, AnEntryThatIsOnlyHiddenFromMenusIsAnApplication) {
  const std::string file = entry("firefox.desktop", "Name=Some\nNoDisplay=true\nOnlyShowIn=KDE;\n");
  EXPECT_EQ(withIdentifier(kFirefox), file);
}

TEST_F(LinuxInstalledApplicationsTest, TheUsersEntryReplacesTheSystems) {
  const std::string system = entry("firefox.desktop");
  const char* const own = "home/.local/share/applications/firefox.desktop";
  const std::string file = _desktop.entry(own, "Name=Mine\nExec=some\n");
  EXPECT_EQ(withIdentifier(kFirefox), file);
  _desktop.entry(own, "Name=Mine\nExec=some\nHidden=true\n");
  EXPECT_EQ(withIdentifier(kFirefox), std::nullopt) << "hidden: deleted by the user";
  EXPECT_EQ(info(file), std::nullopt);
  _desktop.entry(own, "Name=Mine\nExec=missing\n");
  EXPECT_EQ(withIdentifier(kFirefox), system) << "not usable: as if it were not there";
  const std::string esr = entry("firefox-esr.desktop");
  _desktop.entry(own, "Hidden=true\n");
  EXPECT_EQ(withIdentifier(kFirefox), esr) << "under another name it is another one";
}

// One application had as many names in reports as its users had languages.
TEST_F(LinuxInstalledApplicationsTest, TheNameIsTheSameInEveryLanguage) {
  const std::string file = entry("firefox.desktop", "Name[de]=Feuerfuchs\nName=\"Fire\" \\s\n");
  for (const char* locale : {"C", "C.UTF-8", "en_US.UTF-8", "de_DE.UTF-8"}) {
    const ScopedEnvironment all("LC_ALL", locale);
    const ScopedEnvironment languages("LANGUAGE", "de");
    EXPECT_EQ(name(file), "\"Fire\"  ") << locale;
  }
}

TEST_F(LinuxInstalledApplicationsTest, AnEntryWithoutANameHasNone) {
  EXPECT_THAT(*info(entry("mail.desktop", "")), ElementsAre(Pair("CFBundleIdentifier", "mail")));
  EXPECT_THAT(*info(entry("mail.desktop", "Name=\n")),
              ElementsAre(Pair("CFBundleIdentifier", "mail")));
}

TEST_F(LinuxInstalledApplicationsTest, TheVersionIsThatOfTheApplication) {
  const std::string program = _desktop.program("usr/lib/firefox/firefox");
  _desktop.write("usr/lib/firefox/application.ini", "[App]\nVersion=128.5.0\n");
  const std::string file = _desktop.entry("usr/share/applications/firefox.desktop",
                                          "Name=Firefox\nExec=" + program + " %u\n");
  EXPECT_THAT(*info(file),
              ElementsAre(Pair("CFBundleIdentifier", kFirefox), Pair("CFBundleName", "Firefox"),
                          Pair("CFBundleShortVersionString", "128.5.0")));
  EXPECT_FALSE(_desktop.startedAProgram());
}

TEST_F(LinuxInstalledApplicationsTest, AnEntryBelowAFolderHasItsNameInItsId) {
  const std::string file = entry("mozilla/firefox.desktop");
  EXPECT_EQ(withIdentifier(kFirefox), file);
  EXPECT_THAT(*info(file), testing::Contains(Pair("CFBundleIdentifier", kFirefox)));
}

TEST_F(LinuxInstalledApplicationsTest, OnlyBundlesAndEntriesAreApplications) {
  for (const std::string& path :
       {_program, _desktop.root(), _desktop.write("a.txt", "[Desktop Entry]\nType=Application\n"),
        std::string(), std::string("firefox.desktop"), _desktop.path("missing.desktop")}) {
    EXPECT_EQ(info(path), std::nullopt) << path;
  }
}

TEST_F(LinuxInstalledApplicationsTest, FindsBundlesInTheUsualFolders) {
  for (const char* folder : {"opt", "Applications", "home/Applications"}) {
    const std::string bundle = std::string(folder) + "/Some.app";
    _desktop.write(bundle + "/Contents/Info.plist", identified("com.example.some"));
    // Each has precedence over the one in the row above.
    EXPECT_EQ(withIdentifier("com.example.some"), _desktop.path(bundle));
  }
  EXPECT_EQ(withIdentifier("com.example.Some"), std::nullopt);
  _desktop.write("opt/vendor/Deep.app/Contents/Info.plist", identified("com.example.deep"));
  EXPECT_EQ(withIdentifier("com.example.deep"), std::nullopt);
}

TEST_F(LinuxInstalledApplicationsTest, OfSeveralBundlesInAFolderTheFirstByNameCounts) {
  for (const char* name : {"c", "a", "b"}) {
    _desktop.write("opt/" + std::string(name) + "/Contents/Info.plist", identified("some"));
  }
  _desktop.write("opt/0/Contents/Info.plist", "broken");
  EXPECT_EQ(withIdentifier("some"), _desktop.path("opt/a"));
}

TEST_F(LinuxInstalledApplicationsTest, ABundleHasPrecedenceOverAnEntry) {
  entry("firefox.desktop");
  _desktop.write("opt/Fire.app/Contents/Info.plist",
                 infoPlist("<key>CFBundleIdentifier</key><string>org.mozilla.firefox</string>"
                           "<key>CFBundleName</key><string>Fire</string>"
                           "<key>CFBundleShortVersionString</key><string>1.5</string>"));
  const std::string bundle = _desktop.path("opt/Fire.app");
  EXPECT_EQ(withIdentifier(kFirefox), bundle);
  EXPECT_THAT(*info(bundle),
              ElementsAre(Pair("CFBundleIdentifier", kFirefox), Pair("CFBundleName", "Fire"),
                          Pair("CFBundleShortVersionString", "1.5")));
}

TEST_F(LinuxInstalledApplicationsTest, TheDefaultIsThatOfTheUsersList) {
  const std::string firefox = entry("firefox.desktop");
  const std::string mail = entry("kde4/mail.desktop");
  putDefaults(
      "x-scheme-handler/http=firefox.desktop\nx-scheme-handler/mailto=kde4-mail.desktop;\n");
  EXPECT_EQ(_applications.defaultFor("http:"), firefox);
  EXPECT_EQ(_applications.defaultFor("mailto:"), mail);
  EXPECT_EQ(_applications.defaultFor("mailto:somebody@example.com"), mail);
  EXPECT_EQ(_applications.defaultFor("https:"), std::nullopt);
  putDefaults("x-scheme-handler/http=missing.desktop;kde4-mail.desktop\n");
  EXPECT_EQ(_applications.defaultFor("http:"), mail);
  EXPECT_EQ(_applications.defaultFor("mailto:"), std::nullopt);
}

// GIO looked into the folders of $XDG_DATA_DIRS only, where a session that is older than Flatpak or
// Snap, or none, has not their folders.
TEST_F(LinuxInstalledApplicationsTest, TheDefaultMayComeFromFlatpakOrSnap) {
  constexpr std::array<std::string_view, 1> kUrls{"http:"};
  const ScopedEnvironment dataFolders("XDG_DATA_DIRS", nullptr);
  const struct {
    const char* file;
    const char* desktopId;
  } rows[] = {
      {"var/lib/flatpak/exports/share/applications/org.mozilla.firefox.desktop",
       "org.mozilla.firefox.desktop"},
      {"home/.local/share/flatpak/exports/share/applications/org.mozilla.firefox.desktop",
       "org.mozilla.firefox.desktop"},
      {"var/lib/snapd/desktop/applications/firefox_firefox.desktop", "firefox_firefox.desktop"},
  };
  for (const auto& row : rows) {
    const std::string file = _desktop.entry(row.file, "Name=Some\nExec=some\n");
    putDefaults(std::string("x-scheme-handler/http=") + row.desktopId + "\n");
    EXPECT_EQ(_applications.defaultFor("http:"), file);
    EXPECT_EQ(_applications.prepared({}, kUrls)->defaultFor("http:"), file);
    std::filesystem::remove(file);
  }
}

TEST_F(LinuxInstalledApplicationsTest, ADefaultThatMadeItsOwnEntryIsTheApplication) {
  _desktop.program("opt/firefox/firefox");
  const std::string file = _desktop.entry(
      "home/.local/share/applications/userapp-Firefox-AB12CD.desktop",
      "Name=Firefox\nNoDisplay=true\nExec=" + _desktop.path("opt/firefox/firefox") + " %u\n");
  putDefaults("x-scheme-handler/http=userapp-Firefox-AB12CD.desktop\n");
  EXPECT_EQ(_applications.defaultFor("http:"), file);
  EXPECT_THAT(*info(file),
              ElementsAre(Pair("CFBundleIdentifier", kFirefox), Pair("CFBundleName", "Firefox")));
}

TEST_F(LinuxInstalledApplicationsTest, TheDesktopMayHaveItsOwnDefault) {
  const std::string firefox = entry("firefox.desktop");
  const std::string opera = entry("opera.desktop");
  _desktop.write("etc/xdg/mimeapps.list",
                 "[Default Applications]\nx-scheme-handler/http=firefox.desktop\n");
  _desktop.write("etc/xdg/kde-mimeapps.list",
                 "[Default Applications]\nx-scheme-handler/http=opera.desktop\n");
  EXPECT_EQ(_applications.defaultFor("http:"), firefox);
  const ScopedEnvironment kde("XDG_CURRENT_DESKTOP", "KDE");
  EXPECT_EQ(_applications.defaultFor("http:"), opera);
  const ScopedEnvironment folder("XDG_CONFIG_HOME", _desktop.path("config").c_str());
  _desktop.write("config/mimeapps.list",
                 "[Default Applications]\nx-scheme-handler/http=firefox.desktop\n");
  EXPECT_EQ(_applications.defaultFor("http:"), firefox);
}

TEST_F(LinuxInstalledApplicationsTest, AnUnknownDefaultHasItsOwnIdentifier) {
  const std::string chromium = entry("chromium.desktop", "Name=Chromium Web Browser\n");
  putDefaults("x-scheme-handler/http=chromium.desktop\n");
  EXPECT_EQ(_applications.defaultFor("http:"), chromium);
  EXPECT_THAT(*info(chromium), ElementsAre(Pair("CFBundleIdentifier", "chromium"),
                                           Pair("CFBundleName", "Chromium Web Browser")));
}

TEST_F(LinuxInstalledApplicationsTest, ADefaultInABundleIsTheBundle) {
  _desktop.write("opt/Fire.app/Contents/Info.plist", identified(kFirefox));
  _desktop.link("usr/bin/fire", _desktop.program("opt/Fire.app/Contents/Linux/fire"));
  _desktop.entry("usr/share/applications/fire.desktop", "Name=Fire\nExec=fire %u\n");
  putDefaults("x-scheme-handler/http=fire.desktop\n");
  EXPECT_EQ(_applications.defaultFor("http:"), _desktop.path("opt/Fire.app"));
}

TEST_F(LinuxInstalledApplicationsTest, WithoutTheLibrarysProgramsOnlyBundlesAreKnown) {
  const std::string firefox = entry("firefox.desktop");
  putDefaults("x-scheme-handler/http=firefox.desktop\n");
  _desktop.write("opt/Some.app/Contents/Info.plist", identified("some"));
  for (const std::string& libexec : {std::string(), _desktop.path("nowhere")}) {
    LinuxInstalledApplications applications(libexec, _desktop.root());
    EXPECT_EQ(applications.withIdentifier(kFirefox), std::nullopt);
    EXPECT_EQ(applications.defaultFor("http:"), std::nullopt);
    EXPECT_EQ(applications.info(firefox), std::nullopt);
    EXPECT_EQ(applications.withIdentifier("some"), _desktop.path("opt/Some.app"));
  }
}

TEST_F(LinuxInstalledApplicationsTest, TheHostGetsNoThread) {
  const auto threads = [] {
    std::size_t count = 0;
    for ([[maybe_unused]] const auto& each :
         std::filesystem::directory_iterator("/proc/self/task")) {
      ++count;
    }
    return count;
  };
  const std::size_t before = threads();
  const std::string file = entry("firefox.desktop");
  putDefaults("x-scheme-handler/http=firefox.desktop\n");
  EXPECT_EQ(_applications.defaultFor("http:"), file);
  EXPECT_EQ(name(file), "Some");
  EXPECT_EQ(threads(), before);
}

}  // namespace
