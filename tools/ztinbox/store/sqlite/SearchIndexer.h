// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "tools/ztinbox/store/sqlite/Database.h"

namespace zt::inbox {

/// What the user typed as an expression of the full-text index (SQLite FTS5), always a valid one.
/// Empty if there is nothing to search for.
///
///     copy fail "disk full"  ->  "copy" * AND "fail" * AND "disk full"
std::string searchExpression(std::string_view typed);

/// Updates the full-text index. The database lists the reports that are not indexed yet, so that
/// none is forgotten when the program ends.
class SearchIndexer {
 public:
  explicit SearchIndexer(Database& database);

  /// Indexes one portion, inside the caller's transaction; false if nothing was left.
  bool indexPortion();

  /// Whether a report up to `number` is not indexed yet. Works with any connection.
  static bool isBehind(Database& database, std::uint64_t number);

 private:
  Statement _selectPortion;
  Statement _selectBody;
  Statement _removeText;
  Statement _insertText;
  Statement _done;
};

}  // namespace zt::inbox
