// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <array>
#include <charconv>
#include <limits>
#include <memory>
#include <new>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

#include "ztportal/base/Log.h"
#include "ztportal/base/Text.h"
#include "ztportal/base/ZtException.h"
#include "ztportal/platform/Platform.h"
#include "ztportal/platform/files/SupportFolder.h"
#include "ztportal/platform/locale/Languages.h"
#include "ztportal/pools/LanguageTable.h"
#include "ztportal/pools/ZtPortalPoolComputerSystem.h"
#include "ztportal/system/HostRules.h"
#include "ztportal/system/ZtApplicationIdentifiers.h"
#include "ztportal/system/ZtSystemInfos.h"

// How the computer-system pool fills itself from the machine.

namespace {

using zt::Platform;
using Info = zt::InstalledApplications::Info;

ZtString valueOf(const Info& info, const std::string& key) {
  const auto found = info.find(key);
  return found != info.end() ? found->second : ZtString();
}

/// Whether `path` means itself in a shell command, unquoted.
bool isPlain(std::string_view path) {
  constexpr std::string_view kPlain =
      "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789/._+@-";
  return !path.empty() && path.find_first_not_of(kPlain) == std::string_view::npos;
}

/// Whether the user's primary group, which the directory service has for the home folder, is 80 or
/// 20. 20 counts deliberately: it is the group of every user on some machines, and their
/// reports have always said so.
bool isUserAdmin() {
  // The path is not quoted: the directory service has always got this very command.
  std::string home = zt::homeFolder();
  if (!isPlain(home)) home = zt::homeOfUserDatabase();
  if (!isPlain(home)) {
    zt::logOnce(
        ZtLogLevel::Warning, "inventory",
        "the user's rights are unknown: the path of the home folder needs quotes in a shell");
    return false;
  }
  std::string command;
  zt::appendText(command, "dscl . -read ", home, " PrimaryGroupID | awk '{ print $2 }'");
  const std::string output =
      Platform::current().subprocesses().output("/bin/bash", {"-c", command});
  const std::string_view group = zt::trimmed(output);
  if (group.empty()) {
    zt::log(ZtLogLevel::Warning, "inventory",
            "the user's rights are unknown: dscl is missing or does not know the home folder");
  }
  return group == "80" || group == "20";
}

/// An application of the inventory. Its name and version may be missing.
struct ProbedApplication {
  ZtString identifier;
  ZtString name;
  ZtString version;
};

/// The applications of the machine. Used by one thread, and must not outlive the current platform.
class ProbedApplications {
 public:
  /// Looks up each application when it is needed.
  ProbedApplications() : _applications(Platform::current().installedApplications()) {}
  /// Starts looking up these applications immediately, in parallel with the caller.
  ProbedApplications(std::span<const std::string_view> bundleIdentifiers,
                     std::span<const std::string_view> urls)
      : _prepared(Platform::current().installedApplications().prepared(bundleIdentifiers, urls)),
        _applications(_prepared ? *_prepared : Platform::current().installedApplications()) {}

  /// The installed application of a bundle identifier. `identifier` of the result is the
  /// application's own.
  std::optional<ProbedApplication> installed(std::string_view bundleIdentifier) const {
    const std::optional<std::string> path = _applications.withIdentifier(bundleIdentifier);
    if (!path) return std::nullopt;
    const std::optional<Info> info = _applications.info(*path);
    if (!info) return std::nullopt;
    return ProbedApplication{valueOf(*info, "CFBundleIdentifier"), valueOf(*info, "CFBundleName"),
                             valueOf(*info, "CFBundleShortVersionString")};
  }

  /// Path of the user's default application for `url` ("http:", "mailto:"); missing if there is
  /// none.
  ZtString defaultPath(std::string_view url) const {
    const auto path = _applications.defaultFor(url);
    return path ? ZtString(*path) : nullptr;
  }

  /// The bundle identifier of the application at `path`; empty if there is no path or no
  /// application, missing if the application has no identifier.
  ZtString identifierAt(const ZtString& path) const {
    if (path.isNull()) return "";
    const auto info = _applications.info(std::string(path.view()));
    return info ? valueOf(*info, "CFBundleIdentifier") : ZtString("");
  }

