// SPDX-License-Identifier: Apache-2.0
#include "tools/ztinbox/store/sqlite/Database.h"

#include <fcntl.h>
#include <sqlite3.h>

#include <new>

#include "tools/ztinbox/store/DataFolder.h"
#include "ztportal/base/FileDescriptor.h"

namespace zt::inbox {

namespace {

/// The inbox alone writes to the file, but the user may open it with another program.
constexpr int kLockPatienceInMilliseconds = 1'000;

/// SQLite gives its other files the mode of the database file.
void createForOwnerOnly(const std::string& file) {
  const FileDescriptor created(::open(file.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, kOwnerOnly));
}

/// "ztin": marks the file as a database of this program.
constexpr std::int64_t kApplicationId = 0x7a74696e;
constexpr std::int64_t kVersion = 1;

/// After a commit, the data is in the kernel, so it survives the end of this program, but it may
/// not be on the disk: waiting for the disk would halve the rate. saveNow() waits for it, and
/// SQLite itself does so about every eight megabytes.
constexpr const char* kWriting = R"(
PRAGMA page_size = 8192;
PRAGMA journal_mode = WAL;
PRAGMA synchronous = NORMAL;
PRAGMA journal_size_limit = 67108864;
PRAGMA temp_store = MEMORY;
PRAGMA cache_size = -16384;
)";

constexpr const char* kReading = R"(
PRAGMA query_only = ON;
PRAGMA temp_store = MEMORY;
PRAGMA cache_size = -4096;
)";

constexpr const char* kSearchTable = R"(
CREATE VIRTUAL TABLE search USING fts5(text, tokenize = "unicode61 remove_diacritics 2");
)";

constexpr const char* kTables = R"(
CREATE TABLE reports (
  number INTEGER PRIMARY KEY AUTOINCREMENT,
  received INTEGER NOT NULL,           -- milliseconds since 1970
  test INTEGER NOT NULL,               -- 1: was posted to the test address
  answer TEXT NOT NULL,                -- the word of --answer
  sender TEXT NOT NULL,                -- address and port
  size INTEGER NOT NULL,               -- bytes of the body
  read INTEGER NOT NULL DEFAULT 0,     -- 1: the user marked it as read
  report_id TEXT,
  machine_id TEXT,
  customer_id TEXT,
  application_id TEXT,
  application_version TEXT,
  result TEXT,                         -- of its run: succeeded, failed, cancelled
  duration INTEGER                     -- of its run, milliseconds
);
CREATE INDEX reports_by_report_id ON reports (report_id) WHERE report_id <> '';
CREATE INDEX reports_by_machine ON reports (machine_id);
CREATE INDEX reports_by_customer ON reports (customer_id);
CREATE INDEX reports_by_application ON reports (application_id);

CREATE TABLE bodies (
  report INTEGER PRIMARY KEY,
  head TEXT NOT NULL,                  -- request line and headers as received
  body BLOB NOT NULL                   -- the body as received, an LZ4 block of reports.size bytes
);

CREATE TABLE pools (
  report INTEGER NOT NULL,
  position INTEGER NOT NULL,
  type TEXT NOT NULL,
  first INTEGER NOT NULL,              -- 1: the report's first pool of this type
  PRIMARY KEY (report, position)
) WITHOUT ROWID;
CREATE INDEX pools_by_type ON pools (type, report) WHERE first = 1;

-- Reports that were added or deleted since the full-text index was last updated.
CREATE TABLE unsearched (report INTEGER PRIMARY KEY);

CREATE TABLE steps (
  report INTEGER NOT NULL,
  position INTEGER NOT NULL,
  name TEXT NOT NULL,
  duration INTEGER NOT NULL,           -- milliseconds
  PRIMARY KEY (report, position)
) WITHOUT ROWID;
)";

void createTables(Database& database) {
  database.run("BEGIN IMMEDIATE");
  database.run(kTables);
  database.run(kSearchTable);
  database.run("PRAGMA application_id = " + std::to_string(kApplicationId));
  database.run("PRAGMA user_version = " + std::to_string(kVersion));
  database.run("COMMIT");
}

void check(Database& database) {
  if (database.number("PRAGMA application_id") != kApplicationId) {
    throw StoreFault(database.file() + ": not a database of this program");
  }
  const std::int64_t version = database.number("PRAGMA user_version");
  if (version > kVersion) {
    throw StoreFault(database.file() + ": written by a newer ztinbox (version " +
                     std::to_string(version) + " of the tables; this program knows version " +
                     std::to_string(kVersion) + ")");
  }
  for (const char* table : {"reports", "bodies", "pools", "steps", "unsearched", "search"}) {
    database.run("SELECT 1 FROM " + std::string(table) + " LIMIT 1");
  }
}

}  // namespace

void Database::Close::operator()(sqlite3* handle) const { sqlite3_close_v2(handle); }

