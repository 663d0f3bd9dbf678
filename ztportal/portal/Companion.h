// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <vector>

#include "ztportal/base/ZtString.h"

namespace zt {

/// The bundles of the running companion applications, one for each process.
std::vector<std::string> runningCompanions();

/// Whether a running companion application switches the test mode on: its bundle has a property
/// list "ghost" in which "ztTestMode" is the string "1". Every call looks at the running
/// applications again. A value that is not a string ends the search: the test mode is then off.
bool testModeIsOn();

/// Broadcasts `request` to the companion, with the name and version of the host and the current
/// date and time, unless the host has switched that off. Throws a ZtException if the platform does.
void broadcastRequest(const ZtString& request);

}  // namespace zt
