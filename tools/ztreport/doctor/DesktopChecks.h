#pragma once

#include "tools/ztreport/doctor/Finding.h"
#include "tools/ztreport/doctor/Patient.h"

namespace zt::tools {

/// What stands beside the way to the server: the session bus, the companion, its test mode.
Finding checkSessionBus(Patient& patient);
Finding checkCompanion(Patient& patient);
Finding checkTestMode(Patient& patient);

}  // namespace zt::tools
