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
constexpr std::string_view kReportEnding = ".ztr";

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
  if (files.read(file, text.size()) == text || files.writePrivate(file, text)) return {};
  return {errno, std::generic_category()};
}

std::vector<std::string> ReportStore::files() const {
  Files& files = Platform::current().files();
  std::vector<std::string> paths;
  if (!files.isFolder(_folder)) return paths;
  const auto names = files.list(_folder);
  if (!names) {
    logFailure(_folder, " cannot be listed");
    return paths;
  }
  for (const std::string& name : *names) {
    if (name.ends_with(kReportEnding)) paths.push_back(joinedPath(_folder, name));
  }
  return paths;
}

void ReportStore::remove(const std::string& file) {
  if (!Platform::current().files().remove(file)) logFailure(file, " cannot be removed");
}

std::optional<std::string> ReportStore::request(const std::string& file) {
  const std::optional<std::string> content =
      Platform::current().files().read(file, kReportFileLimit);
  if (!content) return std::nullopt;
  // Malformed XML is not repaired: a report is sent exactly as it was saved, or not at all.
  const auto document = ZtXMLDocument::parseFileContent(*content, ZtXMLKeep::Form);
  if (document == nullptr) return std::nullopt;
  return document->xmlText();
}

}  // namespace zt
