// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "tools/ztinbox/store/Database.h"

namespace zt::inbox {

/// Turns what the user typed into an expression of the full-text index (SQLite FTS5). All words
/// must occur, in any order and letter case. A word of three or more characters also matches longer
/// words that start with it; words in quotation marks are a phrase.
///
///     copy fail "disk full"  ->  "copy" * AND "fail" * AND "disk full"
///
/// The expression is always valid. It is empty if there is no letter or digit.
std::string searchExpression(std::string_view typed);

// Limits of the index. The rest of a longer value or of a larger report is not indexed.
inline constexpr std::size_t kLongestSearchedValue = std::size_t{64} * 1024;
inline constexpr std::size_t kLongestSearchText = std::size_t{1024} * 1024;

/// The text of a report for the full-text index: its identity, and the names and values of its
/// pools, one line each. If the report cannot be read, this is its whole text.
std::string searchText(std::string_view report);

/// Updates the full-text index. Indexing costs more than everything else about storing a report, so
/// no sender waits for it: it is done in portions when there is time, and before a search. The
/// database lists the reports that are not indexed yet, so that none is forgotten when the program
/// ends.
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
