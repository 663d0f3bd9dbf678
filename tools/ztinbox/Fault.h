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

}  // namespace zt::inbox
