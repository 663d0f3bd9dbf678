// SPDX-License-Identifier: Apache-2.0
#include "ztportal/c/Tables.h"

#include <array>
#include <cstddef>
#include <new>
#include <tuple>
#include <type_traits>
#include <utility>

#include "ztportal/c/Call.h"
#include "ztportal/portal/NewPools.h"

namespace zt::c {

namespace {

template <class Member>
constexpr Type typeOf() {
  if constexpr (std::is_same_v<Member, ZtAtomic<ZtString>>) {
    return Type::String;
  } else if constexpr (std::is_same_v<Member, ZtAtomic<ZtDate>>) {
    return Type::Date;
  } else if constexpr (std::is_same_v<Member, std::int32_t>) {
    return Type::Integer;
  } else if constexpr (std::is_same_v<Member, std::int64_t>) {
    return Type::LongInteger;
  } else if constexpr (std::is_same_v<Member, ZtBOOL>) {
    return Type::Boolean;
  } else if constexpr (std::is_same_v<Member, std::uint64_t>) {
    return Type::Enumeration;
  } else if constexpr (requires { typename RecordOf<Member>::Type; }) {
    return Type::Records;
  } else {
    return Type::Strings;
  }
}

template <class Object, std::size_t kIndex>
void* memberOf(void* object) {
  return &(static_cast<Object*>(object)->*std::get<kIndex>(Fields<Object>::kTable).member);
}

template <class Object, std::size_t kIndex, class Record>
void* addRecord(void* object, const ZtDate& timeStamp) {
  auto& list =
      listOf(static_cast<Object*>(object)->*std::get<kIndex>(Fields<Object>::kTable).member);
  return list.emplace_back(newRecord<Record>(timeStamp)).get();
}

template <class Object>
AddedPool addPool(ZtPortalData& document, const ZtDate& timeStamp) {
  const std::shared_ptr<Object> pool = addPoolOf<Object>(document, timeStamp);
  if (pool == nullptr) throw std::bad_alloc();
  return {pool.get(), pool.get()};
}

template <class Object>
struct TableOf {
  static const Table kTable;
};

template <class Object, std::size_t kIndex>
constexpr Row rowOf() {
  constexpr auto& kField = std::get<kIndex>(Fields<Object>::kTable);
  Row row;
  row.wireName = kField.wireName;
  if constexpr (requires { kField.key; }) {
    using Member = typename std::remove_cvref_t<decltype(kField)>::Member;
    row.key = kField.key;
    row.type = typeOf<Member>();
    row.enumeration = kField.enumeration;
    if constexpr (typeOf<Member>() == Type::Records) {
      row.records = &TableOf<typename RecordOf<Member>::Type>::kTable;
      row.addRecord = addRecord<Object, kIndex, typename RecordOf<Member>::Type>;
    } else {
      row.memberOf = memberOf<Object, kIndex>;
    }
  }
  return row;
}

template <class Object>
constexpr auto kRowsOf = []<std::size_t... kIndex>(std::index_sequence<kIndex...>) {
  return std::array{rowOf<Object, kIndex>()...};
}
(std::make_index_sequence<std::tuple_size_v<decltype(Fields<Object>::kTable)>>());

template <class Object>
constexpr Table makeTable() {
  Table table{kRowsOf<Object>, {}, {}, nullptr};
  if constexpr (requires { Fields<Object>::kKind; }) {
    table.kind = Fields<Object>::kKind;
    table.add = addPool<Object>;
  }
  if constexpr (requires { Fields<Object>::kType; }) table.poolType = Fields<Object>::kType;
  return table;
}

template <class Object>
constinit const Table TableOf<Object>::kTable = makeTable<Object>();

}  // namespace

const Row& Table::row(std::string_view key) const {
  for (const Row& row : rows) {
    if (row.key == key && !key.empty()) return row;
  }
  fail(ZT_UNKNOWN_KEY, "no such key: \"", key, "\"");
}

std::span<const Table* const> poolTables() {
  static const auto tables = [] {
    std::array<const Table*, 7> all{};
    std::size_t count = 0;
    eachPoolClass([&]<class Pool> { all.at(count++) = &TableOf<Pool>::kTable; });
    return all;
  }();
  return tables;
}

const Table& tableOfKind(std::string_view kind) {
  for (const Table* const table : poolTables()) {
    if (table->kind == kind) return *table;
  }
  fail(ZT_UNKNOWN_KEY, "no such kind of pool: \"", kind, "\"");
}

}  // namespace zt::c
