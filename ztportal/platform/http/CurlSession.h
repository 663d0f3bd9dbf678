// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <sys/types.h>

#include <chrono>
#include <utility>
#include <vector>

#include "ztportal/base/DescriptorIdentity.h"
#include "ztportal/platform/http/CurlLibrary.h"

namespace zt {

/// The open sockets of a libcurl handle, which libcurl opens and closes by these functions.
class CurlSockets {
 public:
  bool isEmpty() const { return _open.empty(); }
  /// False if the host has closed one of them: its number may be that of a file of the host.
  bool areOurs() const;
  /// To be called after each transfer, as libcurl 7.88 to 8.1 does not tell when it closes a socket
  /// that is not connected yet.
  void forgetClosed();
  /// Whether nothing has arrived, not even the end of a connection. libcurl does not notice that
  /// one was reset, nor an end behind other bytes.
  bool areQuiet() const;

  static curl_socket_t open(void* sockets, curlsocktype purpose, curl_sockaddr* address) noexcept;
  static int close(void* sockets, curl_socket_t number) noexcept;

 private:
  std::vector<std::pair<int, DescriptorIdentity>> _open;
};

/// A libcurl handle and its open connections, which a thread keeps from one request to the next.
class CurlSession {
 public:
  /// How long a connection may have been idle when it is used again.
  static constexpr std::chrono::seconds kIdleLimit{3};

  /// The session of this thread for a request that begins now, with the handle set back to
  /// libcurl's defaults. A new one if the servers may have left the connections, if the host has
  /// closed them, and in a forked process.
  static CurlSession& begin(const CurlLibrary& curl);
  /// Keeps the session of this thread if it has an open connection.
  static void keep();
  /// Closes the connections of this thread.
  static void end();

  explicit CurlSession(const CurlLibrary& curl);
  CurlSession(const CurlSession&) = delete;
  CurlSession& operator=(const CurlSession&) = delete;
  ~CurlSession();

  CURL* handle() const { return _handle.get(); }
  CurlSockets& sockets() { return _sockets; }

 private:
  bool isOurs() const;
  bool isFresh() const;

  CurlSockets _sockets;  // before the handle, which closes them
  CurlEasy _handle;
  std::chrono::system_clock::time_point _lastUse;
  pid_t _process;
};

}  // namespace zt
