#include "tools/common/StopSignals.h"

#include <sys/signalfd.h>

#include <cerrno>
#include <cstring>
#include <string>

#include "tools/ztinbox/faults/Fault.h"

namespace zt::inbox {

StopSignals::StopSignals() {
  sigset_t stop;
  sigemptyset(&stop);
  sigaddset(&stop, SIGINT);
  sigaddset(&stop, SIGTERM);
  pthread_sigmask(SIG_BLOCK, &stop, &_before);
  _descriptor = Fd(signalfd(-1, &stop, SFD_CLOEXEC));
  if (!_descriptor.isOpen()) {
    throw MachineFault(std::string("cannot wait for signals: ") + std::strerror(errno));
  }
}

/// A signal that came is taken, so that giving the signals back does not deliver it.
StopSignals::~StopSignals() {
  sigset_t stop;
  sigemptyset(&stop);
  sigaddset(&stop, SIGINT);
  sigaddset(&stop, SIGTERM);
  const timespec now{};
  while (sigtimedwait(&stop, nullptr, &now) > 0) {
  }
  pthread_sigmask(SIG_SETMASK, &_before, nullptr);
}

}  // namespace zt::inbox
