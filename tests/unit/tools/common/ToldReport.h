#pragma once

#include <cstddef>
#include <string>

#include "tools/common/ReportReader.h"

namespace zt::test {

inline std::string typeName(reader::FieldType type) {
  switch (type) {
    case reader::FieldType::String:
      return "string";
    case reader::FieldType::Integer:
      return "integer";
    case reader::FieldType::Float:
      return "float";
    case reader::FieldType::Boolean:
      return "boolean";
    case reader::FieldType::None:
      return "none";
    case reader::FieldType::Array:
      return "array";
    case reader::FieldType::Records:
      return "records";
    case reader::FieldType::Record:
      return "record";
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
