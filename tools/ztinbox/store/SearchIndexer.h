#pragma once

#include <cstdint>

#include "tools/ztinbox/store/Database.h"

namespace zt::inbox {

/// Brings the full-text index up to date with the reports. Indexing costs more than all else about
/// keeping a report, so nobody who sends one waits for it: it is done a portion at a time when
/// there is time, and before a search. Which reports are left is in the database, so that none is
/// forgotten when the program ends.
class SearchIndexer {
 public:
  explicit SearchIndexer(Database& database);

  /// Does one portion, within a transaction of the caller's; false when nothing was left.
  bool indexPortion();

  /// Whether the index still lacks a report up to `number`. For any connection.
  static bool isBehind(Database& database, std::uint64_t number);

 private:
  Statement _selectPortion;
  Statement _selectBody;
  Statement _removeText;
  Statement _insertText;
  Statement _done;
};

}  // namespace zt::inbox
