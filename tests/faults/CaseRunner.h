#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "tests/faults/FaultCases.h"
#include "tests/faults/Options.h"
#include "tests/faults/Scene.h"

namespace zt::torture {

/// What an operation does on this machine when nothing fails.
struct Reference {
  CallCounts counts{};
  std::size_t descriptors = 0;  ///< open afterwards, cached connections for one
};

/// Which calls of an operation are counted, and can be struck.
enum class Within { kAll, kAct };

/// All that there are, but for a report that is to be saved again: that it was saved before is
/// undisturbed.
Within strikable(const Operation& operation);

/// Tries `operation` undisturbed, in a process of its own. Throws a Failure when even that fails.
Reference measure(const Operation& operation, Scene& scene, Within within);

using MakeCases = std::vector<FaultCase> (*)(const Operation&, const CallCounts&);

/// The cases of all operations as `make` gives them. Where there is a limit on time, in the order
/// that the seed gives, so that any part of them is a sample of all.
std::vector<FaultCase> allCases(Scene& scene, const Options& options,
                                Within (*within)(const Operation&), MakeCases make);

}  // namespace zt::torture
