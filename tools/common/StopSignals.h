#pragma once

#include <csignal>

#include "ztportal/base/FileDescriptor.h"

namespace zt {

/// Turns SIGINT and SIGTERM into a file descriptor that becomes readable. Create it before any
/// thread, so that the signals interrupt none.
class StopSignals {
 public:
  /// Throws std::runtime_error.
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
