#include "ztportal/portal/ReportStore.h"

#include "ztportal/base/Text.h"
#include "ztportal/platform/Platform.h"
#include "ztportal/platform/xml/ZtXMLDocument.h"
#include "ztportal/portal/ZtPortalConstants.h"
#include "ztportal/system/ZtHost.h"

namespace zt {

namespace {

constexpr std::string_view kReportsFolder = "reports";
constexpr std::string_view kReportEnding = ".ztr";

std::string joinedPath(std::string_view folder, std::string_view name) {
  std::string path;
  appendText(path, folder, "/", name);
  return path;
}

/// The application-support folder of `domain`, once there is something at `relativePath` below it.
std::optional<std::string> rootOf(std::int16_t domain, std::string_view relativePath) {
  Platform& platform = Platform::current();
  std::optional<std::string> root = platform.supportFolder().path(domain);
  if (!root || !platform.files().createFolders(*root)) return std::nullopt;

  const std::string path = joinedPath(*root, relativePath);
  if (!platform.files().exists(path) && !platform.files().createFolders(path)) return std::nullopt;
  return root;
}

/// Path of the host's folder below the user's.
std::optional<std::string> hostPath() {
  const ZtString name = ZtHost::bundleInfo("CFBundleName");
  if (name.isNull()) return std::nullopt;
  return joinedPath(COMPANY_NAME.view(), name.view());
}

}  // namespace

std::optional<std::string> supportFolder(std::int16_t domain, std::string_view relativePath) {
  const std::optional<std::string> root = rootOf(domain, relativePath);
  if (!root) return std::nullopt;
  return joinedPath(*root, relativePath);
}

std::optional<std::string> hostFolder() {
  const std::optional<std::string> path = hostPath();
  return path ? supportFolder(kUserDomain, *path) : std::nullopt;
}

std::optional<ReportStore> ReportStore::open() {
  const std::optional<std::string> host = hostPath();
  if (!host) return std::nullopt;
  std::optional<std::string> root = rootOf(kUserDomain, *host);
  if (!root) return std::nullopt;
  std::string relativePath = joinedPath(*host, kReportsFolder);
  if (!Platform::current().files().createFoldersBelow(*root, relativePath)) return std::nullopt;
  return ReportStore(std::move(*root), std::move(relativePath));
}

std::string ReportStore::folder() const { return joinedPath(_root, _relativePath); }

std::string ReportStore::fileOf(const ZtString& reportId) const {
  std::string path = joinedPath(folder(), reportId.view());
  path += kReportEnding;
  return path;
}

void ReportStore::save(const ZtString& reportId, std::string_view text) const {
  Files& files = Platform::current().files();
  // Writing truncates first, so a file that is already identical is not put at risk.
  if (files.read(fileOf(reportId), text.size()) == text) return;
  std::string path = joinedPath(_relativePath, reportId.view());
  path += kReportEnding;
  files.writeBelow(_root, path, text);
}

std::vector<std::string> ReportStore::files() const {
  Files& files = Platform::current().files();
  const std::string folder = this->folder();
  std::vector<std::string> paths;
  if (!files.isFolder(folder)) return paths;
  for (const std::string& name : files.list(folder).value_or(std::vector<std::string>())) {
    if (name.ends_with(kReportEnding)) paths.push_back(joinedPath(folder, name));
  }
  return paths;
}

void ReportStore::remove(const std::string& file) { Platform::current().files().remove(file); }

std::optional<std::string> ReportStore::request(const std::string& file) {
  const std::optional<std::string> content =
      Platform::current().files().read(file, kReportFileLimit);
  if (!content) return std::nullopt;
  // A file that could only be sent after a repair is never sent, so no repair is tried.
  const auto document = ZtXMLDocument::parseFileContent(*content, ZtXMLKeep::Form);
  if (document == nullptr) return std::nullopt;
  return document->xmlText();
}

}  // namespace zt
