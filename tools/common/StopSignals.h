// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <csignal>

#include "ztportal/base/FileDescriptor.h"

namespace zt {

/// Turns SIGINT and SIGTERM into a file descriptor that becomes readable. Create it before any
/// thread is started, so that the signals are blocked in all threads.
class StopSignals {
 public:
  /// Throws std::runtime_error if there is no descriptor for it.
  StopSignals();
  StopSignals(const StopSignals&) = delete;
  StopSignals& operator=(const StopSignals&) = delete;
  ~StopSignals();

  int number() const { return _descriptor.number(); }

 private:
  sigset_t _before{};
  FileDescriptor _descriptor;
};

}  // namespace zt
