// SPDX-License-Identifier: Apache-2.0
#include "tools/ztreport/network/CurlHandle.h"

#include <cstdlib>

#include "ztportal/ztportal.h"

namespace zt::tools {

const char* valueOf(const char* variable) {
  const char* const value = std::getenv(variable);
  return value != nullptr && *value != '\0' ? value : nullptr;
}

std::chrono::milliseconds timeLimit() { return ZtHost::transportOptions().timeout; }

std::string tooSlow() {
  const auto seconds = std::chrono::ceil<std::chrono::seconds>(timeLimit()).count();
  return "no response within " + (seconds == 2 ? "two" : std::to_string(seconds)) +
         (seconds == 1 ? " second" : " seconds");
}

CurlHandle::CurlHandle() {
  const ZtTransportOptions options = ZtHost::transportOptions();
  set(CURLOPT_ERRORBUFFER, _error.data());
  set(CURLOPT_TIMEOUT_MS, static_cast<long>(options.timeout.count()));
  set(CURLOPT_NOSIGNAL, 1L);
  set(CURLOPT_QUICK_EXIT, 1L);
  set(CURLOPT_PROTOCOLS_STR, "http,https");
  if (const char* const file = valueOf(kFileVariable)) set(CURLOPT_CAINFO, file);
  if (!options.authorityFile.empty()) set(CURLOPT_CAINFO, options.authorityFile.c_str());
  if (options.proxy) set(CURLOPT_PROXY, options.proxy->c_str());
  if (const char* const folder = valueOf(kFolderVariable)) set(CURLOPT_CAPATH, folder);
}

std::string CurlHandle::failureOf(CURLcode code) const {
  if (code == CURLE_OK) return "";
  if (code == CURLE_OPERATION_TIMEDOUT) return tooSlow();
  return _error[0] != '\0' ? _error.data() : curl_easy_strerror(code);
}

}  // namespace zt::tools
