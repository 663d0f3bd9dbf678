// SPDX-License-Identifier: Apache-2.0
#include <array>
#include <cstddef>
#include <map>
#include <string>
#include <string_view>
#include <utility>

#include "ztportal/c/Tables.h"
#include "ztportal/c/ztportal.h"
#include "ztportal/platform/json/Json.h"

namespace zt::c {

namespace {

/// The names of `Type`, as in docs/report-description.md. An enumeration has its own.
constexpr std::array<std::string_view, 8> kTypeNames{
    "string", "date", "integer", "64-bit integer", "boolean", "", "list of texts", "list"};
static_assert(kTypeNames.size() == static_cast<std::size_t>(Type::Records) + 1);

/// Adds the enumerations that occur to `enumerations`, by name.
Json describedKeys(const Table& table, std::map<std::string_view, Json>& enumerations) {
  Json keys = Json::array();
  for (const Row& row : table.rows) {
    if (row.key.empty()) continue;
    Json key{{"key", row.key}, {"type", kTypeNames.at(static_cast<std::size_t>(row.type))}};
    if (row.enumeration != nullptr) {
      key["type"] = row.enumeration->name;
      Json names = Json::array();
      for (std::uint64_t number = 0; number < row.enumeration->count; ++number) {
        names.push_back(row.enumeration->nameOf(number).view());
      }
      enumerations[row.enumeration->name] = std::move(names);
    }
    if (!row.wireName.empty()) key["inReports"] = row.wireName;
    if (row.records != nullptr) key["of"] = describedKeys(*row.records, enumerations);
    keys.push_back(std::move(key));
  }
  return keys;
}

std::string schema() {
  std::map<std::string_view, Json> enumerations;
  Json pools = Json::array();
  for (const Table* const table : poolTables()) {
    Json pool{{"kind", table->kind}, {"type", nullptr}};
    if (!table->poolType.empty()) pool["type"] = table->poolType;
    pool["keys"] = describedKeys(*table, enumerations);
    pools.push_back(std::move(pool));
  }
  Json all{{"pools", std::move(pools)}, {"enumerations", Json::object()}};
  for (auto& [name, names] : enumerations) all["enumerations"][name] = std::move(names);
  return all.text(1);
}

}  // namespace

}  // namespace zt::c

const char* zt_schema() try {
  // Never destroyed, since hosts also report from static destructors.
  static const auto& text = *new std::string(zt::c::schema());
  return text.c_str();
} catch (...) {
  return nullptr;
}
