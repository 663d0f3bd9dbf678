// SPDX-License-Identifier: Apache-2.0
#pragma once

namespace zt::test {

// Counts that the global operators new and delete of ztportal_unit_test keep for each thread.

/// How many more allocations succeed; all of them if negative.
extern thread_local long allocationsLeft;
/// How many allocations have not been freed yet.
extern thread_local long allocationsHeld;

}  // namespace zt::test
