#include <algorithm>
#include <array>
#include <charconv>
#include <limits>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

#include "ztportal/base/Text.h"
#include "ztportal/base/ZtException.h"
#include "ztportal/pools/LanguageTable.h"
#include "ztportal/pools/ZtPortalPoolComputerSystem.h"
#include "ztportal/system/Probe.h"
#include "ztportal/system/ZtApplicationIdentifiers.h"
#include "ztportal/system/ZtSystemInfos.h"

// How the computer-system pool fills itself from the machine.

namespace {

constexpr std::array kEMailClients{&APP_MAIL_IDENT, &APP_TBIRD_IDENT, &APP_ENTOURAGE_IDENT,
                                   &APP_OUTLOOK_IDENT};
constexpr std::array kBrowsers{&APP_SAFARI_IDENT, &APP_FIREFOX_IDENT, &APP_OPERA_IDENT,
                               &APP_CHROME_IDENT};

constexpr std::string_view kEMailUrl = "mailto:";
constexpr std::string_view kBrowserUrl = "http:";

/// All that the inventory will ask about applications, which is begun beside the shell's answer.
zt::ProbedApplications beginApplications() {
  std::vector<std::string_view> identifiers;
  identifiers.reserve(kEMailClients.size() + kBrowsers.size());
  for (const ZtString* identifier : kEMailClients) identifiers.push_back(identifier->view());
  for (const ZtString* identifier : kBrowsers) identifiers.push_back(identifier->view());
  constexpr std::array kUrls{kEMailUrl, kBrowserUrl};
  return {identifiers, kUrls};
}

/// The number that a text starts with, 0 for a text that starts with none.
std::int32_t leadingNumber(std::string_view text) {
  std::int32_t number = 0;
  const auto result = std::from_chars(text.data(), text.data() + text.size(), number);
  return result.ec == std::errc::result_out_of_range ? std::numeric_limits<std::int32_t>::max()
                                                     : number;
}

/// Calls `add` with the name, the version and whether it is the default one of each application
/// that is installed. The default is told by what an application calls itself, not by what was
/// looked for.
template <class Add>
void eachInstalled(const zt::ProbedApplications& applications,
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
  const std::optional<ZtString> language = zt::preferredLanguageCode();
  // Without a language the check ends early, and the pool lists no applications.
  const zt::ProbedApplications applications =
      language ? beginApplications() : zt::ProbedApplications();
  setIsAdmin(static_cast<ZtBOOL>(_isCurrentUserAnAdmin()));
  if (!language) return;
  _osLanguage = _userLanguage = zt::languageOfCode(language->view());

  eachInstalled(applications, kEMailClients, kEMailUrl,
                [this](const auto&... application) { addEMailClient(application...); });
  eachInstalled(applications, kBrowsers, kBrowserUrl,
                [this](const auto&... application) { addBrowser(application...); });
} catch (const ZtException&) {
  // What was found until then stays.
}

bool ZtPortalPoolComputerSystem::_isCurrentUserAnAdmin() const try {
  return zt::isUserAdmin();
} catch (const ZtException&) {
  return false;
}

ZtString ZtPortalPoolComputerSystem::_getDefaultBrowserApp() const {
  return zt::ProbedApplications().defaultPath(kBrowserUrl);
}

ZtString ZtPortalPoolComputerSystem::_getDefaultEMailClientApp() const {
  return zt::ProbedApplications().defaultPath(kEMailUrl);
}
