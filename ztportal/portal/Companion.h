#pragma once

#include <string>
#include <vector>

#include "ztportal/base/ZtString.h"

namespace zt {

/// The bundles of the running companion applications, one for each process.
std::vector<std::string> runningCompanions();

/// Whether a running companion application switches test mode on: its bundle has a property list
/// "ghost" in which "ztTestMode" is the string "1". The running applications are asked at every
/// call. A value that is not a string ends the search: test mode is then off.
bool testModeIsOn();

/// Broadcasts `request` to the companion, with the name and version of the host and the current
/// date and time. Throws a ZtException when the platform does.
void broadcastRequest(const ZtString& request);

}  // namespace zt
