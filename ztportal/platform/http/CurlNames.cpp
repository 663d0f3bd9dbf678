// SPDX-License-Identifier: Apache-2.0
#include "ztportal/platform/http/CurlNames.h"

#include <sys/socket.h>
#include <unistd.h>

#include <atomic>
#include <memory>
#include <new>

namespace zt {

namespace {

void lock(CURL* /*handle*/, curl_lock_data /*data*/, curl_lock_access /*access*/, void* mutex) {
  static_cast<std::mutex*>(mutex)->lock();
}

void unlock(CURL* /*handle*/, curl_lock_data /*data*/, void* mutex) {
  static_cast<std::mutex*>(mutex)->unlock();
}

/// The look-up is over when libcurl wants to connect.
curl_socket_t takeAddress(void* hasAddress, curlsocktype /*purpose*/, curl_sockaddr* /*address*/) {
  *static_cast<bool*>(hasAddress) = true;
  return CURL_SOCKET_BAD;
}

}  // namespace

CurlNames& CurlNames::ofThisProcess(const CurlLibrary& curl) {
  // A forked process has none of its parent's threads, but maybe a mutex that one had locked.
  static constinit std::atomic<CurlNames*> current = nullptr;
  CurlNames* found = current.load();
  if (found != nullptr && found->_process == ::getpid()) return *found;
  auto made = std::make_unique<CurlNames>(curl);
  return current.compare_exchange_strong(found, made.get()) ? *made.release() : *found;
}

CurlNames::CurlNames(const CurlLibrary& curl)
    : _curl(curl), _process(::getpid()), _found(curl.shareInit()) {
  if (_found == nullptr) throw std::bad_alloc();
  curl.shareSetopt(_found, CURLSHOPT_SHARE, CURL_LOCK_DATA_DNS);
  curl.shareSetopt(_found, CURLSHOPT_LOCKFUNC, lock);
  curl.shareSetopt(_found, CURLSHOPT_UNLOCKFUNC, unlock);
  curl.shareSetopt(_found, CURLSHOPT_USERDATA, &_foundMutex);
}

CurlNames::~CurlNames() { _curl.shareCleanup(_found); }

bool CurlNames::find(CURLU* url, const CurlRoute& route, Clock::time_point deadline) {
  struct Turn {
    CurlNames& names;
    ~Turn() {
      const std::lock_guard lock(names._turnMutex);
      names._isBusy = false;
      names._turnEnded.notify_one();
    }
  };
  {
    std::unique_lock lock(_turnMutex);
    if (!_turnEnded.wait_until(lock, deadline, [this] { return !_isBusy; })) return false;
    _isBusy = true;
  }
  const Turn turn{*this};
  return findInTurn(url, route, deadline);
}

bool CurlNames::findInTurn(CURLU* url, const CurlRoute& route, Clock::time_point deadline) {
  if (_multi && !_markIdentity.isStill(_mark.number())) forget();
  if (!continueUntil(Clock::now())) return false;

  _mark = FileDescriptor(::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0));
  if (!_mark.isOpen()) return false;
  _markIdentity = DescriptorIdentity(_mark.number());
  _hasAddress = false;
  _multi.reset(_curl.multiInit());
  _easy.reset(_curl.easyInit());
  if (!_multi || !_easy) throw std::bad_alloc();
  CurlOptions options(_curl, _easy.get());
  options.set(CURLOPT_CURLU, url);
  options.set(CURLOPT_NOSIGNAL, 1L);
  // Not libcurl's own limit: to end the look-up it would wait for its thread.
  options.set(CURLOPT_CONNECTTIMEOUT_MS, kMostCurlMilliseconds);
  options.set(CURLOPT_SHARE, _found);
  options.set(CURLOPT_OPENSOCKETFUNCTION, takeAddress);
  options.set(CURLOPT_OPENSOCKETDATA, &_hasAddress);
  route.setIn(options);
  if (!options.accepted() || _curl.multiAddHandle(_multi.get(), _easy.get()) != CURLM_OK) {
    end();
    return false;
  }
  return continueUntil(deadline) && _hasAddress;
}

/// Whether the last look-up has ended, now or by `deadline`.
bool CurlNames::continueUntil(Clock::time_point deadline) {
  while (_multi) {
    int running = 0;
    const bool failed = _curl.multiPerform(_multi.get(), &running) != CURLM_OK;
    if (failed || running == 0 || _hasAddress) {
      end();
      return true;
    }
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - Clock::now()).count();
    if (left <= 0) return false;
    _curl.multiPoll(_multi.get(), nullptr, 0, static_cast<int>(left), nullptr);
  }
  return true;
}

void CurlNames::end() {
  const std::lock_guard lock(curlClosing());
  _easy.reset();
  _multi.reset();
  _mark.close();
}

/// libcurl would close descriptors whose numbers may be the host's by now.
void CurlNames::forget() {
  static_cast<void>(_easy.release());
  static_cast<void>(_multi.release());
  static_cast<void>(_mark.release());
}

}  // namespace zt
