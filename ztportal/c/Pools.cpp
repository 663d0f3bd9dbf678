// SPDX-License-Identifier: Apache-2.0
#include <limits>
#include <new>
#include <variant>
#include <vector>

#include "ztportal/c/Call.h"
#include "ztportal/pools/FieldTable.h"
#include "ztportal/portal/NewPools.h"

namespace zt::c {

using Texts = std::vector<ZtString>;

struct NamedNumber {
  std::uint64_t* number;
  const Enumeration* names;
};

struct Records {
  void* list;
  zt_pool (*add)(zt_report* report, void* list, const ZtDate& timeStamp);
};

/// Where the value of a key is; for a generic field, where it is added.
struct Value {
  std::variant<std::monostate, ZtAtomic<ZtString>*, ZtAtomic<ZtDate>*, std::int32_t*, std::int64_t*,
               ZtBOOL*, NamedNumber, ZtAtomic<std::shared_ptr<const Texts>>*, Records,
               ZtPortalPoolArray*>
      place;
};

namespace {

template <class Object>
Value find(void* object, const char* key);

ZtPortalPool* poolOf(ZtPortalPool* pool) { return pool; }
ZtPortalPool* poolOf(void* /*record*/) { return nullptr; }

template <class Object>
zt_pool handleOf(zt_report* report, const std::shared_ptr<Object>& object) {
  if (object == nullptr) throw std::bad_alloc();
  return {report, object.get(), find<Object>, poolOf(object.get())};
}

template <class Record>
zt_pool addRecord(zt_report* report, void* list, const ZtDate& timeStamp) {
  auto& records = *static_cast<std::vector<std::shared_ptr<Record>>*>(list);
  return handleOf(report, records.emplace_back(newRecord<Record>(timeStamp)));
}

template <class Row, class Member>
Value valueOf(const Row& row, Member& member) {
  if constexpr (requires { typename RecordOf<typename Row::Member>::Type; }) {
    return {Records{&listOf(member), addRecord<typename RecordOf<typename Row::Member>::Type>}};
  } else if constexpr (std::is_same_v<Member, std::uint64_t>) {
    return {NamedNumber{&member, row.enumeration}};
  } else {
    return {&member};
  }
}

/// Throws `Failure` if the table of the class has no such key.
template <class Object>
Value find(void* object, const char* key) {
  const std::string_view name = &required(key, "key");
  Value found;
  eachField<Object>([&](const auto& row) {
    if constexpr (requires { row.key; }) {
      if (row.key == name) found = valueOf(row, static_cast<Object*>(object)->*row.member);
    }
  });
  if (found.place.index() == 0) fail(ZT_UNKNOWN_KEY, "no such key: \"", name, "\"");
  return found;
}

template <>
Value find<ZtPortalPoolArray>(void* object, const char* /*key*/) {
  return {static_cast<ZtPortalPoolArray*>(object)};
}

template <class... Cases>
struct Overloaded : Cases... {
  using Cases::operator()...;
};

/// Calls the one of `cases` that takes the place of the value.
template <class... Cases>
zt_status withValue(zt_pool* pool, const char* key, Cases... cases) {
  return call([&] {
    const Value value = required(pool, "pool").find(pool->object, key);
    std::visit(Overloaded{cases...,
                          [key](auto) {
                            fail(ZT_WRONG_TYPE, "\"", ZtString(key).printed(),
                                 "\" has another type");
                          }},
               value.place);
  });
}

template <class Integer>
Integer within(std::int64_t value, const char* key,
               std::int64_t smallest = std::numeric_limits<Integer>::min(),
               std::int64_t largest = std::numeric_limits<Integer>::max()) {
  if (value >= smallest && value <= largest) return static_cast<Integer>(value);
  fail(ZT_OUT_OF_RANGE, "\"", ZtString(key).printed(), "\" cannot be ", std::to_string(value));
}

std::uint64_t numberOf(const Enumeration& enumeration, std::string_view name, const char* key) {
  for (std::uint64_t number = 0; number < enumeration.count; ++number) {
    if (!name.empty() && enumeration.nameOf(number) == name) return number;
  }
  fail(ZT_OUT_OF_RANGE, "\"", key, "\" has no ", enumeration.name, " \"", name, "\"");
}

zt_status setString(zt_pool* pool, const char* key, const char* value, std::size_t length) {
  const auto text = [value, length]() -> ZtString {
    if (value != nullptr) return std::string_view(value, length);
    if (length != 0) fail(ZT_BAD_ARGUMENT, "the value is NULL, but has a length");
    return nullptr;
  };
  return withValue(
      pool, key, [&](ZtAtomic<ZtString>* string) { string->store(text()); },
      [&](NamedNumber member) {
        *member.number = numberOf(*member.names, {&required(value, "value"), length}, key);
      },
      [&](ZtAtomic<std::shared_ptr<const Texts>>* member) {
        required(value, "value");
        const std::shared_ptr<const Texts> before = member->load();
        Texts texts = before != nullptr ? *before : Texts();
        texts.push_back(text());
        member->store(std::make_shared<const Texts>(std::move(texts)));
      },
      [&](ZtPortalPoolArray* fields) { fields->addString(key, text()); });
}

ZtDate dateOf(std::int64_t milliseconds) {
  return milliseconds == ZT_NOW ? ZtDate::now() : ZtDate::fromMilliseconds(milliseconds);
}

/// Sets `handle` to a new one for what `add` adds. The handle may be null.
template <class Add>
void addWithHandle(zt_report& report, zt_pool** handle, Add add) {
  // The last one may not be in use: it is created before anything is added, which may fail, too.
  if (report.pools.empty() || report.pools.back().object != nullptr) report.pools.emplace_back();
  const zt_pool added = add();
  if (handle == nullptr) return;
  report.pools.back() = added;
  *handle = &report.pools.back();
}

}  // namespace

zt_pool* handleOfExecution(zt_report& report) {
  zt_pool* handle = nullptr;
  addWithHandle(report, &handle, [&] { return handleOf(&report, report.run->poolExecution()); });
  return handle;
}

}  // namespace zt::c

