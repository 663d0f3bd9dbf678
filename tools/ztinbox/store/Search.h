#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "tools/ztinbox/store/Database.h"

namespace zt::inbox {

/// Turns what a person typed into an expression of the full-text index (SQLite FTS5): all words
/// must occur, in any order and letter case. A word of three characters or more also matches longer
/// words that begin with it; a quotation matches word by word.
///
///     copy fail "disk full"  ->  "copy" * AND "fail" * AND "disk full"
///
/// The expression is always well-formed. It is empty if there is no letter or digit.
std::string searchExpression(std::string_view typed);

// Limits of the index: the rest of a longer value, or of a larger report, is not found.
inline constexpr std::size_t kLongestSearchedValue = std::size_t{64} * 1024;
inline constexpr std::size_t kLongestSearchText = std::size_t{1024} * 1024;

/// The text that the full-text index has of a report: its identity, and the names and values of its
/// pools, a line each. If the pools cannot be read: all of it.
std::string searchText(std::string_view report);

/// Updates the full-text index. Indexing costs more than everything else about keeping a report, so
/// no sender waits for it: it is done in portions when there is time, and before a search. The
/// database lists the reports that are left, so that none is forgotten when the program ends.
class SearchIndexer {
 public:
  explicit SearchIndexer(Database& database);

  /// Indexes one portion, within a transaction of the caller; false if nothing was left.
  bool indexPortion();

  /// Whether a report up to `number` is not indexed yet. For any connection.
  static bool isBehind(Database& database, std::uint64_t number);

 private:
  Statement _selectPortion;
  Statement _selectBody;
  Statement _removeText;
  Statement _insertText;
  Statement _done;
};

}  // namespace zt::inbox
