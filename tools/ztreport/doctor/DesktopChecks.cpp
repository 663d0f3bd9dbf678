// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <filesystem>
#include <string>
#include <system_error>
#include <vector>

#include "tools/ztreport/commands/UserBus.h"
#include "tools/ztreport/doctor/Checks.h"

namespace zt::tools {

namespace {

/// Whether the companion has the property list "ghost", which can switch test mode on.
bool hasList(const std::string& bundle) {
  std::error_code ignored;
  return std::filesystem::is_regular_file(bundle + "/Contents/Resources/ghost.plist", ignored);
}

std::string joined(const std::vector<std::string>& paths) {
  std::string text;
  for (const std::string& path : paths) text.append(text.empty() ? "" : ", ").append(path);
  return text;
}

}  // namespace

Finding checkSessionBus(Subject& /*subject*/) {
  std::string reason;
  if (openUserBus(reason) != nullptr) return ok("available");
  return warning("none: " + reason + "; reports are sent anyway, but no companion sees them",
                 "run the program in the user's desktop session if a companion should see them");
}

Finding checkCompanion(Subject& /*subject*/) {
  std::vector<std::string> companions = ZtPortalData::runningCompanions();
  std::sort(companions.begin(), companions.end());
  companions.erase(std::unique(companions.begin(), companions.end()), companions.end());
  if (companions.empty()) return ok("none is running");
  for (const std::string& companion : companions) {
    if (hasList(companion)) continue;
    return warning(companion +
                       " is running, but has no Contents/Resources/ghost.plist, so it cannot "
                       "switch test mode on",
                   "reinstall the companion if you need test mode");
  }
  return ok(joined(companions) + " is running");
}

Finding checkTestMode(Subject& subject) {
  if (!subject.document) return skipped("no document could be created");
  if (!subject.isInTestMode) return ok("off");
  return warning(
      "on: every report of this user is a test: its customer ends in _Test, and it goes "
      "to the test URL",
      "quit the companion or switch its test mode off before sending real reports");
}

Finding checkHelperPrograms(Subject& /*subject*/) {
  const std::vector<std::string> missing = ZtHost::missingPrograms();
  if (missing.empty()) return ok("installed");
  return warning("missing: " + joined(missing) +
                     "; reports do not list the browsers and e-mail clients of this machine, or "
                     "never say that the user is an administrator",
                 "install the library with them, see docs/shipping.md");
}

}  // namespace zt::tools
