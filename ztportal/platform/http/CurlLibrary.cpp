// SPDX-License-Identifier: Apache-2.0
#include "ztportal/platform/http/CurlLibrary.h"

#include <dlfcn.h>

#include <type_traits>

#include "ztportal/base/Text.h"

namespace zt {

namespace {

/// The first version with all options that the transport sets (CURLOPT_PREREQFUNCTION).
constexpr unsigned kOldestVersion = 0x075000;

}  // namespace

CurlLibrary::CurlLibrary(const std::vector<const char*>& names) {
  for (const char* name : names) {
    const std::string failure = load(name);
    if (failure.empty()) {
      error.clear();
      return;
    }
    appendText(error, error.empty() ? "" : "; ", failure);
  }
}

/// Empty on success, otherwise what is wrong with the library `name`.
std::string CurlLibrary::load(const char* name) {
  void* const library = ::dlopen(name, RTLD_LAZY | RTLD_LOCAL);
  bool isComplete = library != nullptr;
  const auto find = [&](const char* symbol, auto& function) {
    if (!isComplete) return;
    function =
        reinterpret_cast<std::remove_reference_t<decltype(function)>>(::dlsym(library, symbol));
    isComplete = function != nullptr;
  };
  find("curl_easy_cleanup", easyCleanup);
  find("curl_easy_getinfo", easyGetinfo);
  find("curl_easy_init", easyInit);
  find("curl_easy_perform", easyPerform);
  find("curl_easy_reset", easyReset);
  find("curl_easy_setopt", easySetopt);
  find("curl_free", free);
  find("curl_global_init", globalInit);
  find("curl_multi_add_handle", multiAddHandle);
  find("curl_multi_cleanup", multiCleanup);
  find("curl_multi_init", multiInit);
  find("curl_multi_perform", multiPerform);
  find("curl_multi_poll", multiPoll);
  find("curl_share_cleanup", shareCleanup);
  find("curl_share_init", shareInit);
  find("curl_share_setopt", shareSetopt);
  find("curl_slist_append", slistAppend);
  find("curl_slist_free_all", slistFreeAll);
  find("curl_url", url);
  find("curl_url_cleanup", urlCleanup);
  find("curl_url_get", urlGet);
  find("curl_url_set", urlSet);
  find("curl_version_info", versionInfo);
  if (!isComplete) {
    const char* const reason = ::dlerror();
    return reason == nullptr ? name : reason;
  }
  const curl_version_info_data& version = *versionInfo(CURLVERSION_NOW);
  if (version.version_num < kOldestVersion) {
    return std::string(name) + ": version " + version.version + " is too old";
  }
  if (globalInit(CURL_GLOBAL_DEFAULT) != CURLE_OK) return std::string(name) + ": not initialized";
  return {};
}

std::mutex& curlClosing() {
  static constinit std::mutex mutex;
  return mutex;
}

}  // namespace zt
