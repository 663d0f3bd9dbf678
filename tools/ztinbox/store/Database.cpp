#include "tools/ztinbox/store/Database.h"

#include <fcntl.h>
#include <sqlite3.h>
#include <unistd.h>

#include <utility>

#include "tools/ztinbox/http/Fd.h"

namespace zt::inbox {

namespace {

/// Nobody else writes to the file, but a person may look at it with another program.
constexpr int kPatienceInMilliseconds = 10'000;
constexpr mode_t kOwnerOnly = 0600;

/// SQLite gives its other files the mode of the database file.
void createForOwnerOnly(const std::string& file) {
  const Fd created(::open(file.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, kOwnerOnly));
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
  sqlite3_busy_timeout(handle, kPatienceInMilliseconds);
}

void Database::run(const std::string& statements) {
  if (sqlite3_exec(handle(), statements.c_str(), nullptr, nullptr, nullptr) != SQLITE_OK) fail();
}

std::int64_t Database::number(std::string_view query) {
  Statement statement(*this, query);
  return statement.next() ? statement.integer(0) : 0;
}

std::int64_t Database::changes() const { return sqlite3_changes64(handle()); }
bool Database::isInTransaction() const { return sqlite3_get_autocommit(handle()) == 0; }

void Database::fail() const { throw DatabaseFault(_file + ": " + sqlite3_errmsg(handle())); }

void Statement::Finish::operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }

Statement::Statement(Database& database, std::string_view sql) : _database(database) {
  sqlite3_stmt* statement = nullptr;
  const int result = sqlite3_prepare_v2(database.handle(), sql.data(), static_cast<int>(sql.size()),
                                        &statement, nullptr);
  _statement.reset(statement);
  if (result != SQLITE_OK) database.fail();
}

void Statement::reset() {
  // Repeats the error of the last step, which was thrown then.
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

}  // namespace zt::inbox
