#pragma once

#include <csignal>

#include "tools/ztinbox/http/Fd.h"

namespace zt::inbox {

/// Turns SIGINT and SIGTERM into a descriptor that becomes readable. Made before any thread is
/// started, so that no thread is interrupted by them.
class StopSignals {
 public:
  /// Throws MachineFault.
  StopSignals();
  StopSignals(const StopSignals&) = delete;
  StopSignals& operator=(const StopSignals&) = delete;
  ~StopSignals();

  int number() const { return _descriptor.number(); }

 private:
  sigset_t _before{};
  Fd _descriptor;
};

}  // namespace zt::inbox
