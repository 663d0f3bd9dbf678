// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <curl/curl.h>

#include <string>
#include <string_view>

#include "ztportal/platform/http/ZtDeliveryError.h"

namespace zt {

/// What kind of failure a code of libcurl means.
ZtDeliveryError deliveryErrorOf(CURLcode code);

/// The sentence for people that says what failed, with `detail` in the words of libcurl. A detail
/// that may contain a password or is no plain text is left out.
std::string sentenceOf(ZtDeliveryError error, std::string_view detail);

}  // namespace zt
