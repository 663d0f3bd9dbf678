// SPDX-License-Identifier: Apache-2.0
#include <fcntl.h>
#include <stdio.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <system_error>
#include <vector>

#include "tools/common/Terminal.h"
#include "tools/ztreport/commands/Commands.h"
#include "tools/ztreport/commands/SavedReports.h"

namespace zt::tools {

namespace {

namespace fs = std::filesystem;

constexpr std::string_view kEnding = ".ztr";

// File names and what a parser quotes may contain control characters.
using terminal::terminalText;

constexpr std::size_t kColumns = 4;
using Row = std::array<std::string, kColumns>;

/// Width of a UTF-8 text in characters.
std::size_t widthOf(const std::string& text) {
  return static_cast<std::size_t>(std::ranges::count_if(
      text, [](char byte) { return (static_cast<unsigned char>(byte) & 0xC0U) != 0x80U; }));
}

/// The rows in columns, two blanks apart; all but the first and last are aligned to the right.
std::string aligned(const std::vector<Row>& rows) {
  std::array<std::size_t, kColumns> widths{};
  for (const Row& row : rows) {
    for (std::size_t i = 0; i < kColumns; ++i) widths[i] = std::max(widths[i], widthOf(row[i]));
  }
  std::string text;
  for (const Row& row : rows) {
    for (std::size_t i = 0; i + 1 < kColumns; ++i) {
      const std::string blanks(widths[i] - widthOf(row[i]), ' ');
      text += (i == 0 ? row[i] + blanks : blanks + row[i]) + "  ";
    }
    text += row.back() + "\n";
  }
  return text;
}

Json jsonOfSaved(const SavedReport& report) {
  Json object{{"name", report.name}, {"file", report.path}, {"bytes", report.size}};
  object["ageSeconds"] = report.age ? Json(std::int64_t{report.age->count()}) : Json(nullptr);
  object["canBeSent"] = report.fault.empty();
  if (!report.fault.empty()) object["reason"] = report.fault;
  return object;
}

/// The name in the store of `file`, which is a path or a name. Throws a `Failure` when it is not in
/// the store.
std::string nameInStore(const fs::path& folder, const std::string& file) {
  const fs::path path(file);
  const fs::path parent = path.has_parent_path() ? path.parent_path() : folder;
  std::string name = path.filename().string();
  std::error_code error;
  const bool isThere = name.ends_with(kEnding) && fs::equivalent(parent, folder, error) && !error &&
                       fs::exists(fs::symlink_status(folder / name, error));
  if (isThere) return name;
  throw Failure(Exit::WrongInput,
                "--set-aside: " + file + ": no saved report in " + folder.string());
}

/// "{A}.ztr" for 1, "{A}-2.ztr" for 2 and so on.
std::string numbered(const std::string& name, int number) {
  if (number == 1) return name;
  std::string result = name.substr(0, name.size() - kEnding.size());
  result.append("-").append(std::to_string(number)).append(kEnding);
  return result;
}

/// Renames `from` to `to` without replacing anything; false, with errno set, on failure. link() and
/// unlink() work on every file system with hard links; folders and file systems without links need
/// renameat2().
bool moveTo(const fs::path& from, const fs::path& to) {
  if (::link(from.c_str(), to.c_str()) == 0) return ::unlink(from.c_str()) == 0;
  if (errno == EEXIST) return false;
  return ::renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE) == 0;
}

}  // namespace

Exit listStore(Output output) {
  const std::vector<SavedReport> reports = savedReports(storeFolder());
  if (output == Output::Json) {
    Json list = Json::array();
    for (const SavedReport& report : reports) list.push_back(jsonOfSaved(report));
    print(Json{{"reports", list}}.text(2) + "\n");
    return Exit::Done;
  }
  std::vector<Row> rows;
  for (const SavedReport& report : reports) {
    if (output == Output::Quiet && report.fault.empty()) continue;
    rows.push_back(
        {terminalText(report.name), report.size ? std::to_string(*report.size) + " bytes" : "-",
         report.age ? ageText(*report.age) : "-",
         report.fault.empty() ? "can be sent" : "cannot be sent: " + terminalText(report.fault)});
  }
  if (!rows.empty()) {
    print(aligned(rows));
  } else {
    tell(output, "empty: no report is saved", nullptr);
  }
  return Exit::Done;
}

Exit setAside(const std::string& file, Output output) {
  const fs::path folder = storeFolder();
  const std::string name = nameInStore(folder, file);
  const fs::path aside = folder.parent_path() / "set-aside";
  std::error_code error;
  fs::create_directories(aside, error);
  if (error) throw Failure(Exit::MachineFailed, aside.string() + ": " + error.message());

  for (int number = 1;; ++number) {
    const fs::path target = aside / numbered(name, number);
    if (moveTo(folder / name, target)) {
      tell(output, target.string(), {{"file", target.string()}});
      return Exit::Done;
    }
    if (errno == EEXIST) continue;
    throw Failure(Exit::MachineFailed, terminalText((folder / name).string()) +
                                           ": cannot be set aside: " + std::strerror(errno));
  }
}

Exit purge(Output output) {
  storeFolder();
  const ZtReportStore store;
  const std::size_t removed = store.removeAll();
  tell(output, std::to_string(removed) + " removed", {{"removed", removed}});
  const std::size_t left = store.list().size() + store.listUnsendable().size();
  if (left == 0) return Exit::Done;
  throw Failure(Exit::MachineFailed, std::to_string(left) + " reports cannot be removed");
}

}  // namespace zt::tools
