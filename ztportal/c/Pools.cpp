// SPDX-License-Identifier: Apache-2.0
#include <limits>
#include <memory>
#include <vector>

#include "ztportal/c/Call.h"
#include "ztportal/c/Tables.h"

namespace {

using zt::c::call;
using zt::c::fail;
using zt::c::required;
using zt::c::requiredText;
using zt::c::Row;
using zt::c::Table;
using zt::c::tableOfKind;
using zt::c::Type;
using Texts = std::vector<ZtString>;

/// A value of a pool: its row and its member.
class KeyedValue {
 public:
  KeyedValue(zt_pool* pool, const char* key)
      : _pool(&required(pool, "pool")), _row(&_pool->table->row(requiredText(key, "key"))) {}

  const Row& row() const { return *_row; }
  Type type() const { return _row->type; }
  void* object() const { return _pool->object; }

  template <class Member>
  Member& as() const {
    return *static_cast<Member*>(_row->memberOf(_pool->object));
  }

  [[noreturn]] void failType() const {
    fail(ZT_WRONG_TYPE, "\"", _row->key, "\" has another type");
  }
  std::int64_t within(std::int64_t value, std::int64_t smallest, std::int64_t largest) const {
    if (value >= smallest && value <= largest) return value;
    fail(ZT_OUT_OF_RANGE, "\"", _row->key, "\" cannot be ", std::to_string(value));
  }

 private:
  zt_pool* _pool;
  const Row* _row;
};

std::uint64_t numberOf(const KeyedValue& value, std::string_view name) {
  const zt::Enumeration& enumeration = *value.row().enumeration;
  for (std::uint64_t number = 0; number < enumeration.count; ++number) {
    if (!name.empty() && enumeration.nameOf(number) == name) return number;
  }
  fail(ZT_OUT_OF_RANGE, "\"", value.row().key, "\" has no ", enumeration.name, " \"", name, "\"");
}

void setString(const KeyedValue& value, ZtString text) {
  if (value.type() == Type::String) {
    value.as<ZtAtomic<ZtString>>().store(std::move(text));
  } else if (value.type() == Type::Enumeration) {
    if (text.isNull()) fail(ZT_BAD_ARGUMENT, "value is NULL");
    value.as<std::uint64_t>() = numberOf(value, text.view());
  } else {
    value.failType();
  }
}

void setInteger(const KeyedValue& value, std::int64_t number) {
  using Int32 = std::numeric_limits<std::int32_t>;
  constexpr std::int64_t kLargest = std::numeric_limits<std::int64_t>::max();
  switch (value.type()) {
    case Type::Integer:
      value.as<std::int32_t>() =
          static_cast<std::int32_t>(value.within(number, Int32::min(), Int32::max()));
      break;
    case Type::LongInteger:
      value.as<std::int64_t>() = number;
      break;
    case Type::Boolean:
      value.as<ZtBOOL>() =
          static_cast<ZtBOOL>(static_cast<unsigned char>(value.within(number, -128, 255)));
      break;
    case Type::Enumeration:
      value.as<std::uint64_t>() = static_cast<std::uint64_t>(value.within(number, 0, kLargest));
      break;
    default:
      value.failType();
  }
}

std::int64_t integerOf(const KeyedValue& value) {
  switch (value.type()) {
    case Type::Integer:
      return value.as<std::int32_t>();
    case Type::LongInteger:
      return value.as<std::int64_t>();
    case Type::Boolean:
      return value.as<ZtBOOL>();
    case Type::Enumeration:
      return static_cast<std::int64_t>(value.as<std::uint64_t>());
    default:
      value.failType();
  }
}

ZtString stringOf(const KeyedValue& value) {
  if (value.type() == Type::String) return value.as<ZtAtomic<ZtString>>().load();
  if (value.type() != Type::Enumeration) value.failType();
  return value.row().enumeration->nameOf(value.as<std::uint64_t>());
}

void appendString(const KeyedValue& value, const ZtString& text) {
  if (value.type() != Type::Strings) value.failType();
  if (text.isNull()) fail(ZT_BAD_ARGUMENT, "value is NULL");
  auto& member = value.as<ZtAtomic<std::shared_ptr<const Texts>>>();
  const std::shared_ptr<const Texts> before = member.load();
  Texts strings = before != nullptr ? *before : Texts();
  strings.push_back(text);
  member.store(std::make_shared<const Texts>(std::move(strings)));
}

/// Adds what `add` makes; `handle` is set to a new handle for it, unless it is null.
template <class Add>
void addWithHandle(zt_report& report, zt_pool** handle, Add add) {
  zt_pool& made = report.pools.emplace_back();
  made.report = &report;
  try {
    add(made);
  } catch (...) {
    report.pools.pop_back();
    throw;
  }
  if (handle != nullptr) {
    *handle = &made;
  } else {
    report.pools.pop_back();
  }
}

// A field's array is its own handle: nothing ever removes it from its pool.
zt_array* handleOf(ZtPortalPoolArray* array) { return reinterpret_cast<zt_array*>(array); }
ZtPortalPoolArray& arrayOf(zt_array* array) {
  return *reinterpret_cast<ZtPortalPoolArray*>(&required(array, "array"));
}

}  // namespace

zt_status zt_report_add_pool(zt_report* report, const char* kind, int64_t timestamp,
                             zt_pool** pool) {
  return call([&] {
    if (pool != nullptr) *pool = nullptr;
    zt_report& owner = required(report, "report");
    const Table& table = tableOfKind(requiredText(kind, "kind"));
    addWithHandle(owner, pool, [&](zt_pool& made) {
      const zt::c::AddedPool added = table.add(*owner.document, zt::c::dateOf(timestamp));
      made.table = &table;
      made.pool = added.pool;
      made.object = added.object;
    });
  });
}

