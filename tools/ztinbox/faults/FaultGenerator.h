#pragma once

#include <cstdint>
#include <optional>
#include <random>

#include "tools/ztinbox/http/Answer.h"

namespace zt::inbox {

/// Decides for each report whether it fails, and how. The same seed gives the same faults
/// everywhere: the numbers of std::mt19937_64 are fixed by the C++ standard, and they are turned
/// into faults here, not by the distributions, which each standard library computes its own way.
class FaultGenerator {
 public:
  explicit FaultGenerator(std::uint64_t seed) : _numbers(seed) {}

  /// The fault of the next report, with probability `rate` (0 to 1), or nothing. Which fault a
  /// report would get does not depend on the rates of those before it.
  std::optional<Answer> next(double rate);

 private:
  std::mt19937_64 _numbers;
};

}  // namespace zt::inbox
