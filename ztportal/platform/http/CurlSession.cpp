// SPDX-License-Identifier: Apache-2.0
#include "ztportal/platform/http/CurlSession.h"

#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <new>

#include "ztportal/base/FileDescriptor.h"

namespace zt {

bool CurlSockets::areOurs() const {
  return std::all_of(_open.begin(), _open.end(),
                     [](const auto& socket) { return socket.second.isStill(socket.first); });
}

void CurlSockets::forgetClosed() {
  std::erase_if(_open, [](const auto& socket) { return !socket.second.isStill(socket.first); });
}

bool CurlSockets::areQuiet() const {
  return std::all_of(_open.begin(), _open.end(), [](const auto& socket) {
    char byte = 0;
    return ::recv(socket.first, &byte, 1, MSG_PEEK | MSG_DONTWAIT) < 0 &&
           (errno == EAGAIN || errno == EWOULDBLOCK);
  });
}

/// Keeps connections out of the programs that the host starts.
curl_socket_t CurlSockets::open(void* sockets, curlsocktype /*purpose*/,
                                curl_sockaddr* address) noexcept try {
  FileDescriptor socket = aboveStandardStreams(FileDescriptor(
      ::socket(address->family, address->socktype | SOCK_CLOEXEC, address->protocol)));
  if (!socket.isOpen()) return CURL_SOCKET_BAD;
  static_cast<CurlSockets*>(sockets)->_open.emplace_back(socket.number(),
                                                         DescriptorIdentity(socket.number()));
  return socket.release();
} catch (const std::bad_alloc&) {
  return CURL_SOCKET_BAD;
}

int CurlSockets::close(void* sockets, curl_socket_t number) noexcept {
  std::erase_if(static_cast<CurlSockets*>(sockets)->_open,
                [number](const auto& socket) { return socket.first == number; });
  return ::close(number);
}

namespace {

// Without a destructor, so that a host may still send from its own static destructors.
constinit thread_local CurlSession* threadSession = nullptr;

struct ThreadSessionEnd {
  ~ThreadSessionEnd() { CurlSession::end(); }
};

}  // namespace

CurlSession& CurlSession::begin(const CurlLibrary& curl) {
  static thread_local const ThreadSessionEnd kEnd;
  static_cast<void>(kEnd);

  if (threadSession != nullptr && !(threadSession->isOurs() && threadSession->isFresh())) end();
  if (threadSession == nullptr) threadSession = new CurlSession(curl);
  curl.easyReset(threadSession->handle());
  return *threadSession;
}

void CurlSession::keep() {
  threadSession->_lastUse = std::chrono::system_clock::now();
  threadSession->_sockets.forgetClosed();
  // libcurl has other descriptors as well, and nobody can ask whether those are still its own.
  if (threadSession->_sockets.isEmpty()) end();
}

void CurlSession::end() {
  // What is not ours is forgotten without being closed.
  if (threadSession != nullptr && threadSession->isOurs()) delete threadSession;
  threadSession = nullptr;
}

CurlSession::CurlSession(const CurlLibrary& curl)
    : _handle(curl.easyInit(), curl.easyCleanup),
      _lastUse(std::chrono::system_clock::now()),
      _process(::getpid()) {
  if (!_handle) throw std::bad_alloc();
}

CurlSession::~CurlSession() {
  const std::lock_guard lock(curlClosing());
  _handle.reset();
}

/// Whether the connections may be used and closed. Those of a forked process are its parent's: to
/// close them in good order would end the parent's as well.
bool CurlSession::isOurs() const { return _process == ::getpid() && _sockets.areOurs(); }

/// Whether the servers are still there, as far as one can tell. libcurl's own limit for idle
/// connections does not count the time that the machine was suspended; the system's clock does.
bool CurlSession::isFresh() const {
  const auto idle = std::chrono::system_clock::now() - _lastUse;
  return idle >= std::chrono::seconds::zero() && idle < kIdleLimit && _sockets.areQuiet();
}

}  // namespace zt
