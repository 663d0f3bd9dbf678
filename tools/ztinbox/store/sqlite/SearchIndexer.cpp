// SPDX-License-Identifier: Apache-2.0
#include "tools/ztinbox/store/sqlite/SearchIndexer.h"

#include <vector>

#include "tools/ztinbox/store/Search.h"
#include "tools/ztinbox/store/StoredReport.h"

namespace zt::inbox {

std::string searchExpression(std::string_view typed) {
  std::string expression;
  for (const SearchTerm& term : searchTerms(typed)) {
    if (!expression.empty()) expression += " AND ";
    expression.append("\"").append(term.text).append(term.isBeginning ? "\" *" : "\"");
  }
  return expression;
}

SearchIndexer::SearchIndexer(Database& database)
    : _selectPortion(database, "SELECT report FROM unsearched ORDER BY report LIMIT ?"),
      _selectBody(database,
                  "SELECT b.body, r.size FROM bodies b JOIN reports r ON r.number = b.report"
                  " WHERE b.report = ?"),
      _removeText(database, "DELETE FROM search WHERE rowid = ?"),
      _insertText(database, "INSERT INTO search (rowid, text) VALUES (?, ?)"),
      _done(database, "DELETE FROM unsearched WHERE report = ?") {}

bool SearchIndexer::indexPortion() {
  std::vector<std::int64_t> numbers;
  for (_selectPortion.bind(std::uint64_t{kReportsOfPortion}); _selectPortion.next();) {
    numbers.push_back(_selectPortion.integer(0));
  }
  _selectPortion.reset();
  std::size_t bytes = 0;
  for (const std::int64_t number : numbers) {
    _removeText.run(number);
    _selectBody.bind(number);
    if (_selectBody.next()) {
      const auto size = static_cast<std::size_t>(_selectBody.integer(1));
      const std::string text = searchText(unpacked(_selectBody.view(0), size));
      _insertText.run(number, text);
      bytes += size;
    }
    _selectBody.reset();
    _done.run(number);
    if (bytes > kBytesOfPortion) break;
  }
  return !numbers.empty();
}

bool SearchIndexer::isBehind(Database& database, std::uint64_t number) {
  Statement select(database, "SELECT 1 FROM unsearched WHERE report <= ? LIMIT 1");
  select.bind(number);
  return select.next();
}

}  // namespace zt::inbox
