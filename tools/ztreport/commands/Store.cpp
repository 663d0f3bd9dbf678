#include "tools/ztreport/commands/Store.h"

#include <fcntl.h>
#include <stdio.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <limits>
#include <system_error>
#include <vector>

#include "tools/common/Terminal.h"
#include "tools/ztreport/commands/Amounts.h"
#include "tools/ztreport/commands/Columns.h"
#include "tools/ztreport/commands/Delivery.h"
#include "tools/ztreport/commands/InputOutput.h"
#include "tools/ztreport/commands/SavedReports.h"

namespace zt::tools {

namespace {

namespace fs = std::filesystem;

constexpr std::string_view kEnding = ".ztr";

/// Names of files and what a parser quotes are other people's texts.
std::string shown(const std::string& text) {
  return zt::terminal::terminalText(text, std::numeric_limits<std::size_t>::max());
}

/// The name in the store that `file` stands for; raises a `Failure` when it stands for none.
std::string nameInStore(const fs::path& folder, const std::string& file) {
  const fs::path path(file);
  const fs::path parent = path.has_parent_path() ? path.parent_path() : folder;
  std::string name = path.filename().string();
  std::error_code error;
  const bool isThere = name.ends_with(kEnding) && fs::equivalent(parent, folder, error) && !error &&
                       fs::exists(fs::symlink_status(folder / name, error));
  if (isThere) return name;
  throw Failure(Exit::WrongInput,
                "--set-aside: " + shown(file) + ": no saved report in " + folder.string());
}

/// The first name that may be tried, the second and so on: "{A}.ztr", "{A}-2.ztr".
std::string numbered(const std::string& name, int number) {
  if (number == 1) return name;
  std::string result = name.substr(0, name.size() - kEnding.size());
  result.append("-").append(std::to_string(number)).append(kEnding);
  return result;
}

/// Gives `from` the name `to` if that is free; false, with errno set, when it is not. A second name
/// and then the end of the first is what every file system with links can do; the rest (folders,
/// and file systems without links) takes a renaming that replaces nothing.
bool moveTo(const fs::path& from, const fs::path& to) {
  if (::link(from.c_str(), to.c_str()) == 0) return ::unlink(from.c_str()) == 0;
  if (errno == EEXIST) return false;
  return ::renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE) == 0;
}

}  // namespace

Exit listStore() {
  const std::vector<SavedReport> reports = savedReports(storeFolder());
  if (reports.empty()) {
    print("empty: no report is saved\n");
    return Exit::Done;
  }
  Columns lines({Align::Left, Align::Right, Align::Right, Align::Left});
  for (const SavedReport& report : reports) {
    lines.add({shown(report.name), report.size ? std::to_string(*report.size) + " bytes" : "-",
               report.age ? ageText(*report.age) : "-",
               report.fault.empty() ? "can be sent" : "cannot be sent: " + shown(report.fault)});
  }
  print(lines.text());
  return Exit::Done;
}

Exit setAside(const std::string& file) {
  const fs::path folder = storeFolder();
  const std::string name = nameInStore(folder, file);
  const fs::path aside = folder.parent_path() / "set-aside";
  std::error_code error;
  fs::create_directories(aside, error);
  if (error) throw Failure(Exit::MachineFailed, aside.string() + ": " + error.message());

  for (int number = 1;; ++number) {
    const fs::path target = aside / numbered(name, number);
    if (moveTo(folder / name, target)) {
      print(target.string() + "\n");
      return Exit::Done;
    }
    if (errno == EEXIST) continue;
    throw Failure(Exit::MachineFailed, shown((folder / name).string()) +
                                           ": cannot be set aside: " + std::strerror(errno));
  }
}

}  // namespace zt::tools
