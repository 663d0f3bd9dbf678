// SPDX-License-Identifier: Apache-2.0
#include "ztportal/portal/description/DescriptionSchema.h"

#include <cstdint>
#include <map>
#include <string_view>
#include <type_traits>
#include <utility>

#include "ztportal/platform/json/Json.h"
#include "ztportal/pools/FieldTable.h"

namespace zt {

namespace {

// The names of types, as in docs/report-description.md. An enumeration has its own.
std::string_view typeName(ZtAtomic<ZtString>* /*member*/) { return "string"; }
std::string_view typeName(ZtAtomic<ZtDate>* /*member*/) { return "date"; }
std::string_view typeName(std::int32_t* /*member*/) { return "integer"; }
std::string_view typeName(std::int64_t* /*member*/) { return "64-bit integer"; }
std::string_view typeName(ZtBOOL* /*member*/) { return "boolean"; }
std::string_view typeName(ZtAtomic<std::shared_ptr<const std::vector<ZtString>>>* /*member*/) {
  return "list of texts";
}

Json namesOf(const Enumeration& enumeration) {
  Json names = Json::array();
  for (std::uint64_t number = 0; number < enumeration.count; ++number) {
    names.push_back(enumeration.nameOf(number).view());
  }
  return names;
}

/// Adds the enumerations that occur to `enumerations`, by name.
template <class Object>
Json keysOf(std::map<std::string_view, Json>& enumerations) {
  Json keys = Json::array();
  eachField<Object>([&](const auto& row) {
    if constexpr (requires { row.key; }) {
      using Member = typename std::remove_cvref_t<decltype(row)>::Member;
      Json key{{"key", row.key}, {"type", "list"}};
      if (!row.wireName.empty()) key["inReports"] = row.wireName;
      if constexpr (std::is_same_v<Member, std::uint64_t>) {
        key["type"] = row.enumeration->name;
        enumerations[row.enumeration->name] = namesOf(*row.enumeration);
      } else if constexpr (requires { typename RecordOf<Member>::Type; }) {
        key["of"] = keysOf<typename RecordOf<Member>::Type>(enumerations);
      } else {
        key["type"] = typeName(static_cast<Member*>(nullptr));
      }
      keys.push_back(std::move(key));
    }
  });
  return keys;
}

}  // namespace

std::string descriptionSchema() {
  std::map<std::string_view, Json> enumerations;
  Json pools = Json::array();
  eachPoolClass([&]<class Pool> {
    Json pool{{"kind", Fields<Pool>::kKind}, {"type", nullptr}};
    if constexpr (requires { Fields<Pool>::kType; }) pool["type"] = Fields<Pool>::kType;
    pool["keys"] = keysOf<Pool>(enumerations);
    pools.push_back(std::move(pool));
  });
  Json all{{"pools", std::move(pools)}, {"enumerations", Json::object()}};
  for (auto& [name, names] : enumerations) all["enumerations"][name] = std::move(names);
  return all.text(1);
}

}  // namespace zt
