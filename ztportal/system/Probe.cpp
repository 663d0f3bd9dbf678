#include "ztportal/system/Probe.h"

#include <string>

#include "ztportal/base/TextAppend.h"
#include "ztportal/base/Trim.h"
#include "ztportal/platform/HomeFolder.h"
#include "ztportal/platform/Platform.h"
#include "ztportal/platform/PreferredLanguages.h"

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
      Platform::current().childProcess().output("/bin/bash", {"-c", command});
  const std::string_view group = trimmed(answer);
  return group == "80" || group == "20";
}

std::optional<ZtString> preferredLanguageCode() {
  const std::vector<std::string> languages = preferredLanguages();
  if (languages.empty()) return std::nullopt;
  return languages.front();
}

std::optional<ProbedApplication> installedApplication(std::string_view bundleIdentifier) {
  InstalledApplications& applications = Platform::current().installedApplications();
  const std::optional<std::string> path = applications.withIdentifier(bundleIdentifier);
  if (!path) return std::nullopt;
  const std::optional<InstalledApplications::Info> info = applications.info(*path);
  if (!info) return std::nullopt;
  return ProbedApplication{valueOf(*info, "CFBundleIdentifier"), valueOf(*info, "CFBundleName"),
                           valueOf(*info, "CFBundleShortVersionString")};
}

ZtString defaultApplicationPath(std::string_view url) {
  const auto path = Platform::current().installedApplications().defaultFor(url);
  return path ? ZtString(*path) : nullptr;
}

ZtString applicationIdentifier(const ZtString& path) {
  if (path.isNull()) return "";
  const auto info = Platform::current().installedApplications().info(std::string(path.view()));
  return info ? valueOf(*info, "CFBundleIdentifier") : ZtString("");
}

}  // namespace zt
