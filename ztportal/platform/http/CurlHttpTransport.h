#pragma once

#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "ztportal/platform/http/HttpTransport.h"

namespace zt {

/// HTTP and HTTPS by libcurl, which is loaded at the first request: it takes longer to load than
/// all other libraries together, and a host that never reports does not need it. Without it every
/// request fails with status 0. One object serves all threads.
///
/// A thread's connection stays open for its next exchange with the same server, until the thread
/// ends. A forked process opens its own.
///
/// - A response above 16 MiB, or with headers above 1 MiB, counts as none.
/// - At most 10 redirects are followed; a redirected POST becomes a GET for 301, 302 and 303.
/// - Proxies are those of the environment (`http_proxy`, `https_proxy`, `all_proxy`, `no_proxy`).
/// - These headers are added to the given ones: Host, Accept, and Content-Length for a POST. A
///   request with a line end in a header is not sent.
/// - The body of a GET is not sent. Any other method than GET and POST gives status 0.
/// - No cookies, no password file, no cache.
class CurlHttpTransport final : public HttpTransport {
 public:
  struct Library;

  /// `libraries` are the file names of libcurl, in order of precedence.
  explicit CurlHttpTransport(std::vector<const char*> libraries = {"libcurl.so.4",
                                                                   "libcurl-gnutls.so.4"});
  CurlHttpTransport(const CurlHttpTransport&) = delete;
  CurlHttpTransport& operator=(const CurlHttpTransport&) = delete;
  ~CurlHttpTransport() override;

  HttpResponse exchange(const HttpRequest& request) noexcept override;
  void closeConnections() override;

  /// Why no request can be sent, in the words of dlerror(3); empty if libcurl is usable. Loads it.
  const std::string& loadError();

 private:
  const Library& library();

  std::vector<const char*> _names;
  std::once_flag _loading;
  std::unique_ptr<const Library> _library;
};

}  // namespace zt
