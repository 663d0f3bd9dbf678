// SPDX-License-Identifier: Apache-2.0
#include "tools/ztreport/commands/SavedReports.h"

#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <system_error>

#include "tools/ztreport/commands/InputOutput.h"
#include "ztportal/base/RegularFile.h"
#include "ztportal/ztportal.h"

namespace zt::tools {

namespace {

namespace fs = std::filesystem;

/// A unit, and the amount from which the next one is used.
struct Unit {
  std::uintmax_t size;
  std::uintmax_t below;
  const char* name;
};

constexpr std::array<Unit, 4> kSpans{{
    {1, 60, " s"},
    {60, 60, " min"},
    {3'600, 48, " h"},
    {86'400, UINTMAX_MAX, " d"},
}};

constexpr std::array<Unit, 3> kSizes{{
    {1, 10'000, " bytes"},
    {1'024, 10'000, " KiB"},
    {1'048'576, UINTMAX_MAX, " MiB"},
}};

template <class Units>
std::string inUnits(std::uintmax_t amount, const Units& units) {
  for (const Unit& unit : units) {
    if (amount / unit.size < unit.below) return std::to_string(amount / unit.size) + unit.name;
  }
  return std::to_string(amount);
}

}  // namespace

const char* const kNoStoreFolder = "the store's folder cannot be created";

std::string storeFolder() {
  const ZtString folder = ZtPortalData::reportFolder();
  if (folder.isNull()) throw Failure(Exit::MachineFailed, kNoStoreFolder);
  return std::string(folder.view());
}

std::vector<std::string> savedReportPaths(const std::string& folder) {
  std::vector<std::string> paths;
  std::error_code error;
  fs::directory_iterator entry(folder, error);
  for (; !error && entry != fs::directory_iterator(); entry.increment(error)) {
    if (entry->path().native().ends_with(".ztr")) paths.push_back(entry->path().string());
  }
  if (error) throw Failure(Exit::MachineFailed, folder + ": " + error.message());
  return paths;
}

SavedReport savedReport(const std::string& path) {
  SavedReport report;
  report.path = path;
  report.name = fs::path(path).filename().string();

  std::error_code error;
  const fs::file_status status = fs::status(path, error);
  if (error) {
    report.fault = error.message();
    return report;
  }
  if (const auto written = fs::last_write_time(path, error); !error) {
    report.age =
        std::chrono::floor<std::chrono::seconds>(fs::file_time_type::clock::now() - written);
  }
  // Opening a named pipe would block.
  if (!fs::is_regular_file(status)) {
    report.fault = fs::is_directory(status) ? "a folder" : "no regular file";
    return report;
  }
  if (const auto size = fs::file_size(path, error); !error) report.size = size;
  if (report.size > kReportFileLimit) {
    report.fault = "larger than 64 MiB";
    return report;
  }
  ZtSavedReport saved;
  saved.path = path;
  report.fault = ::access(path.c_str(), R_OK) == 0 ? saved.problem() : std::strerror(errno);
  return report;
}

std::vector<SavedReport> savedReports(const std::string& folder) {
  std::vector<SavedReport> reports;
  for (const std::string& path : savedReportPaths(folder)) reports.push_back(savedReport(path));
  return reports;
}

std::string ageText(std::chrono::seconds age) {
  if (age.count() < 0) return "in the future";
  return inUnits(static_cast<std::uintmax_t>(age.count()), kSpans);
}

std::string sizeText(std::uintmax_t bytes) { return inUnits(bytes, kSizes); }

}  // namespace zt::tools
