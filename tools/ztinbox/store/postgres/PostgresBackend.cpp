// SPDX-License-Identifier: Apache-2.0
#include "tools/ztinbox/store/postgres/PostgresBackend.h"

#include <stdlib.h>

#include <algorithm>
#include <atomic>
#include <map>
#include <pqxx/binarystring>
#include <pqxx/nontransaction>
#include <pqxx/notification>
#include <pqxx/result>
#include <pqxx/stream_to>
#include <pqxx/transaction>
#include <thread>
#include <tuple>
#include <utility>

#include "tools/ztinbox/Fault.h"
#include "tools/ztinbox/store/ConnectionPool.h"
#include "tools/ztinbox/store/Search.h"
#include "tools/ztinbox/store/postgres/Schema.h"
#include "ztportal/base/Text.h"
#include "ztportal/base/Utf8.h"

namespace zt::inbox {

namespace {

using std::chrono::milliseconds;

constexpr std::size_t kTrimmedAtOnce = 200;
/// What can be searched of a report: tsvector has a limit of 1 MiB for its words and positions.
constexpr std::size_t kLongestWords = std::size_t{256} * 1024;
constexpr const char* kChannel = "ztinbox";

[[noreturn]] void fail(const pqxx::failure& failure) {
  std::string_view reason = failure.what();
  while (reason.ends_with('\n')) reason.remove_suffix(1);
  throw StoreFault("PostgreSQL: " + std::string(reason));
}

// Values in the notation of PostgreSQL.

std::string hexOf(std::string_view bytes) {
  constexpr std::string_view kDigits = "0123456789abcdef";
  std::string hex;
  hex.reserve(2 * bytes.size());
  for (const char character : bytes) {
    const auto byte = static_cast<unsigned char>(character);
    hex += kDigits[byte >> 4U];
    hex += kDigits[byte & 15U];
  }
  return hex;
}

std::string byteaOf(std::string_view bytes) { return "\\x" + hexOf(bytes); }

/// Nothing is NULL.
using Field = std::optional<std::string>;
Field byteaOf(const std::optional<std::string>& bytes) {
  if (!bytes) return std::nullopt;
  return byteaOf(std::string_view(*bytes));
}
const char* nullable(const Field& field) { return field ? field->c_str() : nullptr; }

/// `{"\\x4142","\\x43"}`
template <class Range, class Write>
std::string arrayOf(const Range& range, Write write) {
  std::string array = "{";
  for (const auto& element : range) {
    if (array.size() > 1) array += ',';
    array += write(element);
  }
  return array + "}";
}

std::string elementOf(std::string_view bytes) { return "\"\\\\x" + hexOf(bytes) + '"'; }

std::string_view keyOf(std::string_view value) { return value.substr(0, 64); }

std::string bytesOf(const pqxx::field& field) { return pqxx::binarystring(field).str(); }
std::optional<std::string> optionalBytes(const pqxx::field& field) {
  if (field.is_null()) return std::nullopt;
  return bytesOf(field);
}

std::string fromHex(std::string_view hex) {
  const auto digit = [](char character) {
    return static_cast<unsigned>(character <= '9' ? character - '0' : character - 'a' + 10);
  };
  std::string bytes;
  for (std::size_t i = 0; i + 1 < hex.size(); i += 2) {
    bytes += static_cast<char>(digit(hex[i]) << 4U | digit(hex[i + 1]));
  }
  return bytes;
}

std::uint64_t numberOf(const pqxx::field& field) { return field.as<std::uint64_t>(); }

std::int64_t millisecondsOf(Timestamp timestamp) {
  return std::chrono::floor<milliseconds>(timestamp.time_since_epoch()).count();
}

// The full-text index.

/// `text` with blanks in place of everything but letters and digits, which every parser of
/// PostgreSQL then divides into the same words as SQLite does.
std::string wordsOf(std::string_view text) {
  std::string words;
  words.reserve(text.size());
  while (!text.empty()) {
    const auto character = firstUtf8Character(text);
    const std::size_t length = character ? character->length : 1;
    const char first = text.front();
    const bool isAsciiWord = (first >= '0' && first <= '9') || (first >= 'A' && first <= 'Z') ||
                             (first >= 'a' && first <= 'z');
    if (character && (length > 1 || isAsciiWord)) {
      words += text.substr(0, length);
    } else {
      words += ' ';
    }
    text.remove_prefix(length);
  }
  return words;
}

/// What the user typed as a tsquery; empty if there is nothing to search for.
std::string queryOf(std::string_view typed) {
  std::string query;
  for (const SearchTerm& term : searchTerms(typed)) {
    const std::string words = wordsOf(term.text);
    std::string phrase;
    std::string_view rest = words;
    while (!rest.empty()) {
      const std::string_view word = takeLine(rest, ' ');
      if (word.empty()) continue;
      phrase.append(phrase.empty() ? "'" : " <-> '").append(word).append("'");
    }
    if (phrase.empty()) continue;
    if (term.isBeginning) phrase += ":*";
    query.append(query.empty() ? "(" : " & (").append(phrase).append(")");
  }
  return query;
}

// Reports.

constexpr const char* kColumns =
    "r.number, r.received, r.test, r.answer, r.sender, r.size, r.read, r.report_id, r.machine_id,"
    " r.customer_id, r.application_id, r.application_version, r.result, r.duration,"
    " (SELECT min(d.number) FROM reports d WHERE d.report_id = r.report_id AND d.report_id <> ''"
    " AND substring(d.report_id, 1, 64) = substring(r.report_id, 1, 64) AND d.number < r.number),"
    " (SELECT string_agg(encode(p.type, 'hex') || ' ', '' ORDER BY p.position)"
    " FROM unnest(r.pools) WITH ORDINALITY p(type, position))";

StoredReport reportOf(const pqxx::row& row) {
  StoredReport report;
  int column = 0;
  report.number = numberOf(row[column++]);
  report.received = Timestamp(milliseconds(row[column++].as<std::int64_t>()));
  report.test = row[column++].as<bool>();
  report.answer = parseAnswer(row[column++].c_str()).value_or(Answer{});
  report.sender = row[column++].c_str();
  report.size = row[column++].as<std::size_t>();
  report.read = row[column++].as<bool>();
  report.identity.reportId = optionalBytes(row[column++]);
  report.identity.machineId = optionalBytes(row[column++]);
  report.identity.customerId = optionalBytes(row[column++]);
  report.identity.applicationId = optionalBytes(row[column++]);
  report.identity.applicationVersion = optionalBytes(row[column++]);
  const pqxx::field result = row[column++];
  if (!result.is_null()) report.result = result.c_str();
  const pqxx::field duration = row[column++];
  if (!duration.is_null()) report.duration = milliseconds(duration.as<std::int64_t>());
  const pqxx::field first = row[column++];
  if (!first.is_null()) report.duplicateOf = numberOf(first);
  std::string_view pools = row[column].c_str();
  while (!pools.empty()) report.identity.pools.push_back(fromHex(takeLine(pools, ' ')));
  return report;
}

/// " FROM reports r WHERE …" with parameters.
class Condition {
 public:
  explicit Condition(const ReportFilter& filter) {
    if (filter.text) {
      const std::string query = queryOf(*filter.text);
      where(query.empty() ? "? <> ''" : "r.words @@ to_tsquery('ztinbox.words', ?)", query);
    }
    if (filter.pool) {
      where("r.pool_keys @> ARRAY[?::bytea]", byteaOf(keyOf(*filter.pool)));
      where("?::bytea = ANY (r.pools)", byteaOf(std::string_view(*filter.pool)));
    }
    whereEqual("customer_id", filter.customer);
    whereEqual("application_id", filter.application);
    whereEqual("machine_id", filter.machine);
    whereEqual("report_id", filter.reportId);
    if (filter.reportId) _text += " AND r.report_id <> ''";
    if (filter.version) {
      where("r.application_version = ?::bytea", byteaOf(std::string_view(*filter.version)));
    }
    if (filter.answer) where("starts_with(r.answer || ':', ? || ':')", *filter.answer);
    if (filter.result) where("r.result = ?", *filter.result);
    if (filter.before) where("r.number < ?", std::to_string(*filter.before));
    if (filter.test) where("r.test = ?", *filter.test ? "true" : "false");
    if (filter.read) where("r.read = ?", *filter.read ? "true" : "false");
    if (filter.since) where("r.received >= ?", std::to_string(millisecondsOf(*filter.since)));
    if (filter.until) where("r.received < ?", std::to_string(millisecondsOf(*filter.until)));
  }

