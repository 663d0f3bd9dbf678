#pragma once

#include "tests/faults/Options.h"
#include "tests/faults/Shares.h"

namespace zt::torture {

/// Sends `options.reports` reports through a ztinbox and a network that play faults, looks after
/// each where it is, and at the end sends again what was stored. Throws a Failure for the first
/// report that is neither accepted nor stored exactly as written, or that is both without an
/// answer having been lost.
Figures runDeliveryCampaign(const Options& options, Budget& budget);

}  // namespace zt::torture
