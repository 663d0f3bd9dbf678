// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <stdexcept>
#include <string>

namespace zt::inbox {

/// Invalid input: an option, a scenario or a request.
struct InputFault : std::runtime_error {
  using std::runtime_error::runtime_error;
};

/// A failure of the machine: an address in use, a file that cannot be read.
struct MachineFault : std::runtime_error {
  using std::runtime_error::runtime_error;
};

/// The store cannot be used: its database is damaged, out of reach or full. The message names the
/// database and the reason.
struct StoreFault : MachineFault {
  using MachineFault::MachineFault;
};

}  // namespace zt::inbox
