#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "tools/ztinbox/store/Database.h"
#include "tools/ztinbox/store/StoredReport.h"

namespace zt::inbox {

/// Writes the rows of reports, with statements that are compiled once. The caller begins and
/// commits the transaction. Marks reports for the SearchIndexer, which updates the full-text index.
class ReportWriter {
 public:
  explicit ReportWriter(Database& database);

  /// Inserts the report under its number. Sets duplicateOf.
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

}  // namespace zt::inbox
