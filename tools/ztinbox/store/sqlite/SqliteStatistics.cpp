// SPDX-License-Identifier: Apache-2.0
#include "tools/ztinbox/store/sqlite/SqliteStatistics.h"

#include <algorithm>

#include "tools/ztinbox/store/sqlite/ReportRows.h"

namespace zt::inbox {

namespace {

using std::chrono::milliseconds;

std::uint64_t countAt(const Statement& row, int column) {
  return static_cast<std::uint64_t>(row.integer(column));
}

void readTotals(Database& database, const FilterSql& filter, Statistics& statistics) {
  Statement select(database,
                   "SELECT count(*), sum(r.size), sum(r.read = 0), sum(r.test)" + filter.text());
  filter.bindTo(select);
  if (!select.next()) return;
  statistics.reports = countAt(select, 0);
  statistics.bytes = countAt(select, 1);
  statistics.unread = countAt(select, 2);
  statistics.tests = countAt(select, 3);
}

void readMinutes(Database& database, const FilterSql& filter, Statistics& statistics) {
  Statement select(database,
                   "SELECT r.received / 60000, sum(r.answer = 'accept'), sum(r.answer = 'refuse'),"
                   " count(*)" +
                       filter.text() + " GROUP BY 1 ORDER BY 1 DESC LIMIT 1440");
  for (filter.bindTo(select); select.next();) {
    Statistics::Minute minute;
    minute.begin = Statistics::Minute{}.begin + std::chrono::minutes(select.integer(0));
    minute.accepted = countAt(select, 1);
    minute.refused = countAt(select, 2);
    minute.failed = countAt(select, 3) - minute.accepted - minute.refused;
    statistics.minutes.push_back(minute);
  }
  std::ranges::reverse(statistics.minutes);
}

void readResults(Database& database, const FilterSql& filter, Statistics& statistics) {
  Statement select(database, "SELECT r.result, count(*)" + filter.text() +
                                 " AND r.result IS NOT NULL GROUP BY 1 ORDER BY 2 DESC, 1");
  for (filter.bindTo(select); select.next();) {
    statistics.results.push_back({select.text(0), countAt(select, 1)});
  }
}

void readSteps(Database& database, const FilterSql& filter, Statistics& statistics) {
  Statement select(database,
                   "SELECT name, count(*), min(duration), avg(duration), max(duration) FROM steps"
                   " WHERE report IN (SELECT r.number" +
                       filter.text() + ") GROUP BY 1 ORDER BY 2 DESC, 1 LIMIT 50");
  for (filter.bindTo(select); select.next();) {
    statistics.steps.push_back({select.text(0), countAt(select, 1), milliseconds(select.integer(2)),
                                milliseconds(select.integer(3)), milliseconds(select.integer(4))});
  }
}

}  // namespace

Statistics readStatistics(Database& database, const ReportFilter& wanted) {
  const FilterSql filter(wanted);
  Statistics statistics;
  readTotals(database, filter, statistics);
  readMinutes(database, filter, statistics);
  readResults(database, filter, statistics);
  readSteps(database, filter, statistics);
  return statistics;
}

}  // namespace zt::inbox