 private:
  std::unique_ptr<zt::InstalledApplications> _prepared;  // null if nothing is looked up in advance
  zt::InstalledApplications& _applications;
};

constexpr std::array kEMailClients{&APP_MAIL_IDENT, &APP_TBIRD_IDENT, &APP_ENTOURAGE_IDENT,
                                   &APP_OUTLOOK_IDENT};
constexpr std::array kBrowsers{&APP_SAFARI_IDENT, &APP_FIREFOX_IDENT, &APP_OPERA_IDENT,
                               &APP_CHROME_IDENT};

constexpr std::string_view kEMailUrl = "mailto:";
constexpr std::string_view kBrowserUrl = "http:";

/// Starts looking up all applications of the inventory, in parallel with the shell command.
ProbedApplications beginApplications() {
  std::vector<std::string_view> identifiers;
  identifiers.reserve(kEMailClients.size() + kBrowsers.size());
  for (const ZtString* identifier : kEMailClients) identifiers.push_back(identifier->view());
  for (const ZtString* identifier : kBrowsers) identifiers.push_back(identifier->view());
  constexpr std::array kUrls{kEMailUrl, kBrowserUrl};
  return {identifiers, kUrls};
}

/// The number at the start of `text`, or 0.
std::int32_t leadingNumber(std::string_view text) {
  std::int32_t number = 0;
  const auto result = std::from_chars(text.data(), text.data() + text.size(), number);
  return result.ec == std::errc::result_out_of_range ? std::numeric_limits<std::int32_t>::max()
                                                     : number;
}

/// Calls `add` for each installed application: name, version, and whether it is the default one.
/// The application's own identifier decides whether it is the default, not the one that was looked
/// for.
template <class Add>
void eachInstalled(const ProbedApplications& applications,
                   const std::array<const ZtString*, 4>& identifiers, std::string_view url,
                   Add add) {
  const ZtString defaultIdentifier = applications.identifierAt(applications.defaultPath(url));
  for (const ZtString* identifier : identifiers) {
    const auto application = applications.installed(identifier->view());
    if (!application) continue;
    const bool isDefault =
        !application->identifier.isNull() && application->identifier == defaultIdentifier;
    add(application->name, application->version, static_cast<ZtBOOL>(isDefault));
  }
}

}  // namespace

void ZtPortalPoolComputerSystem::checkComputerSystem() try {
  if (zt::consentIsRevoked()) return;
  _systemInfos = ZtSystemInfos::getSystemInfos();
  const auto infoOf = [this](const ZtString& key) {
    const auto found = _systemInfos.find(std::string(key.view()));
    return found != _systemInfos.end() ? found->second : ZtString();
  };

  setOsName("MACOS");
  std::string version;
  zt::appendText(version, "MACOS ", infoOf(ZtDIAG_SYSTEM_INFOS_OS_VERSION_NUMBER).printed());
  setOsVersion(version);
  setServicePack(leadingNumber(infoOf(ZtDIAG_SYSTEM_INFOS_OS_SERVICEPACK).view()));
  const ProbedApplications applications = beginApplications();
  setIsAdmin(static_cast<ZtBOOL>(_isCurrentUserAnAdmin()));
  _osLanguage = _userLanguage = zt::languageOfCode(zt::preferredLanguages().front());

  eachInstalled(applications, kEMailClients, kEMailUrl,
                [this](const auto&... application) { addEMailClient(application...); });
  eachInstalled(applications, kBrowsers, kBrowserUrl,
                [this](const auto&... application) { addBrowser(application...); });
} catch (const ZtException& error) {
  // The values that were found before stay.
  zt::log(ZtLogLevel::Warning, "inventory", "the inventory is incomplete: ", error.reason().view());
} catch (const std::bad_alloc&) {
  zt::log(ZtLogLevel::Warning, "inventory", "the inventory is incomplete: not enough memory");
}

bool ZtPortalPoolComputerSystem::_isCurrentUserAnAdmin() const try {
  return isUserAdmin();
} catch (const ZtException& error) {
  zt::log(ZtLogLevel::Warning, "inventory",
          "the user's rights are unknown: ", error.reason().view());
  return false;
}

ZtString ZtPortalPoolComputerSystem::_getDefaultBrowserApp() const {
  return ProbedApplications().defaultPath(kBrowserUrl);
}

ZtString ZtPortalPoolComputerSystem::_getDefaultEMailClientApp() const {
  return ProbedApplications().defaultPath(kEMailUrl);
}
