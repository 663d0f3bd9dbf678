#include "tools/ztinbox/store/ReportFilter.h"

#include <utility>

#include "tools/ztinbox/store/Search.h"

namespace zt::inbox {

namespace {

std::int64_t milliseconds(Timestamp timestamp) {
  return std::chrono::floor<std::chrono::milliseconds>(timestamp.time_since_epoch()).count();
}

}  // namespace

FilterSql::FilterSql(const ReportFilter& filter) {
  // CROSS JOIN fixes the order of the tables. The first one has the reports in the order of their
  // numbers, so that SQLite reads a page of reports without reading all others.
  if (filter.text) {
    _order = "search.rowid";
    _text = " FROM search CROSS JOIN reports r ON r.number = search.rowid WHERE";
    const std::string expression = searchExpression(*filter.text);
    // An empty expression matches nothing.
    where(expression.empty() ? " ? <> ''" : " search MATCH ?", expression);
    if (filter.pool) {
      where(" EXISTS (SELECT 1 FROM pools p WHERE p.report = search.rowid AND p.type = ?)",
            *filter.pool);
    }
  } else if (filter.pool) {
    _order = "p.report";
    _text = " FROM pools p CROSS JOIN reports r ON r.number = p.report WHERE p.first = 1";
    where(" p.type = ?", *filter.pool);
  } else {
    _order = "r.number";
    _text = " FROM reports r WHERE 1";
  }
  if (filter.before) where(" " + _order + " < ?", static_cast<std::int64_t>(*filter.before));
  if (filter.customer) where(" r.customer_id = ?", *filter.customer);
  if (filter.application) where(" r.application_id = ?", *filter.application);
  if (filter.machine) where(" r.machine_id = ?", *filter.machine);
  if (filter.test) where(" r.test = ?", std::int64_t{*filter.test});
  if (filter.read) where(" r.read = ?", std::int64_t{*filter.read});
  if (filter.since) where(" r.received >= ?", milliseconds(*filter.since));
  if (filter.until) where(" r.received < ?", milliseconds(*filter.until));
}

void FilterSql::where(const std::string& condition, Value value) {
  if (!_text.ends_with("WHERE")) _text += " AND";
  _text += condition;
  _values.push_back(std::move(value));
}

void FilterSql::bindTo(Statement& statement) const {
  statement.reset();
  int index = 0;
  for (const Value& value : _values) {
    ++index;
    std::visit([&](const auto& content) { statement.put(index, content); }, value);
  }
}

}  // namespace zt::inbox