using zt::c::addWithHandle;
using zt::c::call;
using zt::c::handleOf;
using zt::c::required;
using zt::c::withValue;

zt_status zt_report_add_pool(zt_report* report, const char* kind, int64_t timestamp,
                             zt_pool** pool) {
  return call([&] {
    if (pool != nullptr) *pool = nullptr;
    zt_report& owner = required(report, "report");
    const std::string_view name = &required(kind, "kind");
    bool isKnown = false;
    zt::eachPoolClass([&]<class Pool> {
      if (zt::Fields<Pool>::kKind != name) return;
      isKnown = true;
      addWithHandle(owner, pool, [&] {
        return handleOf(report, zt::addPoolOf<Pool>(*owner.document, zt::c::dateOf(timestamp)));
      });
    });
    if (!isKnown) zt::c::fail(ZT_UNKNOWN_KEY, "no such kind of pool: \"", name, "\"");
  });
}

zt_status zt_report_add_inventory(zt_report* report, int64_t timestamp, zt_pool** pool) {
  return call([&] {
    if (pool != nullptr) *pool = nullptr;
    addWithHandle(required(report, "report"), pool, [&] {
      return handleOf(report, report->document->addPoolComputerSystemWithAutoCheck(
                                  zt::c::dateOf(timestamp), true));
    });
  });
}

zt_status zt_pool_add_record(zt_pool* pool, const char* key, int64_t timestamp, zt_pool** record) {
  if (record != nullptr) *record = nullptr;
  return withValue(
      pool, key,
      [&](zt::c::Records records) {
        addWithHandle(*pool->report, record, [&] {
          return records.add(pool->report, records.list, zt::c::dateOf(timestamp));
        });
      },
      [&](ZtPortalPoolArray* fields) {
        addWithHandle(*pool->report, record,
                      [&] { return handleOf(pool->report, fields->addArray(key)); });
      });
}

