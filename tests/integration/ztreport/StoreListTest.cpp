#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <string>
#include <vector>

#include "tests/integration/ztreport/ReportProgram.h"
#include "tests/support/Inbox.h"

// `ztreport store`: what waits, and what is moved out of the way.

namespace {

namespace fs = std::filesystem;

using std::chrono::hours;
using std::chrono::minutes;
using std::chrono::seconds;
using zt::test::contentOf;
using zt::test::describedFlatReport;
using zt::test::Finished;
using zt::test::Inbox;
using zt::test::ReportProgram;

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

  /// The lines of the list, sorted: the store's own order is the system's.
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
  void expectSetAside(const std::string& file, const std::string& path) const {
    const Finished result = program.run({"store", "--set-aside", file});
    EXPECT_EQ(result.errors, "");
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.output, path + "\n");
  }
  void expectRefused(const std::string& file, const std::string& shown) const {
    const std::size_t before = program.fileCount();
    const Finished result = program.run({"store", "--set-aside", file});
    EXPECT_EQ(result.status, 2) << file;
    EXPECT_EQ(result.output, "") << file;
    EXPECT_EQ(result.errors, "ztreport: --set-aside: " + shown + ": no saved report in " +
                                 program.storeFolder() + "\n");
    EXPECT_EQ(program.fileCount(), before) << file;
    EXPECT_FALSE(fs::exists(aside())) << file;
  }

  ReportProgram program;
};

TEST_F(StoreListTest, SaysThatNothingIsSaved) {
  EXPECT_EQ(listed(), std::vector<std::string>{"empty: no report is saved"});
  program.write("data/Kelvane/ztreport/reports/notes.txt", "not a report");
  EXPECT_EQ(listed(), std::vector<std::string>{"empty: no report is saved"});
}

TEST_F(StoreListTest, TellsEachReportOnALineOfAlignedColumns) {
  put("{A}.ztr", kGood, seconds(30));
  put("{LONGER}.ztr", kBroken, hours(5));
  put("{Ä}.ztr", "<a>" + std::string(2000, 'x') + "</a>", hours(24 * 3));
  put("{old}.ztr", kGood, hours(47) + minutes(59));
  put("{soon}.ztr", kGood, -hours(1));
  auto lines = listed();
  ASSERT_EQ(lines.size(), 5U);
  // The program looks a moment after the test, so the seconds may have gone on.
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

TEST_F(StoreListTest, MakesControlCharactersHarmless) {
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
    expected += entry.path().filename().string() + "\n";
  }
  std::string names;
  const std::string output = program.run({"store"}).output;
  for (std::size_t begin = 0; begin < output.size(); begin = output.find('\n', begin) + 1) {
    names += output.substr(begin, output.find(' ', begin) - begin) + "\n";
  }
  EXPECT_EQ(names, expected);
}

TEST_F(StoreListTest, IsThatOfTheNamedHost) {
  put("{A}.ztr", kGood);
  EXPECT_EQ(program.run({"store", "--app-name", "Setup"}).output, "empty: no report is saved\n");
}

TEST_F(StoreListTest, SetsAsideByNameAndByPath) {
  put("{A}.ztr", kBroken);
  const std::string path = put("{B}.ztr", kGood);
  expectSetAside("{A}.ztr", aside("{A}.ztr"));
  EXPECT_EQ(contentOf(aside("{A}.ztr")), kBroken);
  expectSetAside(program.storeFolder() + "/../reports/{B}.ztr", aside("{B}.ztr"));
  EXPECT_EQ(contentOf(aside("{B}.ztr")), kGood);
  EXPECT_TRUE(program.stored().empty());
  expectSetAside(put("-.ztr", kGood), aside("-.ztr"));
}

TEST_F(StoreListTest, SetsAsideWithoutReplacingAnything) {
  for (const char* content : {"first", "second", "third"}) {
    put("{A}.ztr", content);
    ASSERT_EQ(program.run({"store", "--set-aside", "{A}.ztr"}).status, 0);
  }
  EXPECT_EQ(contentOf(aside("{A}.ztr")), "first");
  EXPECT_EQ(contentOf(aside("{A}-2.ztr")), "second");
  EXPECT_EQ(contentOf(aside("{A}-3.ztr")), "third");
}

TEST_F(StoreListTest, SetsAsideWhatIsNoFile) {
  const std::string folder = program.storeFolder();
  fs::create_directories(folder + "/folder.ztr/below");
  expectSetAside("folder.ztr", aside("folder.ztr"));
  EXPECT_TRUE(fs::is_directory(aside("folder.ztr/below")));
  fs::create_directories(folder + "/folder.ztr");
  expectSetAside("folder.ztr", aside("folder-2.ztr"));
  fs::create_symlink("nowhere", folder + "/link.ztr");
  expectSetAside("link.ztr", aside("link.ztr"));
  EXPECT_TRUE(fs::is_symlink(aside("link.ztr")));
  EXPECT_TRUE(program.stored().empty());
}

TEST_F(StoreListTest, RefusesToSetAsideWhatIsNotInTheStore) {
  put("{A}.ztr", kGood);
  put("notes.txt", "not a report");
  const std::string other = program.write("other/{A}.ztr", kGood);
  expectRefused("{B}.ztr", "{B}.ztr");
  expectRefused("notes.txt", "notes.txt");
  expectRefused(other, other);
  expectRefused("/nowhere/{A}.ztr", "/nowhere/{A}.ztr");
  expectRefused("", "");
  expectRefused("..", "..");
  expectRefused(program.storeFolder(), program.storeFolder());
  expectRefused("\x1b.ztr", "\\x1b.ztr");
}

TEST_F(StoreListTest, SaysWhenAFileCannotBeSetAside) {
  put("{A}.ztr", kGood);
  program.write("data/Kelvane/ztreport/set-aside", "in the way");
  const Finished result = program.run({"store", "--set-aside", "{A}.ztr"});
  EXPECT_EQ(result.status, 3);
  EXPECT_EQ(result.output, "");
  EXPECT_EQ(result.errors, "ztreport: " + aside() + ": Not a directory\n");
  EXPECT_EQ(program.stored(), std::vector<std::string>{"{A}.ztr"});
}

TEST_F(StoreListTest, SettingAsideLetsTheOthersGo) {
  Inbox inbox;
  put("{BROKEN}.ztr", kBroken);
  ASSERT_EQ(program.run({"resend", "--config-url", inbox.configurationUrl()}).output,
            "0 sent, 1 left\n");
  const std::string file = program.write("report.json", describedFlatReport());
  ASSERT_EQ(program.run({"save", file}).status, 0);
  ASSERT_EQ(program.run({"store", "--set-aside", "{BROKEN}.ztr"}).status, 0);
  const Finished result = program.run({"resend", "--config-url", inbox.configurationUrl()});
  EXPECT_EQ(result.output, "1 sent, 0 left\n");
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(contentOf(aside("{BROKEN}.ztr")), kBroken);
}

}  // namespace
