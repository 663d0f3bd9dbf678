// SPDX-License-Identifier: Apache-2.0
#include "ztportal/portal/ReportStore.h"

#include <cerrno>

#include "ztportal/base/Log.h"
#include "ztportal/base/Text.h"
#include "ztportal/platform/Platform.h"
#include "ztportal/platform/xml/ZtXMLDocument.h"
#include "ztportal/system/HostFolder.h"

namespace zt {

namespace {

constexpr std::string_view kReportsFolder = "reports";

/// Says what did not work with `path`, with the reason in `errno`.
void logFailure(const std::string& path, const char* what) {
  log(ZtLogLevel::Warning, "store", path, what, ": ", std::generic_category().message(errno));
}

}  // namespace

std::optional<ReportStore> ReportStore::open() {
  errno = ENOENT;  // for a host or a user without a folder
  const std::optional<std::string> host = hostFolder();
  if (!host) return std::nullopt;
  std::string folder = joinedPath(*host, kReportsFolder);
  if (!Platform::current().files().createPrivateFolders(folder)) {
    logFailure(folder, " cannot be created");
    return std::nullopt;
  }
  return ReportStore(std::move(folder));
}

std::string ReportStore::fileOf(const ZtString& reportId) const {
  std::string path = joinedPath(_folder, reportId.view());
  path += kReportEnding;
  return path;
}

std::error_code ReportStore::save(const ZtString& reportId, std::string_view text) const {
  Files& files = Platform::current().files();
  const std::string file = fileOf(reportId);
  // Writing truncates first, so a file that is already identical is not put at risk.
  if (files.read(file, text.size()) != text && !files.writePrivate(file, text)) {
    return {errno, std::generic_category()};
  }
  enforceStoreLimits(_folder);
  return {};
}

std::vector<std::string> ReportStore::filesIn(const std::string& folder) {
  Files& files = Platform::current().files();
  std::vector<std::string> paths;
  if (!files.isFolder(folder)) return paths;
  const auto names = files.list(folder);
  if (!names) {
    logFailure(folder, " cannot be listed");
    return paths;
  }
  for (const std::string& name : *names) {
    if (name.ends_with(kReportEnding)) paths.push_back(joinedPath(folder, name));
  }
  return paths;
}

bool ReportStore::remove(const std::string& file) {
  if (Platform::current().files().remove(file)) return true;
  logFailure(file, " cannot be removed");
  return false;
}

std::optional<std::string> ReportStore::request(const std::string& file, std::string* problem) {
  const std::optional<std::string> content =
      Platform::current().files().read(file, kReportFileLimit);
  if (!content) {
    if (problem != nullptr) *problem = "cannot be read, or is no regular file of at most 64 MiB";
    return std::nullopt;
  }
  // Malformed XML is not repaired: a report is sent exactly as it was saved, or not at all.
  ZtXMLError error;
  const auto document = ZtXMLDocument::parseFileContent(*content, ZtXMLKeep::Form, &error);
  if (document != nullptr) return document->xmlText();
  if (problem != nullptr && error.line == 0) *problem = error.reason.view();
  if (problem != nullptr && error.line != 0) {
    setText(*problem, "line ", std::to_string(error.line), ", column ",
            std::to_string(error.column), ": ", error.reason.view());
  }
  return std::nullopt;
}

}  // namespace zt
