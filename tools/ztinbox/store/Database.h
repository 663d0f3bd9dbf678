#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "tools/ztinbox/faults/Fault.h"

struct sqlite3;
struct sqlite3_stmt;

namespace zt::inbox {

/// The database file failed: it is damaged, the disk is full, it cannot be written. The text names
/// the file and the reason.
struct DatabaseFault : MachineFault {
  using MachineFault::MachineFault;
};

/// One connection to an SQLite database file. Used by one thread at a time. Every operation throws
/// DatabaseFault.
class Database {
 public:
  enum class Access { kWrite, kRead };

  /// For writing, a missing file is created, readable by its owner alone.
  Database(std::string file, Access access);

  /// Runs one statement or several, each ended by a semicolon, that give no rows.
  void run(const std::string& statements);
  /// The one number that `query` gives.
  std::int64_t number(std::string_view query);

  /// How many rows the last statement inserted, changed or deleted.
  std::int64_t changes() const;
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

/// A compiled statement of a database that outlives it.
///
///     Statement insert(database, "INSERT INTO pools VALUES (?, ?)");
///     insert.run(number, "EXECUTION");
///
///     Statement select(database, "SELECT type FROM pools WHERE report = ?");
///     for (select.bind(number); select.next();) use(select.text(0));
class Statement {
 public:
  Statement(Database& database, std::string_view sql);

  /// Starts over with these values for the question marks: integers, texts (bytes, which need not
  /// be UTF-8), optional texts, nullptr. Texts are not copied: they have to live until the
  /// statement has run.
  template <class... Values>
  void bind(const Values&... values) {
    reset();
    int index = 0;
    (put(++index, values), ...);
  }
  void reset();
  void put(int index, std::int64_t value);
  void put(int index, std::uint64_t value) { put(index, static_cast<std::int64_t>(value)); }
  void put(int index, int value) { put(index, std::int64_t{value}); }
  void put(int index, bool value) { put(index, std::int64_t{value}); }
  void put(int index, std::string_view text);
  void put(int index, const std::string& text) { put(index, std::string_view(text)); }
  void put(int index, const char* text) { put(index, std::string_view(text)); }
  void put(int index, std::nullptr_t);
  template <class Value>
  void put(int index, const std::optional<Value>& value) {
    if (value) {
      put(index, *value);
    } else {
      put(index, nullptr);
    }
  }

  /// Goes on to the next row; false when there is none.
  bool next();
  template <class... Values>
  void run(const Values&... values) {
    bind(values...);
    while (next()) {
    }
    reset();
  }

  // Columns of the row, counted from 0. Views are good until the next call of next() or reset().

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

}  // namespace zt::inbox
