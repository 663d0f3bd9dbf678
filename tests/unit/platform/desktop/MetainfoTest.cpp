// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/support/TemporaryFolder.h"
#include "ztportal/platform/desktop/Metainfo.h"

namespace {

using zt::newestRelease;
using zt::test::TemporaryFolder;

std::string component(const std::string& children) {
  return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<component type=\"desktop-application\">" +
         children + "</component>\n";
}

std::string releases(const std::string& list) {
  return component("<id>mail.desktop</id><releases>" + list + "</releases>");
}

class MetainfoTest : public testing::Test {
 protected:
  std::string newest(const std::string& desktopId = "mail.desktop") const {
    return newestRelease({_folder.path("a"), _folder.path("b")}, desktopId);
  }
  std::string newestOf(const std::string& file) const {
    _folder.write("a/metainfo/mail.metainfo.xml", file);
    return newest();
  }

  TemporaryFolder _folder;
};

TEST_F(MetainfoTest, TheNewestReleaseCounts) {
  const struct {
    const char* releases;
    const char* version;
  } rows[] = {
      {R"(<release version="1"/>)", "1"},
      {R"(<release version="2"/><release version="3"/>)", "2"},
      {R"(<release version="2" date="2023-05-31"/><release version="3" date="2023-10-01"/>)", "3"},
      {R"(<release version="3" date="2023-10-01"/><release version="2" date="2023-05-31"/>)", "3"},
      {R"(<release version="1" date="2023-10-01"/><release version="2" date="2023-10-01"/>)", "1"},
      {R"(<release version="1"/><release version="2" date="1999-01-01"/>)", "2"},
      {R"(<release version="1" date="2023-10-01T09:00:00Z"/>)"
       R"(<release version="2" date="2023-10-02T08:00:00+02:00"/>)",
       "2"},
      {R"(<release version="1" timestamp="1696118400"/><release version="2" date="2023-09-30"/>)",
       "1"},
      {R"(<release version="1" date="2023-09-30"/><release version="2" timestamp="1696118400"/>)",
       "2"},
      {R"(<release version="1" timestamp="5" date="2023-09-30"/><release version="2"
           date="2022-09-30"/>)",
       "2"},
      // Months and years that were too large for their types became other numbers.
      {R"(<release version="1" date="2020-01-01"/><release version="2" date="2024-257-01"/>)", "1"},
      {R"(<release version="1" date="2020-01-01"/><release version="2" date="67560-01-01"/>)", "1"},
      {R"(<release version="1" date="2020-01-01"/><release version="2" date="2024--255-1"/>)", "1"},
      {R"(<release version="1" date="2020-01-01"/><release version="2" date="2024-01-257"/>)", "1"},
      {R"(<release version="1" date="soon"/><release version="2" date="2023-13-01"/>)", "1"},
      {R"(<release date="2023-10-01"/><release version="" date="2023-10-01"/>
          <release version="1" date="2020-01-01"/>)",
       "1"},
      {R"(<other version="2" date="2023-10-01"/><release version="1" date="2020-01-01"/>)", "1"},
      {"", ""},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(newestOf(releases(row.releases)), row.version) << row.releases;
  }
}

TEST_F(MetainfoTest, BelongsToTheEntryThatItNames) {
  const std::string release = R"(<releases><release version="1"/></releases>)";
  const struct {
    const char* names;
    bool isOf;
  } rows[] = {
      {"<id>mail.desktop</id>", true},
      {"<id>mail</id>", true},
      {"<?id mail?>", false},
      {"<id type='desktop'>\n  mail.desktop\n</id>", true},
      {"<id>org.mail</id><launchable type='desktop-id'>mail.desktop</launchable>", true},
      {"<launchable type='desktop-id'>a.desktop</launchable>"
       "<launchable type='desktop-id'> mail.desktop </launchable>",
       true},
      {"<id>org.mail</id>", false},
      {"<id>Mail.desktop</id>", false},
      {"<id>org.mail</id><launchable type='service'>mail.desktop</launchable>", false},
      {"<id>org.mail</id><launchable type='desktop-id'>mail</launchable>", false},
      {"<id>org.mail</id><provides><id>mail.desktop</id></provides>", false},
      {"<name>mail.desktop</name>", false},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(newestOf(component(row.names + release)), row.isOf ? "1" : "") << row.names;
  }
}

TEST_F(MetainfoTest, IsFoundInTwoFoldersUnderTwoNames) {
  const std::string file = releases(R"(<release version="1"/>)");
  for (const char* name : {"a/metainfo/x.metainfo.xml", "a/metainfo/x.appdata.xml",
                           "b/appdata/x.appdata.xml", "b/appdata/x.metainfo.xml"}) {
    const TemporaryFolder folder;
    folder.write(name, file);
    EXPECT_EQ(newestRelease({folder.path("a"), folder.path("b")}, "mail.desktop"), "1") << name;
  }
  for (const char* name : {"a/metainfo/x.xml", "a/x.metainfo.xml", "a/metainfo/b/x.metainfo.xml"}) {
    const TemporaryFolder folder;
    folder.write(name, file);
    EXPECT_EQ(newestRelease({folder.path("a")}, "mail.desktop"), "") << name;
  }
}

TEST_F(MetainfoTest, TheFirstFileWithAReleaseCounts) {
  _folder.write("b/metainfo/mail.metainfo.xml", releases(R"(<release version="4"/>)"));
  EXPECT_EQ(newest(), "4");
  _folder.write("a/appdata/mail.appdata.xml", releases(R"(<release version="3"/>)"));
  EXPECT_EQ(newest(), "3");
  _folder.write("a/metainfo/b.metainfo.xml", releases(R"(<release version="2"/>)"));
  EXPECT_EQ(newest(), "2");
  _folder.write("a/metainfo/a.metainfo.xml", releases(""));
  EXPECT_EQ(newest(), "2");
}

TEST_F(MetainfoTest, AFileThatCannotBeReadIsIgnored) {
  EXPECT_EQ(newestOf("<component><id>mail.desktop</id><releases>"), "");
  EXPECT_EQ(newestOf(""), "");
  _folder.write("a/metainfo/folder.metainfo.xml/file", "");
  EXPECT_EQ(newest(), "");
  EXPECT_EQ(newestRelease({}, "mail.desktop"), "");
}

}  // namespace
