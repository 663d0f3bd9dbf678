#pragma once

#include <stdexcept>

namespace zt::torture {

/// A promise that was not kept, in words: what was done, and what came of it.
struct Failure : std::runtime_error {
  using std::runtime_error::runtime_error;
};

}  // namespace zt::torture