zt_status zt_report_add_inventory(zt_report* report, int64_t timestamp, zt_pool** pool) {
  return call([&] {
    if (pool != nullptr) *pool = nullptr;
    zt_report& owner = required(report, "report");
    addWithHandle(owner, pool, [&](zt_pool& made) {
      const auto added =
          owner.document->addPoolComputerSystemWithAutoCheck(zt::c::dateOf(timestamp), true);
      if (added == nullptr) throw std::bad_alloc();
      made.table = &tableOfKind(zt::Fields<ZtPortalPoolComputerSystem>::kKind);
      made.pool = added.get();
      made.object = added.get();
    });
  });
}

zt_status zt_pool_set_string(zt_pool* pool, const char* key, const char* value) {
  return call([&] { setString(KeyedValue(pool, key), value); });
}

zt_status zt_pool_set_string_n(zt_pool* pool, const char* key, const char* value, size_t length) {
  return call([&] { setString(KeyedValue(pool, key), zt::c::textOf(value, length)); });
}

zt_status zt_pool_set_integer(zt_pool* pool, const char* key, int64_t value) {
  return call([&] { setInteger(KeyedValue(pool, key), value); });
}

zt_status zt_pool_set_boolean(zt_pool* pool, const char* key, bool value) {
  return call([&] {
    const KeyedValue member(pool, key);
    if (member.type() != Type::Boolean) member.failType();
    member.as<ZtBOOL>() = value ? 1 : 0;
  });
}

zt_status zt_pool_set_date(zt_pool* pool, const char* key, int64_t value) {
  return call([&] {
    const KeyedValue member(pool, key);
    if (member.type() != Type::Date) member.failType();
    member.as<ZtAtomic<ZtDate>>().store(zt::c::dateOf(value));
  });
}

zt_status zt_pool_set_null(zt_pool* pool, const char* key) {
  return call([&] {
    const KeyedValue member(pool, key);
    if (member.type() == Type::String) {
      member.as<ZtAtomic<ZtString>>().store(nullptr);
    } else if (member.type() == Type::Date) {
      member.as<ZtAtomic<ZtDate>>().store(ZtDate());
    } else {
      member.failType();
    }
  });
}

zt_status zt_pool_append_string(zt_pool* pool, const char* key, const char* value) {
  return call([&] { appendString(KeyedValue(pool, key), value); });
}

zt_status zt_pool_append_string_n(zt_pool* pool, const char* key, const char* value,
                                  size_t length) {
  return call([&] { appendString(KeyedValue(pool, key), zt::c::textOf(value, length)); });
}

zt_status zt_pool_get_string(zt_pool* pool, const char* key, const char** value, size_t* length) {
  return call([&] {
    const ZtString text = stringOf(KeyedValue(pool, key));
    required(value, "value");
    pool->text = text.view();
    *value = text.isNull() ? nullptr : pool->text.c_str();
    if (length != nullptr) *length = pool->text.size();
  });
}

zt_status zt_pool_get_integer(zt_pool* pool, const char* key, int64_t* value) {
  return call([&] {
    const std::int64_t number = integerOf(KeyedValue(pool, key));
    required(value, "value") = number;
  });
}

zt_status zt_pool_get_date(zt_pool* pool, const char* key, int64_t* value) {
  return call([&] {
    const KeyedValue member(pool, key);
    if (member.type() != Type::Date) member.failType();
    required(value, "value") = member.as<ZtAtomic<ZtDate>>().load().milliseconds();
  });
}

zt_status zt_pool_add_record(zt_pool* pool, const char* key, int64_t timestamp, zt_pool** record) {
  return call([&] {
    if (record != nullptr) *record = nullptr;
    const KeyedValue list(pool, key);
    if (list.type() != Type::Records) list.failType();
    addWithHandle(*pool->report, record, [&](zt_pool& made) {
      made.table = list.row().records;
      made.object = list.row().addRecord(list.object(), zt::c::dateOf(timestamp));
    });
  });
}

zt_status zt_pool_fields(zt_pool* pool, zt_array** fields) {
  return call([&] {
    required(fields, "fields") = nullptr;
    ZtPortalPool* const owner = required(pool, "pool").pool;
    if (owner == nullptr) fail(ZT_WRONG_TYPE, "a record has no fields");
    *fields = handleOf(owner->fields().get());
  });
}

zt_status zt_array_add_string(zt_array* array, const char* name, const char* value) {
  return call([&] { arrayOf(array).addString(name, value); });
}

zt_status zt_array_add_string_n(zt_array* array, const char* name, const char* value,
                                size_t length) {
  return call([&] { arrayOf(array).addString(name, zt::c::textOf(value, length)); });
}

zt_status zt_array_add_integer(zt_array* array, const char* name, int32_t value) {
  return call([&] { arrayOf(array).addInteger(name, value); });
}

zt_status zt_array_add_float(zt_array* array, const char* name, float value) {
  return call([&] { arrayOf(array).addFloat(name, value); });
}

zt_status zt_array_add_boolean(zt_array* array, const char* name, bool value) {
  return call([&] { arrayOf(array).addBOOL(name, value ? 1 : 0); });
}

zt_status zt_array_add_none(zt_array* array, const char* name) {
  return call(
      [&] { arrayOf(array).mutableFields()->push_back(ZtPortalPoolField::initWithName(name)); });
}

zt_status zt_array_add_array(zt_array* array, const char* name, zt_array** child) {
  return call([&] {
    required(child, "child") = nullptr;
    *child = handleOf(arrayOf(array).addArray(name).get());
  });
}