zt_status zt_pool_fields(zt_pool* pool, zt_pool** fields) {
  return call([&] {
    required(fields, "fields") = nullptr;
    ZtPortalPool* const owner = required(pool, "pool").pool;
    if (owner == nullptr) zt::c::fail(ZT_WRONG_TYPE, "only a pool has fields");
    if (pool->fields == nullptr) {
      addWithHandle(*pool->report, &pool->fields,
                    [&] { return handleOf(pool->report, owner->fields()); });
    }
    *fields = pool->fields;
  });
}

zt_status zt_pool_set_string(zt_pool* pool, const char* key, const char* value) {
  return zt::c::setString(pool, key, value, value == nullptr ? 0 : std::strlen(value));
}

zt_status zt_pool_set_string_n(zt_pool* pool, const char* key, const char* value, size_t length) {
  return zt::c::setString(pool, key, value, length);
}

zt_status zt_pool_set_integer(zt_pool* pool, const char* key, int64_t value) {
  using zt::c::within;
  return withValue(
      pool, key, [&](std::int32_t* number) { *number = within<std::int32_t>(value, key); },
      [&](std::int64_t* number) { *number = value; },
      [&](ZtBOOL* byte) {
        *byte = static_cast<ZtBOOL>(within<std::int16_t>(value, key, -128, 255));
      },
      [&](zt::c::NamedNumber member) {
        *member.number = static_cast<std::uint64_t>(within<std::int64_t>(value, key, 0));
      },
      [&](ZtPortalPoolArray* fields) {
        fields->addInteger(key, within<std::int32_t>(value, key));
      });
}

zt_status zt_pool_set_float(zt_pool* pool, const char* key, float value) {
  return withValue(pool, key, [&](ZtPortalPoolArray* fields) { fields->addFloat(key, value); });
}

zt_status zt_pool_set_boolean(zt_pool* pool, const char* key, bool value) {
  return withValue(
      pool, key, [value](ZtBOOL* byte) { *byte = value ? 1 : 0; },
      [&](ZtPortalPoolArray* fields) { fields->addBOOL(key, value ? 1 : 0); });
}

zt_status zt_pool_set_date(zt_pool* pool, const char* key, int64_t value) {
  return withValue(pool, key, [&](ZtAtomic<ZtDate>* date) { date->store(zt::c::dateOf(value)); });
}

zt_status zt_pool_set_null(zt_pool* pool, const char* key) {
  return withValue(
      pool, key, [](ZtAtomic<ZtString>* string) { string->store(nullptr); },
      [](ZtAtomic<ZtDate>* date) { date->store(ZtDate()); },
      [key](ZtPortalPoolArray* fields) {
        fields->mutableFields()->push_back(ZtPortalPoolField::initWithName(key));
      });
}

zt_status zt_pool_get_string(zt_pool* pool, const char* key, const char** value, size_t* length) {
  const auto give = [&](const ZtString& text) {
    required(value, "value") = zt::c::keep(pool->text, text);
    if (length != nullptr) *length = pool->text.size();
  };
  return withValue(
      pool, key, [&](ZtAtomic<ZtString>* string) { give(string->load()); },
      [&](zt::c::NamedNumber member) { give(member.names->nameOf(*member.number)); });
}

zt_status zt_pool_get_integer(zt_pool* pool, const char* key, int64_t* value) {
  const auto give = [value](auto number) {
    required(value, "value") = static_cast<std::int64_t>(number);
  };
  return withValue(
      pool, key, [&](std::int32_t* number) { give(*number); },
      [&](std::int64_t* number) { give(*number); }, [&](ZtBOOL* byte) { give(*byte); },
      [&](ZtAtomic<ZtDate>* date) { give(date->load().milliseconds()); },
      [&](zt::c::NamedNumber member) { give(*member.number); });
}
