// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "tools/ztinbox/store/ReportFilter.h"
#include "tools/ztinbox/store/StoredReport.h"
#include "tools/ztinbox/store/sqlite/Database.h"

namespace zt::inbox {

/// Writes the rows of reports, with statements that are compiled once. The caller begins and
/// commits the transaction. Marks reports for the SearchIndexer, which updates the full-text index.
class ReportWriter {
 public:
  explicit ReportWriter(Database& database);

  /// Inserts the report under the next number. Sets its number and duplicateOf.
  void insert(IncomingReport& incoming);
  /// Removes all rows of the report; false if there is no such report.
  bool remove(std::uint64_t number);
  std::optional<std::uint64_t> oldest();
  /// Returns false if there is no such report.
  bool setRead(std::uint64_t number, bool read);

 private:
  Database& _database;
  Statement _insertReport;
  Statement _insertBody;
  Statement _insertPool;
  Statement _insertStep;
  Statement _insertUnsearched;
  Statement _duplicate;
  Statement _oldest;
  Statement _setRead;
  Statement _deleteReport;
  std::vector<Statement> _deleteRest;
};

/// The columns that readReport() expects; `r` is the table of reports.
extern const char* const kReportColumns;

/// The report in the current row, without its pools.
StoredReport readReport(const Statement& row);
/// Adds the types of the pools to the reports.
void readPools(Database& database, std::vector<StoredReport>& reports);

/// A filter in SQL: the selected reports are rows `r` of the table `reports`.
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
  /// The column with the report's number by which SQLite returns the rows in order without sorting.
  const std::string& order() const { return _order; }

  /// Binds the values, which this object owns: it must outlive the statement's run.
  void bindTo(Statement& statement) const;

 private:
  using Value = std::variant<std::int64_t, std::string>;
  void where(const std::string& condition, Value value);

  std::string _text;
  std::string _order;
  std::vector<Value> _values;
};

}  // namespace zt::inbox
