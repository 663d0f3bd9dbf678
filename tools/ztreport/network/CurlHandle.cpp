#include "tools/ztreport/network/CurlHandle.h"

#include <cstdlib>

namespace zt::tools {

const char* valueOf(const char* variable) {
  const char* const value = std::getenv(variable);
  return value != nullptr && *value != '\0' ? value : nullptr;
}

CurlHandle::CurlHandle() {
  set(CURLOPT_ERRORBUFFER, _error.data());
  set(CURLOPT_TIMEOUT_MS, static_cast<long>(std::chrono::milliseconds(kTimeout).count()));
  set(CURLOPT_NOSIGNAL, 1L);
  set(CURLOPT_QUICK_EXIT, 1L);
  set(CURLOPT_PROTOCOLS_STR, "http,https");
  if (const char* const file = valueOf(kFileVariable)) set(CURLOPT_CAINFO, file);
  if (const char* const folder = valueOf(kFolderVariable)) set(CURLOPT_CAPATH, folder);
}

std::string CurlHandle::failureOf(CURLcode code) const {
  if (code == CURLE_OK) return "";
  if (code == CURLE_OPERATION_TIMEDOUT) return kTooSlow;
  return _error[0] != '\0' ? _error.data() : curl_easy_strerror(code);
}

}  // namespace zt::tools
