#pragma once

#include "ztportal/platform/http/HttpTransport.h"

namespace zt {

/// Sends `request` by `request.options->transport`, which must be there, with the headers of the
/// library and then those of the options. An exception of it counts as a failure.
HttpResponse exchangeByHost(const HttpRequest& request);

}  // namespace zt
