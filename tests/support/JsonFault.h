// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <stdexcept>
#include <string>
#include <utility>

namespace zt::test {

/// The message of the `JsonError` or `ZtException` that `read` throws; "no fault" if it does not
/// throw.
template <class Read>
std::string faultOf(Read&& read) {
  try {
    std::forward<Read>(read)();
  } catch (const std::runtime_error& error) {
    return error.what();
  }
  return "no fault";
}

}  // namespace zt::test
