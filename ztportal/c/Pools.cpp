// SPDX-License-Identifier: Apache-2.0
#include <concepts>
#include <limits>
#include <new>

#include "ztportal/c/Call.h"

namespace zt::c {

namespace {

using Texts = std::vector<ZtString>;

template <class... Cases>
struct Overloaded : Cases... {
  using Cases::operator()...;
};
template <class... Cases>
Overloaded(Cases...) -> Overloaded<Cases...>;

/// Calls the one of `cases` that takes the place of the value, or an array of generic fields.
template <class... Cases>
zt_status withValue(zt_pool* pool, const char* key, Cases... cases) {
  return call([&] {
    const Overloaded take{
        cases...,
        [key](auto) { fail(ZT_WRONG_TYPE, "\"", ZtString(key).printed(), "\" has another type"); }};
    if (required(pool, "pool").array != nullptr) return take(pool->array);
    const KeyedValue found = pool->keyed.find(pool->keyed.object, &required(key, "key"));
    if (found.index() == 0) fail(ZT_UNKNOWN_KEY, "no such key: \"", key, "\"");
    std::visit(take, found);
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
      [&](StringList* member) {
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
  // The last one may be unused: it is created before `add` changes the report, since that may fail.
  if (report.pools.empty() || report.pools.back().report != nullptr) report.pools.emplace_back();
  zt_pool& spare = report.pools.back();
  spare = {};
  add(spare);
  if (handle == nullptr) return;
  spare.report = &report;
  *handle = &spare;
}

template <class Pool>
void use(zt_pool& handle, const std::shared_ptr<Pool>& pool) {
  if (pool == nullptr) throw std::bad_alloc();
  handle.keyed = keyed(*pool);
  handle.pool = pool.get();
}

ZtReport& runOf(zt_report* report) {
  if (required(report, "report").run == nullptr) fail(ZT_WRONG_TYPE, "the report has no run");
  return *report->run;
}

}  // namespace

}  // namespace zt::c

using zt::c::addWithHandle;
using zt::c::call;
using zt::c::dateOf;
using zt::c::required;
using zt::c::requiredText;
using zt::c::runOf;
using zt::c::use;
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
      addWithHandle(owner, pool, [&](zt_pool& added) {
        use(added, zt::addPoolOf<Pool>(*owner.document, dateOf(timestamp)));
      });
    });
    if (!isKnown) zt::c::fail(ZT_UNKNOWN_KEY, "no such kind of pool: \"", name, "\"");
  });
}

zt_status zt_report_add_inventory(zt_report* report, int64_t timestamp, zt_pool** pool) {
  return call([&] {
    if (pool != nullptr) *pool = nullptr;
    addWithHandle(required(report, "report"), pool, [&](zt_pool& added) {
      const ZtDate date = dateOf(timestamp);
      use(added, report->document->addPoolComputerSystemWithAutoCheck(date, true));
    });
  });
}

zt_status zt_pool_add_record(zt_pool* pool, const char* key, int64_t timestamp, zt_pool** record) {
  if (record != nullptr) *record = nullptr;
  const auto add = [&](auto fill) { addWithHandle(*pool->report, record, fill); };
  return withValue(
      pool, key,
      [&](zt::RecordList records) {
        add([&](zt_pool& added) { added.keyed = records.add(records.list, dateOf(timestamp)); });
      },
      [&](ZtPortalPoolArray* fields) {
        add([&](zt_pool& added) { added.array = fields->addArray(key).get(); });
      });
}

zt_status zt_pool_fields(zt_pool* pool, zt_pool** fields) {
  return call([&] {
    required(fields, "fields") = nullptr;
    ZtPortalPool* const owner = required(pool, "pool").pool;
    if (owner == nullptr) zt::c::fail(ZT_WRONG_TYPE, "only a pool has fields");
    if (pool->fields == nullptr) {
      addWithHandle(*pool->report, &pool->fields,
                    [&](zt_pool& added) { added.array = owner->fields().get(); });
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
      [&](zt::NamedNumber member) {
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
  return withValue(pool, key, [&](ZtAtomic<ZtDate>* date) { date->store(dateOf(value)); });
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
      [&](zt::NamedNumber member) { give(member.names->nameOf(*member.number)); });
}

zt_status zt_pool_get_integer(zt_pool* pool, const char* key, int64_t* value) {
  const auto give = [value](std::int64_t number) { required(value, "value") = number; };
  return withValue(
      pool, key, [give](std::integral auto* number) { give(*number); },
      [give](ZtAtomic<ZtDate>* date) { give(date->load().milliseconds()); },
      [give](zt::NamedNumber member) { give(static_cast<std::int64_t>(*member.number)); });
}

// Runs.

zt_status zt_run_start(zt_report* report, const char* start_point, zt_pool** execution) {
  return call([&] {
    if (execution != nullptr) *execution = nullptr;
    runOf(report).startReport(start_point);
    if (report->execution == nullptr) {
      addWithHandle(*report, &report->execution,
                    [&](zt_pool& added) { use(added, report->run->poolExecution()); });
    }
    if (execution != nullptr) *execution = report->execution;
  });
}

zt_status zt_run_stop(zt_report* report, const char* end_point) {
  return call([&] { runOf(report).stopReport(end_point); });
}

zt_status zt_run_set_string(zt_report* report, const char* name, const char* value) {
  return call([&] {
    runOf(report).installDataString()->insert_or_assign(requiredText(name, "name"), value);
  });
}

zt_status zt_run_set_boolean(zt_report* report, const char* name, bool value) {
  return call([&] {
    const char* const text = value ? "yes" : "no";
    runOf(report).installDataBOOL()->insert_or_assign(requiredText(name, "name"), text);
  });
}