  pqxx::result run(pqxx::transaction_base& work, const std::string& columns,
                   const std::string& rest = {}) const {
    return work.exec_params("SELECT " + columns + " FROM reports r WHERE true" + _text + rest,
                            pqxx::prepare::make_dynamic_params(_values));
  }

 private:
  void whereEqual(const std::string& column, const std::optional<std::string>& value) {
    if (!value) return;
    where("substring(r." + column + ", 1, 64) = ?::bytea", byteaOf(keyOf(*value)));
    where("r." + column + " = ?::bytea", byteaOf(std::string_view(*value)));
  }
  void where(std::string condition, std::string value) {
    _values.push_back(std::move(value));
    condition.replace(condition.find('?'), 1, "$" + std::to_string(_values.size()));
    appendText(_text, " AND ", condition);
  }

  std::string _text;
  std::vector<std::string> _values;
};

/// Hears what other inboxes do, in a thread of its own.
class Follower {
 public:
  Follower(std::string options, Arrivals& arrivals, const std::atomic<int>& ownProcess)
      : _options(std::move(options)),
        _arrivals(arrivals),
        _ownProcess(ownProcess),
        _thread([this] { serve(); }) {}
  Follower(const Follower&) = delete;
  Follower& operator=(const Follower&) = delete;
  ~Follower() {
    _isEnding = true;
    _thread.join();
  }

