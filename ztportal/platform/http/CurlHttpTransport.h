#pragma once

#include "ztportal/platform/http/HttpTransport.h"

namespace zt {

/// HTTP and HTTPS by libcurl. One object serves all threads.
///
/// A thread's connection stays open for its next exchange with the same server, until the thread
/// ends. A child process opens its own.
///
/// - An answer above 16 MiB, or with headers above 1 MiB, counts as none.
/// - At most 10 redirects are followed; a redirected POST becomes a GET for 301, 302 and 303.
/// - Proxies are those of the environment (`http_proxy`, `https_proxy`, `all_proxy`, `no_proxy`).
/// - To the given headers are added: Host, Accept, and Content-Length for a POST. A header with a
///   line end in it is not sent, nor the request that it stands in.
/// - The body of a GET is not sent. Any other method than GET and POST gives status 0.
/// - No cookies, no password file, no cache.
class CurlHttpTransport final : public HttpTransport {
 public:
  HttpResponse exchange(const HttpRequest& request) noexcept override;
};

}  // namespace zt
