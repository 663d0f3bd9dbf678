#pragma once

#include <string>

#include "tools/ztreport/Failure.h"

namespace zt::tools {

/// Prints one line a saved report: name, size, age, and whether it can be sent or why not. The
/// lines stand in the order in which the reports are sent again.
Exit listStore();

/// Moves a saved report, named by its path or by its name in the store, to the folder "set-aside"
/// beside the store's folder, and prints its new path. Whatever is there stays: the moved one gets
/// a number where its name is taken. Raises a `Failure` for a file that is not in the store.
Exit setAside(const std::string& file);

}  // namespace zt::tools