 private:
  /// "LAST ADDED": the last number, and how many reports were added.
  class Receiver final : public pqxx::notification_receiver {
   public:
    Receiver(pqxx::connection& connection, Follower& follower)
        : notification_receiver(connection, kChannel), _follower(follower) {}
    void operator()(const std::string& payload, int process) override {
      if (process == _follower._ownProcess) return;
      std::string_view rest = payload;
      const auto last = parseNumber<std::uint64_t>(takeLine(rest, ' '));
      const auto added = parseNumber<std::uint64_t>(rest);
      if (last && added && *added > 0) {
        _follower._arrivals.add(*last);
      } else {
        _follower._arrivals.addChange();
      }
    }

   private:
    Follower& _follower;
  };

  void serve() {
    while (!_isEnding) {
      try {
        listen();
      } catch (const pqxx::failure&) {
        // The next attempt finds out what was missed.
        std::this_thread::sleep_for(milliseconds(500));
      }
    }
  }
  void listen() {
    const auto connection = connect(_options);
    const Receiver receiver(*connection, *this);
    {
      pqxx::nontransaction work(*connection);
      _arrivals.add(numberOf(work.exec1("SELECT last FROM store")[0]));
    }
    while (!_isEnding) connection->await_notification(0, 100'000);
  }

  const std::string _options;
  Arrivals& _arrivals;
  const std::atomic<int>& _ownProcess;
  std::atomic<bool> _isEnding = false;
  std::thread _thread;
};

class PostgresBackend final : public Backend {
 public:
  explicit PostgresBackend(const std::string& options)
      : _options(options), _readers([options] { return connect(options); }) {
    try {
      prepareTables(*writing());
    } catch (const pqxx::failure& failure) {
      fail(failure);
    }
  }

  void transact(const std::function<void()>& work) override {
    try {
      _work = std::make_unique<pqxx::work>(*writing());
      const pqxx::row store = _work->exec1("SELECT last, count FROM store FOR UPDATE");
      _last = numberOf(store[0]);
      const std::uint64_t lastBefore = _last;
      _count = numberOf(store[1]);
      _isChanged = false;
      work();
      if (_isChanged) {
        _work->exec_params("UPDATE store SET last = $1, count = $2", _last, _count);
        _work->exec_params("SELECT pg_notify($1, $2)", kChannel,
                           std::to_string(_last) + " " + std::to_string(_last - lastBefore));
      }
      _work->commit();
      _work.reset();
    } catch (const pqxx::failure& failure) {
      _work.reset();
      if (_writing && !_writing->is_open()) _writing.reset();
      fail(failure);
    } catch (...) {
      _work.reset();
      throw;
    }
  }

