// SPDX-License-Identifier: Apache-2.0
#include "tools/ztinbox/store/sqlite/ReportRows.h"

#include <unordered_set>
#include <utility>

#include "tools/ztinbox/store/sqlite/SearchIndexer.h"

namespace zt::inbox {

namespace {

std::int64_t millisecondsOf(Timestamp timestamp) {
  return std::chrono::floor<std::chrono::milliseconds>(timestamp.time_since_epoch()).count();
}

std::optional<std::int64_t> count(const std::optional<std::chrono::milliseconds>& duration) {
  if (!duration) return std::nullopt;
  return duration->count();
}

}  // namespace

const char* const kReportColumns =
    "r.number, r.received, r.test, r.answer, r.sender, r.size, r.read, r.report_id, r.machine_id,"
    " r.customer_id, r.application_id, r.application_version, r.result, r.duration,"
    " (SELECT min(d.number) FROM reports d WHERE d.report_id = r.report_id AND d.report_id <> ''"
    " AND d.number < r.number)";

ReportWriter::ReportWriter(Database& database)
    : _database(database),
      _insertReport(
          database,
          "INSERT INTO reports (received, test, answer, sender, size, report_id, machine_id,"
          " customer_id, application_id, application_version, result, duration)"
          " VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?)"),
      _insertBody(database, "INSERT INTO bodies (report, head, body) VALUES (?, ?, ?)"),
      _insertPool(database,
                  "INSERT INTO pools (report, position, type, first) VALUES (?, ?, ?, ?)"),
      _insertStep(database,
                  "INSERT INTO steps (report, position, name, duration) VALUES (?, ?, ?, ?)"),
      _insertUnsearched(database, "INSERT OR IGNORE INTO unsearched (report) VALUES (?)"),
      _duplicate(database,
                 "SELECT min(number) FROM reports WHERE report_id = ? AND report_id <> ''"),
      _oldest(database, "SELECT min(number) FROM reports"),
      _setRead(database, "UPDATE reports SET read = ? WHERE number = ?"),
      _deleteReport(database, "DELETE FROM reports WHERE number = ?") {
  for (const char* const statement :
       {"DELETE FROM bodies WHERE report = ?", "DELETE FROM pools WHERE report = ?",
        "DELETE FROM steps WHERE report = ?"}) {
    _deleteRest.emplace_back(database, statement);
  }
}

void ReportWriter::insert(IncomingReport& incoming) {
  StoredReport& report = incoming.report;
  const ReportIdentity& identity = report.identity;
  report.duplicateOf.reset();
  if (identity.reportId) {
    _duplicate.bind(*identity.reportId);
    const auto first = _duplicate.next() ? _duplicate.optionalInteger(0) : std::nullopt;
    if (first) report.duplicateOf = static_cast<std::uint64_t>(*first);
    _duplicate.reset();
  }
  const std::string answer = answerWord(report.answer);
  _insertReport.run(millisecondsOf(report.received), report.test, answer, report.sender,
                    std::uint64_t{report.size}, identity.reportId, identity.machineId,
                    identity.customerId, identity.applicationId, identity.applicationVersion,
                    report.result, count(report.duration));
  const std::uint64_t number = _database.lastInserted();
  report.number = number;
  _insertBody.run(number, incoming.head, incoming.packedBody);
  std::unordered_set<std::string_view> seen;
  std::int64_t position = 0;
  for (const std::string& pool : identity.pools) {
    _insertPool.run(number, position++, pool, seen.insert(pool).second);
  }
  position = 0;
  for (const StepDuration& step : incoming.steps) {
    _insertStep.run(number, position++, step.name, std::int64_t{step.duration.count()});
  }
  _insertUnsearched.run(number);
}

bool ReportWriter::remove(std::uint64_t number) {
  _deleteReport.run(number);
  if (_database.changes() == 0) return false;
  for (Statement& statement : _deleteRest) statement.run(number);
  _insertUnsearched.run(number);
  return true;
}

std::optional<std::uint64_t> ReportWriter::oldest() {
  _oldest.bind();
  const auto number = _oldest.next() ? _oldest.optionalInteger(0) : std::nullopt;
  _oldest.reset();
  if (!number) return std::nullopt;
  return static_cast<std::uint64_t>(*number);
}

bool ReportWriter::setRead(std::uint64_t number, bool read) {
  _setRead.run(read, number);
  return _database.changes() > 0;
}

StoredReport readReport(const Statement& row) {
  StoredReport report;
  int column = 0;
  report.number = static_cast<std::uint64_t>(row.integer(column++));
  report.received = Timestamp(std::chrono::milliseconds(row.integer(column++)));
  report.test = row.integer(column++) != 0;
  report.answer = parseAnswer(row.view(column++)).value_or(Answer{});
  report.sender = row.text(column++);
  report.size = static_cast<std::size_t>(row.integer(column++));
  report.read = row.integer(column++) != 0;
  report.identity.reportId = row.optionalText(column++);
  report.identity.machineId = row.optionalText(column++);
  report.identity.customerId = row.optionalText(column++);
  report.identity.applicationId = row.optionalText(column++);
  report.identity.applicationVersion = row.optionalText(column++);
  report.result = row.optionalText(column++);
  const auto duration = row.optionalInteger(column++);
  if (duration) report.duration = std::chrono::milliseconds(*duration);
  const auto first = row.optionalInteger(column++);
  if (first) report.duplicateOf = static_cast<std::uint64_t>(*first);
  return report;
}

void readPools(Database& database, std::vector<StoredReport>& reports) {
  Statement select(database, "SELECT type FROM pools WHERE report = ? ORDER BY position");
  for (StoredReport& report : reports) {
    for (select.bind(report.number); select.next();) {
      report.identity.pools.push_back(select.text(0));
    }
  }
}

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
  if (filter.version) where(" r.application_version = ?", *filter.version);
  if (filter.reportId) where(" r.report_id = ? AND r.report_id <> ''", *filter.reportId);
  if (filter.answer) where(" r.answer || ':' GLOB ? || ':*'", *filter.answer);
  if (filter.result) where(" r.result = ?", *filter.result);
  if (filter.test) where(" r.test = ?", std::int64_t{*filter.test});
  if (filter.read) where(" r.read = ?", std::int64_t{*filter.read});
  if (filter.since) where(" r.received >= ?", millisecondsOf(*filter.since));
  if (filter.until) where(" r.received < ?", millisecondsOf(*filter.until));
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
