#pragma once

#include <array>
#include <cstddef>
#include <span>
#include <string>
#include <vector>

#include "tests/faults/Operations.h"
#include "tests/faults/interposer/FaultPlan.h"

namespace zt::torture {

/// One call of one operation that meets one fate.
struct FaultCase {
  const Operation* operation;
  FaultPlan plan;

  /// "send, refused: the 3rd write: No space left on device"
  std::string text() const;
};

/// How often each kind of call is made.
using CallCounts = std::array<unsigned, kCalls>;

const char* nameOf(Call call);

/// Every call of `operation` with every error that it has.
std::vector<FaultCase> failingCases(const Operation& operation, const CallCounts& counts);

/// Every call on the file system with every way to be killed there.
std::vector<FaultCase> killingCases(const Operation& operation, const CallCounts& counts);

}  // namespace zt::torture
