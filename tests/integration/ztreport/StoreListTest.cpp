// SPDX-License-Identifier: Apache-2.0
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <regex>
#include <string>
#include <vector>

#include "tests/integration/ztreport/ReportProgram.h"
#include "tests/support/Inbox.h"

// `ztreport store`.

namespace zt::test {
namespace {

namespace fs = std::filesystem;

using std::chrono::hours;
using std::chrono::minutes;
using std::chrono::seconds;

constexpr const char* kGood = "<reportData>\n</reportData>\n";
constexpr const char* kBroken = "<reportData>\n  <Datas>\n</reportData>\n";

class StoreListTest : public testing::Test {
 protected:
  std::string put(const std::string& name, const std::string& content,
                  seconds age = minutes(5)) const {
    const std::string path = program.write("data/Kelvane/ztreport/reports/" + name, content);
    fs::last_write_time(path, fs::file_time_type::clock::now() - age);
    return path;
  }
  std::string aside(const std::string& name = "") const {
    return program.path("data/Kelvane/ztreport/set-aside") + (name.empty() ? "" : "/" + name);
  }

  /// The lines of the list, sorted, since the order of a store is up to the system.
  std::vector<std::string> listed() const {
    const Finished result = program.run({"store"});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.errors, "");
    std::vector<std::string> lines;
    for (std::size_t begin = 0; begin < result.output.size();) {
      const std::size_t end = result.output.find('\n', begin);
      lines.push_back(result.output.substr(begin, end - begin));
      begin = end + 1;
    }
    std::ranges::sort(lines);
    return lines;
  }
  Finished runSetAside(const std::string& file) const {
    return program.run({"store", "--set-aside", file});
  }

