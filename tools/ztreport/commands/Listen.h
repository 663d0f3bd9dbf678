#pragma once

#include "tools/ztreport/Failure.h"

namespace zt::tools {

/// Prints each broadcast of a report as one line of JSON as soon as it comes:
///
///     {"object":"Setup","userInfo":{"date":"…","request":"…","version":"2.1"}}
///
/// Says on standard error when it has begun to listen. Ends with SIGINT or SIGTERM; raises a
/// `Failure` when there is no session bus, and when it goes away.
Exit listen();

}  // namespace zt::tools
