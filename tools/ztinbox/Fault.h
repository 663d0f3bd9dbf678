#pragma once

#include <stdexcept>
#include <string>

namespace zt::inbox {

/// What the caller wrote cannot be used: a wrong option, a wrong scenario, a wrong request.
struct InputFault : std::runtime_error {
  using std::runtime_error::runtime_error;
};

/// The machine did not do what was asked of it: an address in use, a file that cannot be read.
struct MachineFault : std::runtime_error {
  using std::runtime_error::runtime_error;
};

}  // namespace zt::inbox
