// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

#include "ztportal/platform/json/Json.h"
#include "ztportal/ztportal.h"

// What the commands that send say about it.

namespace zt::tools {

/// Throws a `WrongUsage` unless `url`, the value of --config-url, is an http or https URL.
void checkConfigurationUrl(const std::string& url);

/// Why the report that `document` sent last was not accepted. Where there was no response, asks the
/// server again, but never sends the report a second time.
std::string whyNotAccepted(ZtPortalData& document);

/// A receipt as an object: its members by their names, times in milliseconds.
Json jsonOfDelivery(const ZtDelivery& delivery);

}  // namespace zt::tools
