// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <span>
#include <string_view>

#include "ztportal/base/ZtDate.h"
#include "ztportal/pools/FieldTable.h"
#include "ztportal/portal/ZtPortalData.h"

namespace zt::c {

/// What a key takes. Its member is a `ZtAtomic<ZtString>`, a `ZtAtomic<ZtDate>`, …; see `Field`.
enum class Type { String, Date, Integer, LongInteger, Boolean, Enumeration, Strings, Records };

/// A row of a field table, without its types.
struct Row {
  std::string_view key;  ///< empty for a `FalseField`
  std::string_view wireName;
  Type type = Type::Boolean;
  void* (*memberOf)(void* object) = nullptr;  ///< not for records
  const Enumeration* enumeration = nullptr;

  // For lists of records.
  const struct Table* records = nullptr;
  void* (*addRecord)(void* object, const ZtDate& timeStamp) = nullptr;
};

struct AddedPool {
  ZtPortalPool* pool;
  void* object;  ///< the same, as its own class
};

/// A field table, without its types.
struct Table {
  std::span<const Row> rows;
  std::string_view kind;  ///< this and the rest: for pools only
  std::string_view poolType;
  AddedPool (*add)(ZtPortalData& document, const ZtDate& timeStamp) = nullptr;

  /// Throws `Failure` if there is no such key.
  const Row& row(std::string_view key) const;
};

/// The tables of all pools.
std::span<const Table* const> poolTables();
/// Throws `Failure` if there is no such kind.
const Table& tableOfKind(std::string_view kind);

}  // namespace zt::c
