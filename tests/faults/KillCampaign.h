#pragma once

#include "tests/faults/Options.h"
#include "tests/faults/Shares.h"

namespace zt::torture {

/// Kills a host at every call on the file system that its sends, saves and resends make, and
/// `options.kills` times at a random moment of its work. Throws a Failure for the first time that a
/// report whose saving was over is not as it was written, or that sending again afterwards does not
/// go as described: up to the first file that was cut short, and with that taken away to the end.
Figures runKillCampaign(const Options& options, Budget& budget);

}  // namespace zt::torture
