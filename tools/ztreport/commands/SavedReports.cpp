#include "tools/ztreport/commands/SavedReports.h"

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <system_error>

#include "tools/ztreport/Failure.h"
#include "tools/ztreport/commands/InputOutput.h"
#include "ztportal/ztportal.h"

namespace zt::tools {

namespace {

namespace fs = std::filesystem;

std::string faultIn(const std::string& content) {
  ZtXMLError error;
  if (ZtXMLDocument::parseFileContent(content, ZtXMLKeep::Form, &error) != nullptr) return "";
  std::string reason(error.reason.view());
  if (error.line == 0) return reason;
  return "line " + std::to_string(error.line) + ", column " + std::to_string(error.column) + ": " +
         reason;
}

SavedReport look(const std::string& path) {
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
  // Opening a pipe would wait for its other end.
  if (!fs::is_regular_file(status)) {
    report.fault = fs::is_directory(status) ? "a folder" : "no regular file";
    return report;
  }
  if (const auto size = fs::file_size(path, error); !error) report.size = size;
  const auto content = contentOf(path);
  report.fault = content ? faultIn(*content) : std::strerror(errno);
  return report;
}

}  // namespace

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

std::vector<SavedReport> savedReports(const std::string& folder) {
  std::vector<SavedReport> reports;
  for (const std::string& path : savedReportPaths(folder)) reports.push_back(look(path));
  return reports;
}

}  // namespace zt::tools
