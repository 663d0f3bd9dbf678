// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <memory>
#include <string>

#include "tools/ztinbox/store/Backend.h"

namespace zt::inbox {

/// The reports of one inbox, in an SQLite database in a folder that is locked for this process.
/// What is committed survives the end of the program, and soon afterwards a power failure too.
/// Throws MachineFault if the folder or its content cannot be used.
std::unique_ptr<Backend> openSqliteBackend(const std::string& folder);

}  // namespace zt::inbox
