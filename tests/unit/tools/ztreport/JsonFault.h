#pragma once

#include <string>
#include <utility>

#include "tools/ztreport/description/JsonText.h"

namespace zt::test {

/// The message of the `JsonError` that `read` raises; a text of its own when it raises none.
template <class Read>
std::string faultOf(Read&& read) {
  try {
    std::forward<Read>(read)();
  } catch (const tools::JsonError& error) {
    return error.what();
  }
  return "no fault";
}

}  // namespace zt::test
