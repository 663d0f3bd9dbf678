#include "tools/ztreport/doctor/DesktopChecks.h"

#include <vector>

#include "tools/ztreport/commands/UserBus.h"
#include "tools/ztreport/doctor/Companion.h"

namespace zt::tools {

Finding checkSessionBus(Patient& /*patient*/) {
  std::string reason;
  if (openUserBus(reason) != nullptr) return ok("there");
  return warning("none: " + reason + "; reports are sent all the same, but no companion sees them",
                 "run the program within the user's desktop session if a companion shall see them");
}

Finding checkCompanion(Patient& /*patient*/) {
  const std::vector<Companion> companions = runningCompanions();
  if (companions.empty()) return ok("none runs");
  for (const Companion& companion : companions) {
    if (companion.hasList) continue;
    return warning(companion.path +
                       " runs, but has no Contents/Resources/ghost.plist and so "
                       "cannot switch the test mode on",
                   "install the companion again if the test mode is wanted");
  }
  std::string paths;
  for (const Companion& companion : companions) {
    paths.append(paths.empty() ? "" : ", ").append(companion.path);
  }
  return ok(paths + " runs");
}

Finding checkTestMode(Patient& patient) {
  if (!patient.document) return skipped("there is no document to see it in");
  if (!patient.isInTestMode) return ok("off");
  return warning(
      "on: every report of this user is a test, its customer ends in _Test, and it goes "
      "to the test URL",
      "quit the companion, or switch its test mode off, before real reports are sent");
}

}  // namespace zt::tools
