// SPDX-License-Identifier: Apache-2.0
#include <sched.h>
#include <sys/mount.h>

#include <filesystem>
#include <optional>

#include "tests/integration/ztreport/DoctorTest.h"
#include "tests/support/Inbox.h"

// The checks of the store. Tests that need a file system of their own are skipped where mounting is
// not permitted.

namespace zt::test {
namespace {

namespace fs = std::filesystem;

using testing::MatchesRegex;
using testing::StartsWith;

constexpr const char* kSpaceRemedy = " -> free space on the file system of the store";
constexpr const char* kWriteRemedy =
    " -> make it writable for this user; otherwise reports that are not accepted are lost";
constexpr const char* kNoStore =
    "warning: skipped: there is no store folder -> fix the failed check above";

/// A file system in memory over a folder, visible only to this process and its subprocesses.
class Mounted {
 public:
  Mounted(std::string folder, const char* options) : _folder(std::move(folder)) {
    static const bool kHasOwnMounts =
        ::unshare(CLONE_NEWNS) == 0 &&
        ::mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0;
    fs::create_directories(_folder);
    _isMounted = kHasOwnMounts && ::mount("none", _folder.c_str(), "tmpfs", 0, options) == 0;
  }
  Mounted(const Mounted&) = delete;
  Mounted& operator=(const Mounted&) = delete;
  ~Mounted() {
    if (_isMounted) ::umount2(_folder.c_str(), MNT_DETACH);
  }

  bool isMounted() const { return _isMounted; }
  bool makeReadOnly() const {
    return ::mount("none", _folder.c_str(), "tmpfs", MS_REMOUNT | MS_RDONLY, "") == 0;
  }

