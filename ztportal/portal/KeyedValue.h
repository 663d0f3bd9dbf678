// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <memory>
#include <string_view>
#include <type_traits>
#include <variant>
#include <vector>

#include "ztportal/base/ZtAtomic.h"
#include "ztportal/base/ZtDate.h"
#include "ztportal/base/ZtString.h"
#include "ztportal/pools/FieldTable.h"
#include "ztportal/portal/NewPools.h"

/// Access to the values of pools and records by keys that are known only at run time.
namespace zt {

struct KeyedObject;

/// An enumeration.
struct NamedNumber {
  std::uint64_t* number;
  const Enumeration* names;
};

struct RecordList {
  void* list;
  KeyedObject (*add)(void* list, const ZtDate& timeStamp);
};

using StringList = ZtAtomic<std::shared_ptr<const std::vector<ZtString>>>;

/// Where the value of a key is; `std::monostate` if there is no such key.
using KeyedValue =
    std::variant<std::monostate, ZtAtomic<ZtString>*, ZtAtomic<ZtDate>*, std::int32_t*,
                 std::int64_t*, ZtBOOL*, NamedNumber, StringList*, RecordList>;

/// A pool or record, of which only the field table is known.
struct KeyedObject {
  void* object = nullptr;
  KeyedValue (*find)(void* object, std::string_view key) = nullptr;
};

template <class Object>
KeyedObject keyed(Object& object);

template <class Record>
KeyedObject addRecord(void* list, const ZtDate& timeStamp) {
  auto& records = *static_cast<std::vector<std::shared_ptr<Record>>*>(list);
  return keyed(*records.emplace_back(newRecord<Record>(timeStamp)));
}

template <class Object>
KeyedValue findValue(void* object, std::string_view key) {
  KeyedValue found;
  eachField<Object>([&](const auto& row) {
    if constexpr (requires { row.key; }) {
      if (row.key != key) return;
      using Member = typename std::remove_cvref_t<decltype(row)>::Member;
      Member& member = static_cast<Object*>(object)->*row.member;
      if constexpr (requires { typename RecordOf<Member>::Type; }) {
        found = RecordList{&listOf(member), addRecord<typename RecordOf<Member>::Type>};
      } else if constexpr (std::is_same_v<Member, std::uint64_t>) {
        found = NamedNumber{&member, row.enumeration};
      } else {
        found = &member;
      }
    }
  });
  return found;
}

template <class Object>
KeyedObject keyed(Object& object) {
  return {&object, findValue<Object>};
}

}  // namespace zt
