#pragma once

namespace zt::test {

// The global operators new and delete of ztportal_unit_test keep these two counts for each thread.

/// How many more allocations succeed; negative: all of them.
extern thread_local long allocationsLeft;
/// Allocations made and not freed yet.
extern thread_local long allocationsHeld;

}  // namespace zt::test
