// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "tools/ztinbox/Fault.h"

struct sqlite3;
struct sqlite3_stmt;

namespace zt::inbox {

/// One connection to an SQLite database file. Used by one thread at a time. Every operation can
/// throw StoreFault.
class Database {
 public:
  enum class Access { kWrite, kRead };

  /// For writing, a missing file is created, readable by its owner only.
  Database(std::string file, Access access);

  /// Runs statements that return no rows, separated by semicolons.
  void run(const std::string& statements);
  /// The number that `query` returns.
  std::int64_t number(std::string_view query);

  /// How many rows the last statement inserted, changed or deleted.
  std::int64_t changes() const;
  /// The row ID of the last row that was inserted.
  std::uint64_t lastInserted() const;
  bool isInTransaction() const;

  const std::string& file() const { return _file; }
  sqlite3* handle() const { return _handle.get(); }
  [[noreturn]] void fail() const;

 private:
  struct Close {
    void operator()(sqlite3* handle) const;
  };

  std::string _file;
  std::unique_ptr<sqlite3, Close> _handle;
};

/// A compiled statement. The database must outlive it.
///
///     Statement insert(database, "INSERT INTO pools VALUES (?, ?)");
///     insert.run(number, "EXECUTION");
///
///     Statement select(database, "SELECT type FROM pools WHERE report = ?");
///     for (select.bind(number); select.next();) use(select.text(0));
class Statement {
 public:
  Statement(Database& database, std::string_view sql);

  /// Restarts the statement with these values for the question marks: integers, strings (which need
  /// not be UTF-8), optional values, nullptr. Strings are not copied: they must exist until the
  /// statement has run.
  template <class... Values>
  void bind(const Values&... values) {
    reset();
    int index = 0;
    (put(++index, values), ...);
  }
  void reset();
  void put(int index, std::int64_t value);
  void put(int index, std::integral auto value) { put(index, static_cast<std::int64_t>(value)); }
  void put(int index, std::string_view text);
  void put(int index, std::nullptr_t);
  template <class Value>
  void put(int index, const std::optional<Value>& value) {
    if (value) {
      put(index, *value);
    } else {
      put(index, nullptr);
    }
  }

  /// Moves to the next row; false if there is none.
  bool next();
  template <class... Values>
  void run(const Values&... values) {
    bind(values...);
    while (next()) {
    }
    reset();
  }

  // Columns of the current row, counted from 0. Views are valid until next() or reset() is called.

  bool isNull(int column) const;
  std::int64_t integer(int column) const;
  std::string_view view(int column) const;
  std::string text(int column) const { return std::string(view(column)); }
  std::optional<std::string> optionalText(int column) const;
  std::optional<std::int64_t> optionalInteger(int column) const;

 private:
  struct Finish {
    void operator()(sqlite3_stmt* statement) const;
  };

  const Database& _database;
  std::unique_ptr<sqlite3_stmt, Finish> _statement;
};

/// Configures the connection, and creates the tables of a new database or checks those of an
/// existing one. Throws StoreFault if the file is not a database, is damaged, belongs to another
/// program, or was written by a newer inbox.
void prepareForWriting(Database& database);

/// Opens an additional connection that only reads.
std::unique_ptr<Database> openForReading(const std::string& file);

/// Deletes all reports at once, which is faster than one by one.
void deleteEverything(Database& database);

/// Waits until everything that is committed is on the disk, where it also survives a power failure.
/// Must be called outside of a transaction.
void saveNow(Database& database);

/// Tries to release the free space of the file.
void shrink(Database& database);

}  // namespace zt::inbox
