// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <optional>
#include <string>

#include "tools/ztreport/network/Request.h"
#include "ztportal/ztportal.h"

// Why a server cannot be used. The library does not say; so its requests are repeated.

namespace zt::tools {

/// What a response that is no success means. `method` and `size` are those of the request's body.
Fault statusFault(const Response& response, const std::string& method, std::size_t size);

/// Why there is no configuration at `url`. Nothing when there is one.
std::optional<Fault> configurationFault(const std::string& url);

/// Why the server at `url` does not return its version. Nothing when it does.
std::optional<Fault> versionFault(const std::string& url);

/// Whether the companion has switched test mode on. Adds a pool to a document without pools.
bool isInTestMode(ZtPortalData& document);

/// Where the requests of `document` go; empty when it has no configuration.
std::string serverUrlOf(ZtPortalData& document);

}  // namespace zt::tools
