// SPDX-License-Identifier: Apache-2.0
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "tests/unit/platform/desktop/MadeUpDesktop.h"
#include "ztportal/platform/desktop/ApplicationFiles.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using zt::ApplicationFiles;
using zt::programOf;
using zt::test::MadeUpDesktop;

class ApplicationFilesTest : public testing::Test {
 protected:
  ApplicationFiles files(const std::vector<std::string>& command) const {
    return zt::applicationFiles(command, _desktop.root());
  }
  std::string path(const char* name) const { return _desktop.path(name); }

  MadeUpDesktop _desktop;
};

TEST_F(ApplicationFilesTest, AreNextToTheProgram) {
  const std::string program = _desktop.program("usr/lib/firefox-esr/firefox-esr");
  const ApplicationFiles found = files({program, "%u"});
  ASSERT_FALSE(found.programFolders.empty());
  EXPECT_EQ(found.programFolders.front(), path("usr/lib/firefox-esr"));
  EXPECT_THAT(found.dataFolders, IsEmpty());
  EXPECT_EQ(found.snapInfo, "");
}

TEST_F(ApplicationFilesTest, LinksToTheProgramAreFollowed) {
  const std::string program = _desktop.program("opt/firefox/firefox");
  _desktop.link("usr/bin/browser", program);
  EXPECT_THAT(files({"browser"}).programFolders,
              ElementsAre(path("opt/firefox"), path("opt/lib/firefox"), path("opt/lib64/firefox"),
                          path("usr/lib/browser"), path("usr/lib64/browser"), path("opt/browser")));
  EXPECT_EQ(programOf({"browser", "%u"}), program);
}

TEST_F(ApplicationFilesTest, AScriptMeansTheLibraryFolderOfItsName) {
  const std::string script = _desktop.program("usr/bin/thunderbird");
  for (const std::string& word : {std::string("thunderbird"), script}) {
    EXPECT_THAT(files({word, "%u"}).programFolders,
                ElementsAre(path("usr/bin"), path("usr/lib/thunderbird"),
                            path("usr/lib64/thunderbird"), path("opt/thunderbird")));
  }
}

TEST_F(ApplicationFilesTest, EnvIsNotTheApplication) {
  _desktop.program("usr/bin/env");
  const std::string program = _desktop.program("usr/bin/mail");
  const std::vector<std::string> commands[] = {
      {"mail"},
      {"env", "mail"},
      {"/usr/bin/env", "A=b", "C=", "mail", "X=y"},
      {"env", "-i", "-u", "DISPLAY", "--chdir=/", "A=b", "mail"},
  };
  for (const auto& command : commands) {
    EXPECT_EQ(programOf(command), program) << testing::PrintToString(command);
    EXPECT_EQ(files(command).programFolders.front(), path("usr/bin"))
        << testing::PrintToString(command);
  }
}

TEST_F(ApplicationFilesTest, ACommandWithoutAProgramHasNone) {
  const std::vector<std::string> commands[] = {
      {}, {""}, {"missing"}, {"/missing/program"}, {"env"}, {"env", "A=b"}, {"env", "-u"}};
  for (const auto& command : commands) {
    EXPECT_EQ(programOf(command), "") << testing::PrintToString(command);
    EXPECT_THAT(files(command).programFolders, IsEmpty()) << testing::PrintToString(command);
  }
}

TEST_F(ApplicationFilesTest, OfAFlatpakAreInItsDeployment) {
  const ApplicationFiles found =
      files({"/usr/bin/flatpak", "run", "--branch=stable", "--command=/app/bin/firefox",
             "--file-forwarding", "org.mozilla.firefox", "@@u", "%u", "@@"});
  const std::string own =
      path("home/.local/share/flatpak/app/org.mozilla.firefox/current/active/files");
  const std::string system = path("var/lib/flatpak/app/org.mozilla.firefox/current/active/files");
  EXPECT_THAT(found.programFolders, ElementsAre(own + "/lib/firefox", system + "/lib/firefox"));
  EXPECT_THAT(found.dataFolders, ElementsAre(own + "/share", system + "/share"));
}

TEST_F(ApplicationFilesTest, AFlatpakMayHaveItsOwnCommand) {
  const ApplicationFiles found = files({"flatpak", "run", "org.some"});
  EXPECT_THAT(found.programFolders, IsEmpty());
  EXPECT_EQ(found.dataFolders.size(), 2U);
  EXPECT_THAT(files({"flatpak", "run", "--command=some"}).dataFolders, IsEmpty());
  EXPECT_THAT(files({"flatpak"}).dataFolders, IsEmpty());
}

TEST_F(ApplicationFilesTest, OfASnapAreInItsCurrentRevision) {
  const std::string snap = _desktop.program("usr/bin/snap");
  for (const char* name : {"firefox", "firefox.tool"}) {
    const std::string program = _desktop.link("snap/bin/" + std::string(name), snap);
    const ApplicationFiles found = files({"env", "BAMF_DESKTOP_FILE_HINT=/x", program, "%u"});
    EXPECT_THAT(found.programFolders, ElementsAre(path("snap/firefox/current/usr/lib/firefox"),
                                                  path("snap/firefox/current")));
    EXPECT_THAT(found.dataFolders, ElementsAre(path("snap/firefox/current/usr/share")));
    EXPECT_EQ(found.snapInfo, path("snap/firefox/current/meta/snap.yaml"));
  }
}

}  // namespace
