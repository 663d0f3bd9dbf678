#pragma once

#include "tests/faults/Options.h"
#include "tests/faults/Shares.h"

namespace zt::torture {

/// Lets every call that sends, saves, a resend and a probe make fail once, with each error that it
/// has, each time in a process that uses the library for the first time. Throws a Failure for the
/// first case with a crash, an exception, a hang, a result that is not the documented one, a
/// changed file of the store, a failure afterwards, or a leak of memory, descriptors or processes.
Figures runFaultCampaign(const Options& options, Budget& budget);

}  // namespace zt::torture
