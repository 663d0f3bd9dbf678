// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

#include "tools/ztreport/network/Request.h"
#include "tools/ztreport/network/WebAddress.h"

namespace zt::tools {

/// Why the certificate of `server` is not accepted: which one it is, what is wrong with it, and
/// what it was checked with. `problem` is what libcurl says. Connects again to look at the
/// certificates, and sends nothing.
Fault certificateFault(const WebAddress& server, const std::string& problem);

}  // namespace zt::tools
