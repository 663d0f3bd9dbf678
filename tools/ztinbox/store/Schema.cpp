#include "tools/ztinbox/store/Schema.h"

namespace zt::inbox {

namespace {

/// "ztin": the file is one of this program.
constexpr std::int64_t kApplicationId = 0x7a74696e;
constexpr std::int64_t kVersion = 1;

/// A commit is in the kernel's hands when it is done, so that no end of this program can undo it,
/// but not yet on the disk: waiting for that would cost half of the rate. saveNow() waits for it,
/// and so does SQLite itself about every eight megabytes.
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
  test INTEGER NOT NULL,               -- 1: came to the test address
  answer TEXT NOT NULL,                -- the word of --answer
  sender TEXT NOT NULL,                -- address and port
  size INTEGER NOT NULL,               -- bytes of the body
  read INTEGER NOT NULL DEFAULT 0,     -- 1: a person marked it as read
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
  head TEXT NOT NULL,                  -- request line and headers as they came
  body BLOB NOT NULL                   -- the bytes as they came, an LZ4 block of reports.size
);

CREATE TABLE pools (
  report INTEGER NOT NULL,
  position INTEGER NOT NULL,
  type TEXT NOT NULL,
  first INTEGER NOT NULL,              -- 1: no pool of this type before it
  PRIMARY KEY (report, position)
) WITHOUT ROWID;
CREATE INDEX pools_by_type ON pools (type, report) WHERE first = 1;

-- Reports that came or went since the full-text index was brought up to date.
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
  database.run(std::string(kTables) + kSearchTable);
  database.run("PRAGMA application_id = " + std::to_string(kApplicationId));
  database.run("PRAGMA user_version = " + std::to_string(kVersion));
  database.run("COMMIT");
}

void check(Database& database) {
  if (database.number("PRAGMA application_id") != kApplicationId) {
    throw DatabaseFault(database.file() + ": not a database of this program");
  }
  const std::int64_t version = database.number("PRAGMA user_version");
  if (version > kVersion) {
    throw DatabaseFault(database.file() + ": written by a newer ztinbox (version " +
                        std::to_string(version) + " of the tables, this one knows " +
                        std::to_string(kVersion) + ")");
  }
  for (const char* table : {"reports", "bodies", "pools", "steps", "unsearched", "search"}) {
    database.run("SELECT 1 FROM " + std::string(table) + " LIMIT 1");
  }
}

}  // namespace

void prepareForWriting(Database& database) {
  // Nothing of a file is changed before it is known to be one of this program.
  if (database.number("SELECT count(*) FROM sqlite_schema") > 0) check(database);
  database.run(kWriting);
  if (database.number("SELECT count(*) FROM sqlite_schema") == 0) createTables(database);
}

void prepareForReading(Database& database) { database.run(kReading); }

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
  } catch (const DatabaseFault&) {
    // The room is used for the reports to come.
  }
}

}  // namespace zt::inbox
