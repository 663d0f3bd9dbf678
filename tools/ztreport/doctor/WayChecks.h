#pragma once

#include "tools/ztreport/doctor/Finding.h"
#include "tools/ztreport/doctor/Patient.h"

namespace zt::tools {

/// The way to the server, in its order: each check builds on those before it.
Finding checkConfigurationUrl(Patient& patient);
Finding checkNameLookup(Patient& patient);
Finding checkProxy(Patient& patient);
/// Makes the document, which reads the configuration and asks for the version.
Finding checkConfiguration(Patient& patient);
Finding checkReportUrl(Patient& patient);
Finding checkVersion(Patient& patient);

}  // namespace zt::tools
