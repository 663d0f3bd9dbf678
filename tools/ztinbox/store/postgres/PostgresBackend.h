// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <memory>
#include <string>

#include "tools/ztinbox/store/Backend.h"

namespace zt::inbox {

/// The reports in the schema "ztinbox" of a PostgreSQL database, which any number of inboxes on any
/// number of machines may share. `options` is a connection string of libpq: a URL (postgresql://…)
/// or words such as "service=reports"; what it leaves out comes from the environment (PGHOST,
/// PGPASSWORD, …). Creates the tables, or brings them up to date. Throws StoreFault.
std::unique_ptr<Backend> openPostgresBackend(const std::string& options);

}  // namespace zt::inbox
