#include "ztportal/system/Probe.h"

#include <string>

#include "ztportal/base/Text.h"
#include "ztportal/platform/Platform.h"
#include "ztportal/platform/files/SupportFolder.h"
#include "ztportal/platform/locale/Languages.h"

namespace zt {

namespace {

ZtString valueOf(const InstalledApplications::Info& info, const std::string& key) {
  const auto found = info.find(key);
  return found != info.end() ? found->second : ZtString();
}

}  // namespace

bool isUserAdmin() {
  // The folder reaches the shell as it is, blanks and quotes included.
  std::string command;
  appendText(command, "dscl . -read ", homeFolder(), " PrimaryGroupID | awk '{ print $2 }'");
  const std::string answer =
      Platform::current().subprocesses().output("/bin/bash", {"-c", command});
  const std::string_view group = trimmed(answer);
  return group == "80" || group == "20";
}

std::optional<ZtString> preferredLanguageCode() {
  const std::vector<std::string> languages = preferredLanguages();
  if (languages.empty()) return std::nullopt;
  return languages.front();
}

ProbedApplications::ProbedApplications()
    : _applications(Platform::current().installedApplications()) {}

ProbedApplications::ProbedApplications(std::span<const std::string_view> bundleIdentifiers,
                                       std::span<const std::string_view> urls)
    : _prepared(Platform::current().installedApplications().prepared(bundleIdentifiers, urls)),
      _applications(_prepared ? *_prepared : Platform::current().installedApplications()) {}

std::optional<ProbedApplication> ProbedApplications::installed(
    std::string_view bundleIdentifier) const {
  const std::optional<std::string> path = _applications.withIdentifier(bundleIdentifier);
  if (!path) return std::nullopt;
  const std::optional<InstalledApplications::Info> info = _applications.info(*path);
  if (!info) return std::nullopt;
  return ProbedApplication{valueOf(*info, "CFBundleIdentifier"), valueOf(*info, "CFBundleName"),
                           valueOf(*info, "CFBundleShortVersionString")};
}

ZtString ProbedApplications::defaultPath(std::string_view url) const {
  const auto path = _applications.defaultFor(url);
  return path ? ZtString(*path) : nullptr;
}

ZtString ProbedApplications::identifierAt(const ZtString& path) const {
  if (path.isNull()) return "";
  const auto info = _applications.info(std::string(path.view()));
  return info ? valueOf(*info, "CFBundleIdentifier") : ZtString("");
}

}  // namespace zt
