// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <curl/curl.h>

#include <string_view>

#include "ztportal/platform/http/HttpTransport.h"

namespace zt {

/// What kind of failure a code of libcurl means.
ZtDeliveryError deliveryErrorOf(CURLcode code);

/// The response of a request that failed. Its sentence for people says what failed, with `detail`
/// in the words of libcurl; one that may contain a password or is no plain text is left out.
HttpResponse failure(ZtDeliveryError error, std::string_view detail = {});

}  // namespace zt