Database::Database(std::string file, Access access) : _file(std::move(file)) {
  const bool writes = access == Access::kWrite;
  if (writes) createForOwnerOnly(_file);
  sqlite3* handle = nullptr;
  const int flags = (writes ? SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE : SQLITE_OPEN_READONLY) |
                    SQLITE_OPEN_NOMUTEX;
  const int result = sqlite3_open_v2(_file.c_str(), &handle, flags, nullptr);
  _handle.reset(handle);
  if (handle == nullptr) throw std::bad_alloc();
  if (result != SQLITE_OK) fail();
  sqlite3_busy_timeout(handle, kLockPatienceInMilliseconds);
}

void Database::run(const std::string& statements) {
  if (sqlite3_exec(handle(), statements.c_str(), nullptr, nullptr, nullptr) != SQLITE_OK) fail();
}

std::int64_t Database::number(std::string_view query) {
  Statement statement(*this, query);
  return statement.next() ? statement.integer(0) : 0;
}

std::int64_t Database::changes() const { return sqlite3_changes64(handle()); }
std::uint64_t Database::lastInserted() const {
  return static_cast<std::uint64_t>(sqlite3_last_insert_rowid(handle()));
}
bool Database::isInTransaction() const { return sqlite3_get_autocommit(handle()) == 0; }

void Database::fail() const { throw StoreFault(_file + ": " + sqlite3_errmsg(handle())); }

void Statement::Finish::operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }

Statement::Statement(Database& database, std::string_view sql) : _database(database) {
  sqlite3_stmt* statement = nullptr;
  const int result = sqlite3_prepare_v2(database.handle(), sql.data(), static_cast<int>(sql.size()),
                                        &statement, nullptr);
  _statement.reset(statement);
  if (result != SQLITE_OK) database.fail();
}

void Statement::reset() {
  // This returns the error of the last step again, which has already been thrown.
  sqlite3_reset(_statement.get());
  sqlite3_clear_bindings(_statement.get());
}

void Statement::put(int index, std::int64_t value) {
  if (sqlite3_bind_int64(_statement.get(), index, value) != SQLITE_OK) _database.fail();
}

void Statement::put(int index, std::string_view text) {
  // A view without memory would be bound as NULL.
  const char* bytes = text.data() != nullptr ? text.data() : "";
  if (sqlite3_bind_text64(_statement.get(), index, bytes, text.size(), SQLITE_STATIC,
                          SQLITE_UTF8) != SQLITE_OK) {
    _database.fail();
  }
}

void Statement::put(int index, std::nullptr_t) {
  if (sqlite3_bind_null(_statement.get(), index) != SQLITE_OK) _database.fail();
}

bool Statement::next() {
  const int result = sqlite3_step(_statement.get());
  if (result == SQLITE_ROW) return true;
  if (result != SQLITE_DONE) _database.fail();
  return false;
}

bool Statement::isNull(int column) const {
  return sqlite3_column_type(_statement.get(), column) == SQLITE_NULL;
}

std::int64_t Statement::integer(int column) const {
  return sqlite3_column_int64(_statement.get(), column);
}

std::string_view Statement::view(int column) const {
  const void* bytes = sqlite3_column_blob(_statement.get(), column);
  if (bytes == nullptr) return {};
  const int size = sqlite3_column_bytes(_statement.get(), column);
  return {static_cast<const char*>(bytes), static_cast<std::size_t>(size)};
}

std::optional<std::string> Statement::optionalText(int column) const {
  if (isNull(column)) return std::nullopt;
  return text(column);
}

std::optional<std::int64_t> Statement::optionalInteger(int column) const {
  if (isNull(column)) return std::nullopt;
  return integer(column);
}

void prepareForWriting(Database& database) {
  // Checked first, because a file of another program must not be changed.
  if (database.number("SELECT count(*) FROM sqlite_schema") > 0) check(database);
  database.run(kWriting);
  if (database.number("SELECT count(*) FROM sqlite_schema") == 0) createTables(database);
}

std::unique_ptr<Database> openForReading(const std::string& file) {
  auto database = std::make_unique<Database>(file, Database::Access::kRead);
  database->run(kReading);
  return database;
}

void deleteEverything(Database& database) {
  database.run(
      "DELETE FROM reports; DELETE FROM bodies; DELETE FROM pools; DELETE FROM steps;"
      "DELETE FROM unsearched;"
      "DROP TABLE search;");
  database.run(kSearchTable);
}

void saveNow(Database& database) { database.run("PRAGMA wal_checkpoint(PASSIVE)"); }

void shrink(Database& database) {
  try {
    database.run("VACUUM; PRAGMA wal_checkpoint(TRUNCATE);");
  } catch (const StoreFault&) {
    // Later reports will use the free space.
  }
}

}  // namespace zt::inbox