 private:
  const std::string _folder;
  bool _isMounted = false;
};

class DoctorStoreTest : public DoctorTest {
 protected:
  std::map<std::string, std::string> findings(const std::vector<std::string>& options = {}) const {
    return examine(kUnreachable, options).findings;
  }
};

TEST_F(DoctorStoreTest, CreatesTheFolderOfTheHost) {
  const auto found = findings({"--app-name", "Setup"});
  EXPECT_EQ(found.at("store folder"), "ok: " + program.storeFolder("Setup"));
  EXPECT_TRUE(fs::is_directory(program.storeFolder("Setup")));
  EXPECT_EQ(program.fileCount(), 0U);
}

TEST_F(DoctorStoreTest, FindsAFileInPlaceOfTheFolder) {
  const std::string file = program.write("data/Kelvane/ztreport/reports", "in the way");
  const Diagnosis diagnosis = examine(kUnreachable);
  EXPECT_EQ(diagnosis.status, 1);
  EXPECT_EQ(
      diagnosis.findings.at("store folder"),
      "failed: " + file +
          " cannot be created -> check for a file or link of that name, the owner of the folders "
          "above it, and XDG_DATA_HOME or HOME");
  for (const char* check : {"store mode", "free space", "saved reports"}) {
    EXPECT_EQ(diagnosis.findings.at(check), kNoStore);
  }
  EXPECT_EQ(contentOf(file), "in the way");
}

TEST_F(DoctorStoreTest, FindsAFolderThatCannotBeCreated) {
  program.setDataFolder("/proc/self");
  EXPECT_THAT(findings().at("store folder"),
              StartsWith("failed: /proc/self/Kelvane/ztreport/reports cannot be created -> "));
}

TEST_F(DoctorStoreTest, FindsAFolderThatCannotBeWrittenTo) {
  const Mounted data(program.path("data"), "");
  if (!data.isMounted()) GTEST_SKIP() << "mounting is not permitted";
  fs::create_directories(program.storeFolder());
  ASSERT_TRUE(data.makeReadOnly());
  Inbox inbox;
  const Diagnosis diagnosis = examine(inbox.configurationUrl());
  EXPECT_EQ(diagnosis.status, 1);
  EXPECT_EQ(diagnosis.findings.at("store folder"),
            "failed: " + program.storeFolder() + " cannot be written to: Read-only file system" +
                kWriteRemedy);
  EXPECT_EQ(diagnosis.findings.at("saved reports"), "ok: none");
}

TEST_F(DoctorStoreTest, FindsAModeThatAdmitsOtherUsers) {
  fs::create_directories(program.storeFolder());
  for (const auto& [mode, finding] : {
           std::pair{0700, "ok: 0700"},
           std::pair{0500, "ok: 0500"},
           std::pair{0755, "warning: 0755"},
           std::pair{0701, "warning: 0701"},
           std::pair{0720, "warning: 0720"},
       }) {
    fs::permissions(program.storeFolder(), static_cast<fs::perms>(mode));
    const std::string remedy =
        ": other users can list the folder (only the owner can read the reports)"
        " -> chmod 700 '" +
        program.storeFolder() + "'";
    EXPECT_EQ(findings().at("store mode"),
              finding + (std::string(finding).starts_with("ok") ? "" : remedy));
  }
}

TEST_F(DoctorStoreTest, FindsLittleFreeSpace) {
  const struct {
    const char* options;
    const char* finding;
  } rows[] = {
      {"size=64m", "ok: [0-9]+ MiB"},
      {"size=8m", "warning: only [0-9]+ [KM]iB -> free space on the file system of the store"},
      {"size=32k",
       "failed: [0-9]+ (bytes|KiB), too little for a report -> free space on the file "
       "system of the store"},
  };
  for (const auto& row : rows) {
    const Mounted data(program.path("data"), row.options);
    if (!data.isMounted()) GTEST_SKIP() << "mounting is not permitted";
    EXPECT_THAT(findings().at("free space"), MatchesRegex(row.finding)) << row.options;
  }
}

TEST_F(DoctorStoreTest, FindsAFileSystemWithoutFreeInodes) {
  // For the root and three folders.
  const Mounted data(program.path("data"), "size=64m,nr_inodes=4");
  if (!data.isMounted()) GTEST_SKIP() << "mounting is not permitted";
  fs::create_directories(program.storeFolder());
  const auto found = findings();
  EXPECT_EQ(found.at("free space"),
            std::string("failed: the file system has no free inodes") + kSpaceRemedy);
  EXPECT_EQ(found.at("store folder"), "failed: " + program.storeFolder() +
                                          " cannot be written to: No space left on device" +
                                          kWriteRemedy);
}

TEST_F(DoctorStoreTest, CountsTheSavedReports) {
  for (const char* name : {"{A}.ztr", "{B}.ztr", "notes.txt"}) {
    const std::string path =
        program.write(std::string("data/Kelvane/ztreport/reports/") + name, "<a/>");
    fs::last_write_time(path, fs::file_time_type::clock::now() -
                                  std::chrono::hours(*name == '{' && name[1] == 'A' ? 3 : 2));
  }
  const Diagnosis diagnosis = examine(kUnreachable);
  EXPECT_EQ(diagnosis.findings.at("saved reports"),
            "ok: 2, all can be sent, the oldest saved 3 h ago");
}

// The names in the suggested commands were once not quoted, so that pasting one could run another.
TEST_F(DoctorStoreTest, SuggestsCommandsThatCanBePasted) {
  const std::string name = "a'b c;touch pwned;.ztr";
  program.write("data/Kelvane/it's/reports/" + name, "<a>");
  fs::permissions(program.storeFolder("it's"), fs::perms(0755));
  const auto found = findings({"--app-name", "it's"});
  const auto run = [this, &found](const std::string& check) {
    const std::string finding = found.at(check);
    std::vector<std::string> environment = program.environment();
    const std::string programs = fs::path(paths::kReportProgram).parent_path();
    environment.push_back("PATH=" + programs + ":/usr/bin:/bin");
    const std::string command = finding.substr(finding.find(" -> ") + 4);
    return runProgram("/bin/sh", {"-c", "cd '" + program.folder() + "' && " + command},
                      {.environment = environment});
  };
  EXPECT_EQ(run("store mode"), done(""));
  EXPECT_EQ(fs::status(program.storeFolder("it's")).permissions(), fs::perms::owner_all);
  EXPECT_EQ(run("saved reports"), done(program.path("data/Kelvane/it's/set-aside/" + name) + "\n"));
  EXPECT_FALSE(fs::exists(program.path("pwned")));
}

TEST_F(DoctorStoreTest, FindsASavedReportThatBlocksTheOthers) {
  program.write("data/Kelvane/Setup/reports/{A}.ztr", "<a>\n</b>");
  Inbox inbox;
  const Diagnosis diagnosis = examine(inbox.configurationUrl(), {"--app-name", "Setup"});
  EXPECT_EQ(diagnosis.status, 1);
  EXPECT_EQ(diagnosis.findings.at("saved reports"),
            "failed: 1, of which 1 cannot be sent; {A}.ztr blocks the 0 after it: line 2, column "
            "1: Opening and ending tag mismatch: a line 1 and b -> ztreport --app-name='Setup' "
            "store --set-aside='{A}.ztr'");

  program.write("data/Kelvane/Setup/reports/{B}.ztr", "<a/>");
  program.write("data/Kelvane/Setup/reports/{C}.ztr", "");
  EXPECT_THAT(findings({"--app-name", "Setup"}).at("saved reports"),
              MatchesRegex("failed: 3, of which 2 cannot be sent; .[AC]..ztr blocks the [12] after "
                           "it: line .*"));
  EXPECT_TRUE(inbox.reports().empty());
  EXPECT_EQ(program.stored("Setup").size(), 3U);
}

}  // namespace
}  // namespace zt::test
