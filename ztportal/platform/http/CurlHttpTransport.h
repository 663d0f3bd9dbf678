// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "ztportal/platform/http/HttpTransport.h"

namespace zt {

struct CurlLibrary;

/// HTTP and HTTPS by libcurl, which is loaded at the first request: it takes longer to load than
/// all other libraries together, and a host that never reports does not need it. Without it every
/// request fails with status 0. One object serves all threads.
///
/// A thread's connection stays open for its next exchange with the same server, until the thread
/// ends. It is not used again after 3 idle seconds, when the server has closed it, or when its
/// descriptor has become another file. A forked process opens its own.
///
/// - A POST is sent once: it is not repeated when a kept connection ends without a response.
/// - Of a body above 16 MiB the first 16 MiB count, less a UTF-8 character that this would split. A
///   response with headers above 1 MiB counts as none.
/// - At most 5 redirects are followed, with the same method and body, and none from https to http.
///   A user name and its password, the headers of the options and a client certificate go to the
///   scheme, host and port of the first URL only.
/// - libcurl looks up each name in a thread of its own, unless it was built with c-ares. There is
///   one at a time in a process. One that hangs outlives its exchange, and until it ends every
///   exchange that needs a name fails at once. Addresses and "localhost" need none.
/// - Without options, proxies are those of the environment (`http_proxy`, `https_proxy`,
///   `all_proxy`, `no_proxy`).
/// - Without options, certificate authorities are those of the system. As for OpenSSL,
///   `SSL_CERT_FILE` names another file of them, which must be readable, and `SSL_CERT_DIR` another
///   folder.
/// - These headers are added to the given ones: Host, Accept, and Content-Length for a POST. A
///   request with a line end in a header is not sent.
/// - The body of a GET is not sent. Any other method than GET and POST gives status 0.
/// - No cookies, no password file, no cache.
class CurlHttpTransport final : public HttpTransport {
 public:
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
  const CurlLibrary& library();

  std::vector<const char*> _names;
  std::once_flag _loading;
  std::unique_ptr<const CurlLibrary> _library;
};

}  // namespace zt
