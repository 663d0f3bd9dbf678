#pragma once

#include <string>

#include "tools/ztreport/Failure.h"
#include "ztportal/ztportal.h"

namespace zt::tools {

/// The store's folder, created if need be; raises a `Failure` when that fails.
std::string storeFolder();

/// Tells how a delivery went, and gives the exit status. What was not accepted has to be in the
/// store by now; raises a `Failure` when it is not.
Exit tellDelivery(ZtPortalData& document, bool accepted);

/// Prints the path of a report that was saved; raises a `Failure` when its file is not there.
Exit tellSaved(ZtPortalData& document);

}  // namespace zt::tools