  void insert(std::span<IncomingReport* const> reports, std::size_t most) override {
    findDuplicates(reports);
    pqxx::stream_to rows(
        *_work, "reports",
        std::vector<std::string>{"number", "received", "test", "answer", "sender", "size",
                                 "report_id", "machine_id", "customer_id", "application_id",
                                 "application_version", "result", "duration", "pools", "pool_keys",
                                 "step_names", "step_durations", "head", "body"});
    for (IncomingReport* report : reports) {
      report->report.number = ++_last;
      insertRow(rows, *report);
    }
    rows.complete();
    _count += reports.size();
    _isChanged = true;
    if (_count > most) removeOldest(_count - most);
  }
  bool trim(std::size_t most) override {
    if (_count > most) removeOldest(std::min(_count - most, kTrimmedAtOnce));
    return _count > most;
  }
  bool remove(std::uint64_t number) override {
    return countRemoved(_work->exec_params("DELETE FROM reports WHERE number = $1", number)) > 0;
  }
  std::size_t removeAll() override {
    _work->exec("TRUNCATE reports");
    _isChanged = true;
    return std::exchange(_count, 0);
  }
  bool setRead(std::uint64_t number, bool read) override {
    const bool isFound =
        _work->exec_params("UPDATE reports SET read = $1 WHERE number = $2", read, number)
            .affected_rows() > 0;
    _isChanged = _isChanged || isFound;
    return isFound;
  }
  bool indexPortion() override {
    const pqxx::result found = _work->exec(
        "SELECT number, size, body FROM reports WHERE words IS NULL ORDER BY number LIMIT " +
        std::to_string(kReportsOfPortion));
    for (const pqxx::row& row : found) {
      const std::string text = searchText(unpacked(bytesOf(row[2]), row[1].as<std::size_t>()));
      _work->exec_params(
          "UPDATE reports SET words = to_tsvector('ztinbox.words', $2) WHERE number = $1",
          numberOf(row[0]), wordsOf(text.substr(0, kLongestWords)));
    }
    return !found.empty();
  }

  std::vector<StoredReport> list(const ReportFilter& wanted, std::size_t limit) override {
    return reportsOf(
        read([&](auto& work) { return Condition(wanted).run(work, kColumns, newest(limit)); }));
  }
  std::vector<std::uint64_t> numbers(const ReportFilter& wanted, std::size_t limit) override {
    return numbersOf(
        read([&](auto& work) { return Condition(wanted).run(work, "r.number", newest(limit)); }));
  }
  std::vector<StoredReport> listAfter(std::uint64_t number, std::size_t limit) override {
    return reportsOf(read([&](auto& work) {
      return work.exec_params(std::string("SELECT ") + kColumns +
                                  " FROM reports r WHERE r.number > $1 ORDER BY r.number LIMIT $2",
                              number, limit);
    }));
  }
  std::optional<ReportBytes> bytes(std::uint64_t number) override {
    const pqxx::result found = read([&](auto& work) {
      return work.exec_params("SELECT head, body, size FROM reports WHERE number = $1", number);
    });
    if (found.empty()) return std::nullopt;
    const pqxx::row row = found[0];
    return ReportBytes{bytesOf(row[0]), unpacked(bytesOf(row[1]), row[2].as<std::size_t>())};
  }
  std::vector<std::uint64_t> withReportId(const std::string& reportId, std::size_t limit) override {
    if (reportId.empty()) return {};
    return numbersOf(read([&](auto& work) {
      return work.exec_params(
          "SELECT number FROM reports WHERE report_id = $1::bytea AND report_id <> ''"
          " AND substring(report_id, 1, 64) = $2::bytea ORDER BY number LIMIT $3",
          byteaOf(std::string_view(reportId)), byteaOf(keyOf(reportId)), limit);
    }));
  }
  Statistics statistics(const ReportFilter& filter) override;
  bool isIndexed(std::uint64_t number) override {
    return read([&](auto& work) {
             return work.exec_params(
                 "SELECT 1 FROM reports WHERE words IS NULL AND number <= $1 LIMIT 1", number);
           })
        .empty();
  }
  std::uint64_t lastNumber() override {
    return numberOf(read([](auto& work) { return work.exec("SELECT last FROM store"); })[0][0]);
  }

