// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <memory>
#include <pqxx/connection>
#include <string>

namespace zt::inbox {

/// Connects to the database, without looking for the tables. Throws pqxx exceptions.
std::unique_ptr<pqxx::connection> connect(const std::string& options);

/// Creates the tables, or brings them up to date, under a lock that other inboxes respect. Throws
/// StoreFault if they were written by a newer inbox.
void prepareTables(pqxx::connection& connection);

}  // namespace zt::inbox
