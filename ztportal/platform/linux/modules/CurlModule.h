#pragma once

#include "ztportal/platform/HttpTransport.h"

namespace zt {

/// What needs libcurl.
struct CurlModule {
  static constexpr const char* kName = "curl";

  HttpAnswer (*exchange)(const HttpRequest& request);
};

}  // namespace zt