  void follow(Arrivals& arrivals) override { _follower.emplace(_options, arrivals, _ownProcess); }

 private:
  using Pool = ConnectionPool<pqxx::connection>;

  static std::string newest(std::size_t limit) {
    return " ORDER BY r.number DESC LIMIT " + std::to_string(limit);
  }
  static std::vector<StoredReport> reportsOf(const pqxx::result& rows) {
    std::vector<StoredReport> reports;
    for (const pqxx::row& row : rows) reports.push_back(reportOf(row));
    return reports;
  }
  static std::vector<std::uint64_t> numbersOf(const pqxx::result& rows) {
    std::vector<std::uint64_t> numbers;
    for (const pqxx::row& row : rows) numbers.push_back(numberOf(row[0]));
    return numbers;
  }

  /// Runs `query` on a connection of the pool; once more on a new one if that was lost.
  template <class Query>
  pqxx::result read(Query query) {
    for (bool isLast = false;; isLast = true) {
      Pool::Lease connection = lease();
      try {
        pqxx::nontransaction work(*connection);
        return query(work);
      } catch (const pqxx::broken_connection& failure) {
        connection.drop();
        if (isLast) fail(failure);
      } catch (const pqxx::failure& failure) {
        fail(failure);
      }
    }
  }
  Pool::Lease lease() {
    try {
      return Pool::Lease(_readers);
    } catch (const pqxx::failure& failure) {
      fail(failure);
    }
  }

  std::unique_ptr<pqxx::connection>& writing() {
    if (!_writing) {
      _writing = connect(_options);
      _ownProcess = _writing->backendpid();
    }
    return _writing;
  }

  /// Sets duplicateOf of each report.
  void findDuplicates(std::span<IncomingReport* const> reports) {
    std::map<std::string_view, std::uint64_t> first;
    std::string wanted;
    for (const IncomingReport* report : reports) {
      const auto& id = report->report.identity.reportId;
      if (!id || id->empty()) continue;
      appendText(wanted, wanted.empty() ? "" : ",", "'", byteaOf(keyOf(*id)), "'");
    }
    std::vector<std::pair<std::string, std::uint64_t>> earlier;
    if (!wanted.empty()) {
      for (const pqxx::row& row :
           _work->exec("SELECT report_id, min(number) FROM reports WHERE report_id <> ''"
                       " AND substring(report_id, 1, 64) IN (" +
                       wanted + ") GROUP BY 1")) {
        earlier.emplace_back(bytesOf(row[0]), numberOf(row[1]));
      }
    }
    for (const auto& [id, number] : earlier) first.emplace(id, number);
    std::uint64_t next = _last;
    for (IncomingReport* report : reports) {
      const std::uint64_t number = ++next;
      report->report.duplicateOf.reset();
      const auto& id = report->report.identity.reportId;
      if (!id || id->empty()) continue;
      const auto [found, isFirst] = first.emplace(*id, number);
      if (!isFirst) report->report.duplicateOf = found->second;
    }
  }

  static void insertRow(pqxx::stream_to& rows, const IncomingReport& incoming) {
    const StoredReport& report = incoming.report;
    const ReportIdentity& identity = report.identity;
    const Field reportId = byteaOf(identity.reportId);
    const Field machineId = byteaOf(identity.machineId);
    const Field customerId = byteaOf(identity.customerId);
    const Field applicationId = byteaOf(identity.applicationId);
    const Field applicationVersion = byteaOf(identity.applicationVersion);
    const Field duration =
        report.duration ? Field(std::to_string(report.duration->count())) : std::nullopt;
    const auto key = [](const std::string& pool) { return elementOf(keyOf(pool)); };
    const auto name = [](const StepDuration& step) { return elementOf(step.name); };
    const auto time = [](const StepDuration& step) {
      return std::to_string(step.duration.count());
    };
    rows << std::make_tuple(
        report.number, millisecondsOf(report.received), report.test, answerWord(report.answer),
        report.sender, report.size, nullable(reportId), nullable(machineId), nullable(customerId),
        nullable(applicationId), nullable(applicationVersion), nullable(report.result),
        nullable(duration), arrayOf(identity.pools, elementOf), arrayOf(identity.pools, key),
        arrayOf(incoming.steps, name), arrayOf(incoming.steps, time),
        byteaOf(std::string_view(incoming.head)), byteaOf(std::string_view(incoming.packedBody)));
  }

