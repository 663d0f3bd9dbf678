#pragma once

#include <cstdint>
#include <string>
#include <variant>
#include <vector>

#include "tools/ztinbox/store/Database.h"
#include "tools/ztinbox/store/ReportFilter.h"

namespace zt::inbox {

/// A filter in SQL: the reports it means, as rows `r` of the table `reports`.
///
///     const FilterSql filter(wanted);
///     Statement select(database, "SELECT r.number" + filter.text() + " ORDER BY " +
///                                filter.order() + " DESC LIMIT 10");
///     filter.bindTo(select);
class FilterSql {
 public:
  explicit FilterSql(const ReportFilter& filter);

  /// " FROM … WHERE …"
  const std::string& text() const { return _text; }
  /// The column with the report's number by which the rows come in order without being sorted.
  const std::string& order() const { return _order; }

  /// Puts the values in, which are the filter's own: it outlives the statement's run.
  void bindTo(Statement& statement) const;

 private:
  using Value = std::variant<std::int64_t, std::string>;
  void where(const std::string& condition, Value value);

  std::string _text;
  std::string _order;
  std::vector<Value> _values;
};

}  // namespace zt::inbox
