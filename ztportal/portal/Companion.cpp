// SPDX-License-Identifier: Apache-2.0
#include "ztportal/portal/Companion.h"

#include <new>
#include <optional>
#include <string>
#include <utility>

#include "ztportal/base/Log.h"
#include "ztportal/base/ZtException.h"
#include "ztportal/platform/Platform.h"
#include "ztportal/platform/plist/Bundle.h"
#include "ztportal/platform/plist/PropertyList.h"
#include "ztportal/platform/time/DateText.h"
#include "ztportal/portal/ZtPortalConstants.h"
#include "ztportal/system/HostRules.h"
#include "ztportal/system/ZtHost.h"

namespace zt {

namespace {

/// The value of "ztTestMode" in the companion's property list: nullopt without a list or an entry,
/// a missing string for a value that is not a string.
std::optional<ZtString> testModeEntry(const std::string& bundlePath) {
  const std::optional<Bundle> bundle = Bundle::at(bundlePath);
  if (!bundle) return std::nullopt;
  const std::optional<std::string> path = bundle->resource("ghost", "plist");
  if (!path) return std::nullopt;
  const std::optional<std::string> content =
      Platform::current().files().read(*path, kSettingsFileLimit);
  const auto entries = content ? parsePropertyList(*content) : std::nullopt;
  if (!entries) {
    logOnce(ZtLogLevel::Warning, "configuration", *path, " cannot be read as a property list");
    return std::nullopt;
  }
  const auto entry = entries->find("ztTestMode");
  if (entry == entries->end()) return std::nullopt;
  return entry->second;
}

}  // namespace

std::vector<std::string> runningCompanions() {
  std::vector<std::string> bundles;
  for (auto& application : Platform::current().runningApplications().list()) {
    if (application.bundleIdentifier != GHOST_BUNDLE_IDENT) continue;
    bundles.push_back(std::move(application.bundlePath));
  }
  return bundles;
}

bool testModeIsOn() try {
  for (const std::string& bundle : runningCompanions()) {
    const std::optional<ZtString> entry = testModeEntry(bundle);
    if (!entry) continue;
    if (entry->isNull()) return false;
    if (*entry != "1") continue;
    logOnce(ZtLogLevel::Info, "configuration", bundle, " has switched the test mode on");
    return true;
  }
  return false;
} catch (const ZtException& error) {
  log(ZtLogLevel::Warning, "configuration", "companions cannot be found: ", error.reason().view());
  return false;
}

void broadcastRequest(const ZtString& request) try {
  if (!rules::isBroadcasting) return;
  Platform::current().broadcast().post(
      "ZtPortalGhostNotification", ZtHost::bundleInfo("CFBundleName"),
      {{"version", ZtHost::bundleInfo("CFBundleShortVersionString")},
       {"date", shortDateAndTime(ZtDate::now())},
       {"request", request}});
} catch (const std::bad_alloc&) {
  // The request may still be sent.
  log(ZtLogLevel::Warning, "broadcast", "not broadcast: not enough memory");
}

}  // namespace zt