  ReportProgram program;
};

TEST_F(StoreListTest, SaysThatNothingIsSaved) {
  program.write("data/Kelvane/Setup/reports/{A}.ztr", kGood);  // of another host
  program.write("data/Kelvane/ztreport/reports/notes.txt", "not a report");
  EXPECT_EQ(listed(), std::vector<std::string>{"empty: no report is saved"});
}

TEST_F(StoreListTest, ListsEachReportInAlignedColumns) {
  put("{A}.ztr", kGood, seconds(30));
  put("{LONGER}.ztr", kBroken, hours(5));
  put("{Ä}.ztr", "<a>" + std::string(2000, 'x') + "</a>", hours(24 * 3));
  put("{old}.ztr", kGood, hours(47) + minutes(59));
  put("{soon}.ztr", kGood, -hours(1));
  auto lines = listed();
  ASSERT_EQ(lines.size(), 5U);
  // A second may pass between the test and the program.
  lines[0].replace(lines[0].find("s  can") - 3, 2, "NN");
  EXPECT_THAT(
      lines,
      testing::ElementsAre(
          "{A}.ztr         27 bytes           NN s  can be sent",
          "{LONGER}.ztr    37 bytes            5 h  cannot be sent: line 3, column 1: Opening and "
          "ending tag mismatch: Datas line 2 and reportData",
          "{old}.ztr       27 bytes           47 h  can be sent",
          "{soon}.ztr      27 bytes  in the future  can be sent",
          "{Ä}.ztr       2007 bytes            3 d  can be sent"));
}

TEST_F(StoreListTest, SaysWhyAFileCannotBeRead) {
  const std::string folder = program.storeFolder();
  fs::create_directories(folder + "/folder.ztr");
  fs::create_symlink("nowhere", folder + "/link.ztr");
  ASSERT_EQ(::mkfifo((folder + "/pipe.ztr").c_str(), 0600), 0);
  put("empty.ztr", "");
  put("latin.ztr", "<a>\xE4</a>");
  EXPECT_THAT(listed(),
              testing::ElementsAre(
                  "empty.ztr   0 bytes  5 min  cannot be sent: line 1, column 1: Document is empty",
                  testing::MatchesRegex("folder.ztr        -    [0-9] s  cannot be sent: a folder"),
                  "latin.ztr   8 bytes  5 min  cannot be sent: line 1, column 4: a byte that is "
                  "not UTF-8",
                  "link.ztr          -      -  cannot be sent: No such file or directory",
                  testing::MatchesRegex(
                      "pipe.ztr          -    [0-9] s  cannot be sent: no regular file")));
}

TEST_F(StoreListTest, DoesNotReadAnEnormousFile) {
  put("large.ztr", "");
  const fs::path file = program.storeFolder() + "/large.ztr";
  const auto written = fs::last_write_time(file);
  fs::resize_file(file, std::uintmax_t{3} << 30U);  // sparse
  fs::last_write_time(file, written);
  EXPECT_THAT(listed(),
              testing::ElementsAre(
                  "large.ztr  3221225472 bytes  5 min  cannot be sent: larger than 64 MiB"));
}

TEST_F(StoreListTest, EscapesControlCharacters) {
  put("\x1b[31m\n\xE2\x80\x8B.ztr", "<\x1b/>");
  const auto lines = listed();
  ASSERT_EQ(lines.size(), 1U);
  EXPECT_TRUE(lines[0].starts_with("\\x1b[31m\\x0a\\u{200b}.ztr  4 bytes  5 min  cannot be sent: "))
      << lines[0];
}

TEST_F(StoreListTest, ListsInTheOrderOfSending) {
  for (int i = 0; i < 20; ++i) put("{" + std::to_string(i) + "}.ztr", kGood);
  std::string expected;
  for (const auto& entry : fs::directory_iterator(program.storeFolder())) {
    expected += entry.path().filename().string() + " .*\n";
  }
  expected = std::regex_replace(expected, std::regex("[{}]"), ".");
  EXPECT_THAT(program.run({"store"}).output, testing::MatchesRegex(expected));
}

TEST_F(StoreListTest, SetsAsideByNameAndByPathWithoutReplacingAnything) {
  const std::string folder = program.storeFolder();
  const struct {
    std::string name;
    std::string option;
    std::string target;
  } rows[] = {
      {"{A}.ztr", "{A}.ztr", "{A}.ztr"},
      {"{A}.ztr", "{A}.ztr", "{A}-2.ztr"},
      {"{A}.ztr", folder + "/{A}.ztr", "{A}-3.ztr"},
      {"{B}.ztr", folder + "/../reports/{B}.ztr", "{B}.ztr"},
      {"-.ztr", folder + "/-.ztr", "-.ztr"},
  };
  for (const auto& row : rows) {
    put(row.name, row.target);
    EXPECT_EQ(runSetAside(row.option), done(aside(row.target) + "\n"));
  }
  for (const auto& row : rows) EXPECT_EQ(contentOf(aside(row.target)), row.target);
  EXPECT_TRUE(program.stored().empty());
}

TEST_F(StoreListTest, SetsAsideFoldersAndLinks) {
  const std::string folder = program.storeFolder();
  for (const char* target : {"folder.ztr", "folder-2.ztr"}) {
    fs::create_directories(folder + "/folder.ztr/below");
    EXPECT_EQ(runSetAside("folder.ztr"), done(aside(target) + "\n"));
    EXPECT_TRUE(fs::is_directory(aside(target) + "/below"));
  }
  fs::create_symlink("nowhere", folder + "/link.ztr");
  EXPECT_EQ(runSetAside("link.ztr"), done(aside("link.ztr") + "\n"));
  EXPECT_TRUE(fs::is_symlink(aside("link.ztr")));
  EXPECT_TRUE(program.stored().empty());
}

TEST_F(StoreListTest, RefusesToSetAsideWhatIsNotInTheStore) {
  put("{A}.ztr", kGood);
  put("notes.txt", "not a report");
  const std::string other = program.write("other/{A}.ztr", kGood);
  const std::size_t count = program.fileCount();
  const std::string store = program.storeFolder();
  for (const std::string& file :
       {std::string("{B}.ztr"), std::string("notes.txt"), other, std::string("/nowhere/{A}.ztr"),
        std::string(), std::string(".."), store, std::string("\x1b.ztr")}) {
    const std::string shown = file == "\x1b.ztr" ? "\\x1b.ztr" : file;
    EXPECT_EQ(runSetAside(file),
              refused(2, "--set-aside: " + shown + ": no saved report in " + store));
    EXPECT_EQ(program.fileCount(), count) << file;
    EXPECT_FALSE(fs::exists(aside())) << file;
  }
}

TEST_F(StoreListTest, SaysWhenAFileCannotBeSetAside) {
  put("{A}.ztr", kGood);
  program.write("data/Kelvane/ztreport/set-aside", "a file in place of the folder");
  EXPECT_EQ(runSetAside("{A}.ztr"), refused(3, aside() + ": Not a directory"));
  EXPECT_EQ(program.stored(), std::vector<std::string>{"{A}.ztr"});
}

TEST_F(StoreListTest, SettingAsideLetsTheOthersGo) {
  Inbox inbox;
  const std::vector<std::string> resend{"resend", "--config-url", inbox.configurationUrl()};
  put("{BROKEN}.ztr", kBroken);
  ASSERT_EQ(program.run(resend).output, "0 sent, 1 left\n");
  const std::string file = program.write("report.json", describedFlatReport());
  ASSERT_EQ(program.run({"save", file}).status, 0);
  ASSERT_EQ(runSetAside("{BROKEN}.ztr").status, 0);
  EXPECT_EQ(program.run(resend), done("1 sent, 0 left\n"));
  EXPECT_EQ(contentOf(aside("{BROKEN}.ztr")), kBroken);
}

}  // namespace
}  // namespace zt::test
