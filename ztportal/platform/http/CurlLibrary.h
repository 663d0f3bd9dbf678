// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <curl/curl.h>

#include <limits>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

// What the files of the transport by libcurl share. No other header includes libcurl's.

namespace zt {

/// The functions of libcurl. The library stays loaded as long as the process runs: connections and
/// what libcurl itself loads may be in use until then.
struct CurlLibrary {
  /// `names` are the file names of libcurl, in order of precedence.
  explicit CurlLibrary(const std::vector<const char*>& names);

  decltype(&curl_easy_cleanup) easyCleanup = nullptr;
  decltype(&curl_easy_getinfo) easyGetinfo = nullptr;
  decltype(&curl_easy_init) easyInit = nullptr;
  decltype(&curl_easy_perform) easyPerform = nullptr;
  decltype(&curl_easy_reset) easyReset = nullptr;
  decltype(&curl_easy_setopt) easySetopt = nullptr;
  decltype(&curl_free) free = nullptr;
  decltype(&curl_global_init) globalInit = nullptr;
  decltype(&curl_multi_add_handle) multiAddHandle = nullptr;
  decltype(&curl_multi_cleanup) multiCleanup = nullptr;
  decltype(&curl_multi_init) multiInit = nullptr;
  decltype(&curl_multi_perform) multiPerform = nullptr;
  decltype(&curl_multi_poll) multiPoll = nullptr;
  decltype(&curl_share_cleanup) shareCleanup = nullptr;
  decltype(&curl_share_init) shareInit = nullptr;
  decltype(&curl_share_setopt) shareSetopt = nullptr;
  decltype(&curl_slist_append) slistAppend = nullptr;
  decltype(&curl_slist_free_all) slistFreeAll = nullptr;
  decltype(&curl_url) url = nullptr;
  decltype(&curl_url_cleanup) urlCleanup = nullptr;
  decltype(&curl_url_get) urlGet = nullptr;
  decltype(&curl_url_set) urlSet = nullptr;
  decltype(&curl_version_info) versionInfo = nullptr;

  std::string error;  ///< why the functions cannot be called; empty if they can

 private:
  std::string load(const char* name);
};

using CurlEasy = std::unique_ptr<CURL, decltype(&curl_easy_cleanup)>;
using CurlMulti = std::unique_ptr<CURLM, decltype(&curl_multi_cleanup)>;

/// To be locked while a handle is closed. libcurl ignores SIGPIPE meanwhile, for the whole process,
/// and two threads that did so at once could leave it ignored.
std::mutex& curlClosing();

inline constexpr long kMostCurlMilliseconds = std::numeric_limits<int>::max();

/// Sets the options of a handle, and notes whether libcurl took them all.
class CurlOptions {
 public:
  CurlOptions(const CurlLibrary& curl, CURL* handle) : _curl(curl), _handle(handle) {}

  template <class T>
  void set(CURLoption option, T value) {
    if (_curl.easySetopt(_handle, option, value) != CURLE_OK) _accepted = false;
  }
  bool accepted() const { return _accepted; }

 private:
  const CurlLibrary& _curl;
  CURL* _handle;
  bool _accepted = true;
};

}  // namespace zt
