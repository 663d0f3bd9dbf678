// SPDX-License-Identifier: Apache-2.0
#include "tools/ztinbox/store/postgres/Schema.h"

#include <pqxx/nontransaction>
#include <pqxx/transaction>

#include "tools/ztinbox/Fault.h"

namespace zt::inbox {

namespace {

/// "ztin"
constexpr const char* kLock = "SELECT pg_advisory_xact_lock(2054449518)";
constexpr int kSchemaVersion = 1;

// Texts of reports may have any bytes, so they are bytea. An index entry has at most some 2,700
// bytes, so the indices have the first 64 bytes of a value. Bodies are compressed already.
constexpr const char* kPostgresTables = R"(
CREATE EXTENSION IF NOT EXISTS unaccent SCHEMA public;
CREATE TEXT SEARCH CONFIGURATION words (COPY = pg_catalog.simple);
ALTER TEXT SEARCH CONFIGURATION words
  ALTER MAPPING FOR asciiword, word, numword, hword, hword_part, asciihword, hword_asciipart,
                    numhword, hword_numpart
  WITH public.unaccent, pg_catalog.simple;

-- One row. Every transaction that writes locks it, so that the numbers of reports are those of the
-- order in which they can be seen.
CREATE TABLE store (
  version integer NOT NULL,
  last bigint NOT NULL,                -- the highest number that a report ever had
  count bigint NOT NULL                -- of the reports
);

CREATE TABLE reports (
  number bigint PRIMARY KEY,
  received bigint NOT NULL,            -- milliseconds since 1970
  test boolean NOT NULL,               -- was posted to the test address
  answer text NOT NULL,                -- the word of --answer
  sender text NOT NULL,                -- address and port
  size bigint NOT NULL,                -- bytes of the body
  read boolean NOT NULL DEFAULT false, -- the user marked it as read
  report_id bytea,
  machine_id bytea,
  customer_id bytea,
  application_id bytea,
  application_version bytea,
  result text,                         -- of its run: succeeded, failed, cancelled
  duration bigint,                     -- of its run, milliseconds
  pools bytea[] NOT NULL,              -- their types
  pool_keys bytea[] NOT NULL,          -- the first 64 bytes of each
  step_names bytea[] NOT NULL,
  step_durations bigint[] NOT NULL,    -- milliseconds
  head bytea NOT NULL,                 -- request line and headers as received
  body bytea NOT NULL,                 -- the body as received, an LZ4 block of `size` bytes
  words tsvector                       -- null: not in the full-text index yet
);
ALTER TABLE reports ALTER body SET STORAGE EXTERNAL;
CREATE INDEX ON reports (substring(report_id, 1, 64), number) WHERE report_id <> '';
CREATE INDEX ON reports (substring(machine_id, 1, 64), number);
CREATE INDEX ON reports (substring(customer_id, 1, 64), number);
CREATE INDEX ON reports (substring(application_id, 1, 64), number);
CREATE INDEX ON reports USING gin (pool_keys);
CREATE INDEX ON reports USING gin (words);
CREATE INDEX ON reports (number) WHERE words IS NULL;
)";

}  // namespace

std::unique_ptr<pqxx::connection> connect(const std::string& options) {
  auto connection = std::make_unique<pqxx::connection>(options);
  pqxx::nontransaction setting(*connection);
  // Another inbox that hangs must not make the senders of all others wait.
  setting.exec(
      "SET search_path TO ztinbox, public; SET client_min_messages TO error;"
      "SET lock_timeout TO '1s'; SET idle_in_transaction_session_timeout TO '10s';");
  return connection;
}

void prepareTables(pqxx::connection& connection) {
  pqxx::work work(connection);
  work.exec(kLock);
  work.exec("CREATE SCHEMA IF NOT EXISTS ztinbox");
  if (work.exec1("SELECT to_regclass('ztinbox.store') IS NULL")[0].as<bool>()) {
    work.exec(kPostgresTables);
    work.exec("INSERT INTO store VALUES (" + pqxx::to_string(kSchemaVersion) + ", 0, 0)");
  }
  const int version = work.exec1("SELECT version FROM store")[0].as<int>();
  if (version > kSchemaVersion) {
    throw StoreFault("PostgreSQL: written by a newer ztinbox (version " + std::to_string(version) +
                     " of the tables; this program knows version " +
                     std::to_string(kSchemaVersion) + ")");
  }
  work.commit();
}

}  // namespace zt::inbox
