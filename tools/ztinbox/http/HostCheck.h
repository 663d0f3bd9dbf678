#pragma once

#include <string_view>

#include "tools/ztinbox/http/ListenAddress.h"

namespace zt::inbox {

// Who may ask for the page and the API. A web page of somebody else that is open in the user's
// browser can send requests to this machine too, under a host name of its own (DNS rebinding);
// its requests carry that name.

/// Whether the value of a Host header names the inbox that listens on `own`: that address, or a
/// name or address of the loopback interface, with the port of `own`.
bool isOwnHost(std::string_view host, const ListenAddress& own);

/// The same for the value of an Origin header: "http://" and an own host.
bool isOwnOrigin(std::string_view origin, const ListenAddress& own);

}  // namespace zt::inbox
