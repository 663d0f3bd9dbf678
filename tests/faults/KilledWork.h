#pragma once

#include <cstdint>

#include "tests/faults/Scene.h"
#include "tests/faults/Shares.h"

namespace zt::torture {

/// Kills a host that sends, saves and resends without a pause, at the moment that follows from
/// `seed` and `number`, then looks for each report that it began. Throws a Failure when one is not
/// where it should be.
void killAtRandomMoment(Scene& scene, std::uint64_t seed, std::uint64_t number, Figures& figures);

}  // namespace zt::torture
