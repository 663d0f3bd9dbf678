#pragma once

#include <string>
#include <utility>

#include "tools/common/Json.h"

namespace zt::test {

/// The message of the `JsonError` that `read` throws; "no fault" if it does not throw.
template <class Read>
std::string faultOf(Read&& read) {
  try {
    std::forward<Read>(read)();
  } catch (const JsonError& error) {
    return error.what();
  }
  return "no fault";
}

}  // namespace zt::test
