#include <array>
#include <set>
#include <string>
#include <string_view>

#include "ztportal/base/Text.h"
#include "ztportal/c/Tables.h"
#include "ztportal/c/ztportal.h"

namespace zt::c {

namespace {

/// Writes `zt_schema`. No name needs to be escaped.
class SchemaWriter {
 public:
  std::string write() {
    appendText(_json, "{\"pools\": [");
    std::string_view separator;
    for (const Table* const table : poolTables()) {
      appendText(_json, separator, "\n{\"kind\": \"", table->kind, "\", \"type\": ");
      if (table->poolType.empty()) {
        appendText(_json, "null");
      } else {
        appendText(_json, "\"", table->poolType, "\"");
      }
      appendText(_json, ", \"keys\": ");
      addKeys(*table);
      appendText(_json, "}");
      separator = ",";
    }
    appendText(_json, "],\n\"enumerations\": {");
    separator = "";
    for (const Enumeration* const enumeration : _enumerations) {
      appendText(_json, separator, "\n\"", enumeration->name, "\": ");
      addNames(*enumeration);
      separator = ",";
    }
    appendText(_json, "}}\n");
    return std::move(_json);
  }

 private:
  void addKeys(const Table& table) {
    std::string_view separator = "[\n";
    for (const Row& row : table.rows) {
      if (row.key.empty()) continue;
      appendText(_json, separator, "  {\"key\": \"", row.key, "\", \"type\": \"", typeOf(row),
                 "\"");
      if (!row.wireName.empty()) appendText(_json, ", \"inReports\": \"", row.wireName, "\"");
      if (row.records != nullptr) {
        appendText(_json, ", \"of\": ");
        addKeys(*row.records);
      }
      appendText(_json, "}");
      separator = ",\n";
    }
    appendText(_json, "]");
  }

  /// As docs/report-description.md calls it.
  std::string_view typeOf(const Row& row) {
    switch (row.type) {
      case Type::String:
        return "string";
      case Type::Date:
        return "date";
      case Type::Integer:
        return "integer";
      case Type::LongInteger:
        return "64-bit integer";
      case Type::Boolean:
        return "boolean";
      case Type::Enumeration:
        _enumerations.insert(row.enumeration);
        return row.enumeration->name;
      case Type::Strings:
        return "list of texts";
      case Type::Records:
        return "list";
    }
    return {};
  }

  void addNames(const Enumeration& enumeration) {
    std::string_view separator = "[";
    for (std::uint64_t number = 0; number < enumeration.count; ++number) {
      appendText(_json, separator, "\"", enumeration.nameOf(number).view(), "\"");
      separator = ", ";
    }
    appendText(_json, "]");
  }

  struct ByName {
    bool operator()(const Enumeration* left, const Enumeration* right) const {
      return left->name < right->name;
    }
  };

  std::string _json;
  std::set<const Enumeration*, ByName> _enumerations;
};

}  // namespace

}  // namespace zt::c

const char* zt_schema(void) try {
  // Never destroyed, since hosts also report from static destructors.
  static const auto& schema = *new std::string(zt::c::SchemaWriter().write());
  return schema.c_str();
} catch (...) {
  return nullptr;
}
