// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <string>
#include <utility>

#include "tools/common/ReportReader.h"

namespace zt::test {

inline std::string typeName(reader::FieldType type) {
  using reader::FieldType;
  const std::pair<FieldType, const char*> names[] = {
      {FieldType::String, "string"},   {FieldType::Integer, "integer"}, {FieldType::Float, "float"},
      {FieldType::Boolean, "boolean"}, {FieldType::None, "none"},       {FieldType::Array, "array"},
      {FieldType::Records, "records"}, {FieldType::Record, "record"}};
  for (const auto& [named, name] : names) {
    if (named == type) return name;
  }
  return "?";
}

inline void addFields(std::string& text, const reader::FieldRange& fields, std::size_t depth) {
  for (const reader::Field& field : fields) {
    text.append(2 * depth, ' ').append(typeName(field.type));
    text.append(" [").append(field.name).append("] [").append(field.value).append("]");
    text.append(field.isEmptyTag ? " empty\n" : "\n");
    addFields(text, fieldsOf(field), depth + 1);
  }
}

/// What is read, as a text of one line a pool, field and record.
inline std::string told(const reader::ParsedReport& report) {
  std::string text;
  for (const reader::Pool& pool : report.pools) {
    text.append("[").append(pool.type).append("] [").append(pool.date).append("]");
    text.append(pool.isEmptyTag ? " empty\n" : "\n");
    addFields(text, report.fieldsOf(pool), 1);
  }
  return text;
}

}  // namespace zt::test
