#include <optional>
#include <string>
#include <string_view>

#include "ztportal/base/Text.h"
#include "ztportal/base/ZtException.h"
#include "ztportal/platform/Platform.h"
#include "ztportal/platform/plist/Bundle.h"
#include "ztportal/platform/plist/PropertyList.h"
#include "ztportal/platform/time/DateText.h"
#include "ztportal/platform/xml/ZtXMLDocument.h"
#include "ztportal/portal/ZtPortalConstants.h"
#include "ztportal/portal/ZtPortalData.h"
#include "ztportal/system/ZtHost.h"

// Delivery and offline store.

namespace {

constexpr std::string_view kReportsFolder = "/reports";
constexpr std::string_view kReportEnding = ".ztr";

/// The server confirms by the name of its response and the word true, wherever they stand: answers
/// of servers that word the rest differently are accepted, too.
bool isAccepted(const ZtString& answer) {
  return zt::containsAnyCase(answer.view(), "postpooldatasresponse") &&
         zt::containsAnyCase(answer.view(), "true");
}

/// What the companion's property list says of the test mode: nothing where there is no such list
/// or no such entry; a missing text for an entry that is no string.
std::optional<ZtString> testModeEntry(const std::string& bundlePath) {
  const std::optional<zt::Bundle> bundle = zt::Bundle::at(bundlePath);
  if (!bundle) return std::nullopt;
  const std::optional<std::string> path = bundle->resource("ghost", "plist");
  if (!path) return std::nullopt;
  const std::optional<std::string> content = zt::Platform::current().files().read(*path);
  if (!content) return std::nullopt;
  const auto entries = zt::parsePropertyList(*content);
  if (!entries) return std::nullopt;
  const auto entry = entries->find("ztTestMode");
  if (entry == entries->end()) return std::nullopt;
  return entry->second;
}

/// What stands behind `root` in a path below it; empty for one that does not lie there.
std::string pathBelow(std::string_view root, std::string_view path) {
  if (!path.starts_with(root) || !path.substr(root.size()).starts_with('/')) return "";
  return std::string(path.substr(root.size() + 1));
}

}  // namespace

bool ZtPortalData::_mutexEnabled() const try {
  for (const auto& application : zt::Platform::current().runningApplications().list()) {
    if (application.bundleIdentifier != GHOST_BUNDLE_IDENT) continue;
    const std::optional<ZtString> entry = testModeEntry(application.bundlePath);
    if (!entry) continue;
    if (entry->isNull()) return false;
    if (*entry == "1") return true;
  }
  return false;
} catch (const ZtException&) {
  return false;
}

void ZtPortalData::_notifyGhost(const ZtString& request) {
  zt::Platform::current().broadcast().post(
      "ZtPortalGhostNotification", ZtHost::bundleInfo("CFBundleName"),
      {{"version", ZtHost::bundleInfo("CFBundleShortVersionString")},
       {"date", zt::shortDateAndTime(ZtDate::now())},
       {"request", request}});
}

bool ZtPortalData::_deliver(const ZtString& request) {
  return isAccepted(_httpRequest(_getReportUrl(), request));
}

bool ZtPortalData::reportToServer() try {
  const ZtString request = getSoapString();
  _notifyGhost(request);
  // Only a document that once had a URL tries again to get online.
  if (!_getReportUrl().empty() && !(_gotConfiguration && _online)) {
    _initHttp(_configurationUrl, _cacheConfiguration);
  }
  if (_deliver(request)) return true;
  saveReport();
  return false;
} catch (const ZtException&) {
  return false;
}

void ZtPortalData::_writeReport(const ZtString& path) {
  if (path.isNull()) return;
  zt::Platform::current().files().write(std::string(path.view()), getSoapString());
}

bool ZtPortalData::reportToFile(const ZtString& path) try {
  _writeReport(path);
  return false;
} catch (const ZtException&) {
  return false;
}

void ZtPortalData::saveReport() try {
  const ZtString path = _getReportFile();
  if (path.isNull()) return;
  zt::Platform& platform = zt::Platform::current();
  const std::string text = getSoapString();
  // Writing begins with an empty file. One that says all of it already is not put at that risk.
  if (platform.files().read(std::string(path.view())) == text) return;
  const std::string root = platform.supportFolder().path(zt::kUserDomain).value_or("");
  platform.files().writeBelow(root, pathBelow(root, path.view()), text);
} catch (const ZtException&) {
  // A store that cannot be written to is silent; the caller looks for the file if it must know.
}

bool ZtPortalData::sendSavedReports() try {
  zt::Files& files = zt::Platform::current().files();
  const ZtString folder = _getReportFolder();
  if (folder.isNull() || !files.isFolder(std::string(folder.view()))) return false;
  const auto names = files.list(std::string(folder.view()));
  if (!names) return false;
  for (const std::string& name : *names) {
    if (!name.ends_with(kReportEnding)) continue;
    std::string path;
    zt::appendText(path, folder.view(), "/", name);
    if (!sendSavedReport(path)) return false;
    files.remove(path);
  }
  return false;
} catch (const ZtException&) {
  return false;
}

bool ZtPortalData::sendSavedReport(const ZtString& path) try {
  if (!(_gotConfiguration && _online)) _initHttp(_configurationUrl, _cacheConfiguration);
  if (path.empty() || !_online) return false;

  const auto content = zt::Platform::current().files().read(std::string(path.view()));
  if (!content) return false;
  // A text that only a repair would make well-formed is not sent either, so none is tried.
  const auto document = ZtXMLDocument::parseFileContent(*content, ZtXMLKeep::Form);
  if (document == nullptr) return false;

  const ZtString request = document->xmlText();
  _notifyGhost(request);
  return _deliver(request);
} catch (const ZtException&) {
  return false;
}

ZtString ZtPortalData::reportFile() const { return _getReportFile(); }

ZtString ZtPortalData::reportFolder() { return _getReportFolder(); }

ZtString ZtPortalData::_getReportFile() const {
  const ZtString folder = _getReportFolder();
  if (folder.isNull()) return nullptr;
  std::string path;
  zt::appendText(path, folder.view(), "/", _reportId.view(), kReportEnding);
  return path;
}

ZtString ZtPortalData::_getReportFolder() {
  const ZtString support = _localSupportFolder();
  if (support.isNull()) return nullptr;
  std::string path;
  zt::appendText(path, support.view(), kReportsFolder);
  // A link in the store's place would lead out of it what is written and deleted there.
  zt::Platform& platform = zt::Platform::current();
  const std::string root = platform.supportFolder().path(zt::kUserDomain).value_or("");
  if (!platform.files().createFoldersBelow(root, pathBelow(root, path))) return nullptr;
  return path;
}
