#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "tools/ztinbox/store/Database.h"
#include "tools/ztinbox/store/StoredReport.h"

namespace zt::inbox {

/// Writes the rows of reports, with statements that are compiled once. All within a transaction of
/// the caller's. The full-text index is left to the SearchIndexer, which is told.
class ReportWriter {
 public:
  explicit ReportWriter(Database& database);

  /// Under the report's own number. Sets of which one it is a duplicate.
  void insert(IncomingReport& incoming);
  /// Removes all of the report; false when it is not there.
  bool remove(std::uint64_t number);
  std::optional<std::uint64_t> oldest();
  /// False when it is not there.
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

/// The columns of reports `r` that readReport() reads, in the order in which it does.
extern const char* const kReportColumns;

/// The report in the statement's row, without its pools.
StoredReport readReport(const Statement& row);
/// Adds the types of their pools.
void readPools(Database& database, std::vector<StoredReport>& reports);

}  // namespace zt::inbox
