// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <curl/curl.h>

#include <array>
#include <chrono>
#include <memory>
#include <string>

#include "ztportal/base/Free.h"

namespace zt::tools {

/// The library's time limit for a whole exchange.
std::chrono::milliseconds timeLimit();
/// "no response within two seconds"
std::string tooSlow();

inline constexpr const char* kFileVariable = "SSL_CERT_FILE";
inline constexpr const char* kFolderVariable = "SSL_CERT_DIR";

/// The value of an environment variable; null when it is not set or empty.
const char* valueOf(const char* variable);

/// A libcurl handle that behaves like the library's: the same time limit and proxy, and the
/// certificate authorities of `ZtHost::transportOptions`, or those in the file `SSL_CERT_FILE` and
/// the folder `SSL_CERT_DIR`, in place of the system's.
class CurlHandle {
 public:
  CurlHandle();
  CurlHandle(const CurlHandle&) = delete;
  CurlHandle& operator=(const CurlHandle&) = delete;
  ~CurlHandle() = default;

  template <class T>
  void set(CURLoption option, T value) {
    curl_easy_setopt(_handle.get(), option, value);
  }
  template <class T>
  T get(CURLINFO info) const {
    T value{};
    curl_easy_getinfo(_handle.get(), info, &value);
    return value;
  }
  CURLcode perform() { return curl_easy_perform(_handle.get()); }

  /// Why perform() returned `code`; empty for a success.
  std::string failureOf(CURLcode code) const;

 private:
  std::array<char, CURL_ERROR_SIZE> _error{};
  std::unique_ptr<CURL, Free<curl_easy_cleanup>> _handle{curl_easy_init()};
};

}  // namespace zt::tools
