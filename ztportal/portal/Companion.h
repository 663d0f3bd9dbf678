#pragma once

#include "ztportal/base/ZtString.h"

namespace zt {

/// Whether a running companion application switches test mode on: its bundle has a property list
/// "ghost" in which "ztTestMode" is the string "1". The running applications are asked at every
/// call. A value that is not a string ends the search: test mode is then off.
bool testModeIsOn();

/// Broadcasts `request` to the companion, with the name and version of the host and the current
/// date and time. Throws a ZtException when the platform does.
void broadcastRequest(const ZtString& request);

}  // namespace zt
