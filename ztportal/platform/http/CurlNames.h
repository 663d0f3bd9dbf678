// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <sys/types.h>

#include <chrono>
#include <condition_variable>
#include <mutex>

#include "ztportal/base/DescriptorIdentity.h"
#include "ztportal/base/FileDescriptor.h"
#include "ztportal/platform/http/CurlLibrary.h"

namespace zt {

/// How a request travels: the proxy and the hosts without it in libcurl's notation. Null: as the
/// environment says.
struct CurlRoute {
  const char* proxy = nullptr;
  const char* noProxy = nullptr;

  void setIn(CurlOptions& options) const {
    if (proxy != nullptr) options.set(CURLOPT_PROXY, proxy);
    if (noProxy != nullptr) options.set(CURLOPT_NOPROXY, noProxy);
  }
};

/// The name look-ups of this process, one at a time.
///
/// libcurl makes each in a thread of its own, which nobody can stop (unless it was built with
/// c-ares). So a look-up that takes longer than its request stays here until it ends, and no other
/// begins before that.
class CurlNames {
 public:
  using Clock = std::chrono::steady_clock;

  static CurlNames& ofThisProcess(const CurlLibrary& curl);

  explicit CurlNames(const CurlLibrary& curl);
  CurlNames(const CurlNames&) = delete;
  CurlNames& operator=(const CurlNames&) = delete;
  ~CurlNames();

  /// The names that were found in the last minute, for CURLOPT_SHARE.
  CURLSH* found() const { return _found; }

  /// Looks up the name that a request for `url` asks for first: that of the proxy or, with
  /// a `noProxy` "*", in any case the host's. False if there is no such name, if `deadline` comes
  /// first, and at once while an earlier look-up hangs.
  bool find(CURLU* url, const CurlRoute& route, Clock::time_point deadline);

 private:
  bool findInTurn(CURLU* url, const CurlRoute& route, Clock::time_point deadline);
  bool continueUntil(Clock::time_point deadline);
  void end();
  void forget();

  const CurlLibrary _curl;
  const pid_t _process;
  std::mutex _foundMutex;
  CURLSH* const _found;
  std::mutex _turnMutex;
  std::condition_variable _turnEnded;
  bool _isBusy = false;
  // Used in turn.
  CurlMulti _multi{nullptr, _curl.multiCleanup};
  CurlEasy _easy{nullptr, _curl.easyCleanup};  // ends before the former
  bool _hasAddress = false;
  // A socket that nobody uses. If the host has closed it, then also those of the look-up, which
  // libcurl does not tell.
  FileDescriptor _mark;
  DescriptorIdentity _markIdentity;
};

}  // namespace zt
