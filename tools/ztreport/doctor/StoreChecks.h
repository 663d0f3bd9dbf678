#pragma once

#include "tools/ztreport/doctor/Finding.h"
#include "tools/ztreport/doctor/Patient.h"

namespace zt::tools {

/// The store of the host, in its order. The first makes the folder and writes a file into it that
/// it removes again.
Finding checkStoreFolder(Patient& patient);
Finding checkStoreMode(Patient& patient);
Finding checkFreeSpace(Patient& patient);
Finding checkSavedReports(Patient& patient);

}  // namespace zt::tools
