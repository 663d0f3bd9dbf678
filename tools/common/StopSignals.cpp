// SPDX-License-Identifier: Apache-2.0
#include "tools/common/StopSignals.h"

#include <sys/signalfd.h>

#include <cerrno>
#include <cstring>
#include <stdexcept>
#include <string>

namespace zt {

namespace {

sigset_t stopSignals() {
  sigset_t stop;
  sigemptyset(&stop);
  sigaddset(&stop, SIGINT);
  sigaddset(&stop, SIGTERM);
  return stop;
}

}  // namespace

StopSignals::StopSignals() {
  const sigset_t stop = stopSignals();
  pthread_sigmask(SIG_BLOCK, &stop, &_before);
  _descriptor = FileDescriptor(signalfd(-1, &stop, SFD_CLOEXEC));
  if (!_descriptor.isOpen()) {
    throw std::runtime_error(std::string("cannot wait for signals: ") + std::strerror(errno));
  }
}

/// Consumes a pending signal first, because unblocking would deliver it.
StopSignals::~StopSignals() {
  const sigset_t stop = stopSignals();
  const timespec now{};
  while (sigtimedwait(&stop, nullptr, &now) > 0) {
  }
  pthread_sigmask(SIG_SETMASK, &_before, nullptr);
}

}  // namespace zt