  void removeOldest(std::size_t number) {
    countRemoved(
        _work->exec_params("DELETE FROM reports WHERE number IN (SELECT number FROM reports"
                           " ORDER BY number LIMIT $1)",
                           number));
  }
  std::size_t countRemoved(const pqxx::result& result) {
    _count -= result.affected_rows();
    _isChanged = _isChanged || result.affected_rows() > 0;
    return result.affected_rows();
  }

  const std::string _options;
  // Used by the thread that writes:
  std::unique_ptr<pqxx::connection> _writing;
  std::unique_ptr<pqxx::work> _work;
  std::uint64_t _last = 0;
  std::size_t _count = 0;
  bool _isChanged = false;

  std::atomic<int> _ownProcess = 0;  ///< of the server, which _writing uses
  Pool _readers;
  std::optional<Follower> _follower;
};

Statistics PostgresBackend::statistics(const ReportFilter& filter) {
  const Condition condition(filter);
  Statistics statistics;
  const pqxx::row totals = read([&](auto& work) {
    return condition.run(work,
                         "count(*), coalesce(sum(r.size), 0), count(*) FILTER (WHERE NOT r.read),"
                         " count(*) FILTER (WHERE r.test)");
  })[0];
  statistics.reports = numberOf(totals[0]);
  statistics.bytes = numberOf(totals[1]);
  statistics.unread = numberOf(totals[2]);
  statistics.tests = numberOf(totals[3]);
  for (const pqxx::row& row : read([&](auto& work) {
         return condition.run(work,
                              "r.received / 60000, count(*) FILTER (WHERE r.answer = 'accept'),"
                              " count(*) FILTER (WHERE r.answer = 'refuse'), count(*)",
                              " GROUP BY 1 ORDER BY 1 DESC LIMIT 1440");
       })) {
    Statistics::Minute minute;
    minute.begin += std::chrono::minutes(row[0].as<std::int64_t>());
    minute.accepted = numberOf(row[1]);
    minute.refused = numberOf(row[2]);
    minute.failed = numberOf(row[3]) - minute.accepted - minute.refused;
    statistics.minutes.push_back(minute);
  }
  std::ranges::reverse(statistics.minutes);
  for (const pqxx::row& row : read([&](auto& work) {
         return condition.run(work, "r.result, count(*)",
                              " AND r.result IS NOT NULL GROUP BY 1 ORDER BY 2 DESC, 1");
       })) {
    statistics.results.push_back({row[0].c_str(), numberOf(row[1])});
  }
  for (const pqxx::row& row : read([&](auto& work) {
         return condition.run(
             work,
             "s.name, count(*), min(s.duration), avg(s.duration)::bigint, max(s.duration) FROM"
             " (SELECT unnest(r.step_names) AS name, unnest(r.step_durations) AS duration",
             ") s GROUP BY 1 ORDER BY 2 DESC, 1 LIMIT 50");
       })) {
    statistics.steps.push_back(
        {bytesOf(row[0]), numberOf(row[1]), milliseconds(row[2].as<std::int64_t>()),
         milliseconds(row[3].as<std::int64_t>()), milliseconds(row[4].as<std::int64_t>())});
  }
  return statistics;
}

}  // namespace

std::unique_ptr<Backend> openPostgresBackend(const std::string& options) {
  // Senders wait two seconds; libpq waits for minutes unless it is told otherwise.
  ::setenv("PGCONNECT_TIMEOUT", "2", 0);
  return std::make_unique<PostgresBackend>(options);
}

}  // namespace zt::inbox
