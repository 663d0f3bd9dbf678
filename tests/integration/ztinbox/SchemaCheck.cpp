#include "tests/integration/ztinbox/SchemaCheck.h"

#include <algorithm>
#include <regex>
#include <stdexcept>

namespace zt::test {

namespace {

using nlohmann::json;

bool hasType(const json& value, const std::string& type) {
  if (type == "null") return value.is_null();
  if (type == "boolean") return value.is_boolean();
  if (type == "integer") return value.is_number_integer();
  if (type == "number") return value.is_number();
  if (type == "string") return value.is_string();
  if (type == "array") return value.is_array();
  if (type == "object") return value.is_object();
  throw std::runtime_error("no such type in JSON: " + type);
}

bool hasOneType(const json& value, const json& types) {
  if (types.is_string()) return hasType(value, types);
  return std::ranges::any_of(types, [&value](const json& type) { return hasType(value, type); });
}

}  // namespace

const json& SchemaCheck::resolved(const json& schema) const {
  if (!schema.contains("$ref")) return schema;
  const std::string reference = schema.at("$ref");
  return resolved(_document.at(json::json_pointer(reference.substr(1))));
}

std::string SchemaCheck::fault(const json& value, const json& schema,
                               const std::string& where) const {
  const json& rules = resolved(schema);
  for (const auto& [keyword, rule] : rules.items()) {
    const std::string found = keywordFault(keyword, value, rules, where);
    if (!found.empty()) return found;
  }
  return "";
}

std::string SchemaCheck::keywordFault(const std::string& keyword, const json& value,
                                      const json& schema, const std::string& where) const {
  const json& rule = schema.at(keyword);
  const std::string fails = where + ": " + value.dump().substr(0, 100) + " fails " + keyword + " " +
                            rule.dump().substr(0, 100);
  if (keyword == "description" || keyword == "default") return "";
  if (keyword == "type") return hasOneType(value, rule) ? "" : fails;
  if (keyword == "const") return value == rule ? "" : fails;
  if (keyword == "enum") return std::ranges::find(rule, value) != rule.end() ? "" : fails;
  if (keyword == "not") return fault(value, rule, where).empty() ? fails : "";
  if (keyword == "minimum") return !value.is_number() || value >= rule ? "" : fails;
  if (keyword == "maximum") return !value.is_number() || value <= rule ? "" : fails;
  if (keyword == "pattern") {
    if (!value.is_string()) return "";
    const std::regex pattern(rule.get<std::string>());
    return std::regex_search(value.get_ref<const std::string&>(), pattern) ? "" : fails;
  }
  if (keyword == "allOf") {
    for (const json& part : rule) {
      const std::string found = fault(value, part, where);
      if (!found.empty()) return found;
    }
    return "";
  }
  if (keyword == "oneOf") {
    const auto fits = std::ranges::count_if(
        rule, [&](const json& part) { return fault(value, part, where).empty(); });
    return fits == 1 ? "" : fails;
  }
  return objectFault(keyword, value, schema, where);
}

std::string SchemaCheck::objectFault(const std::string& keyword, const json& value,
                                     const json& schema, const std::string& where) const {
  const json& rule = schema.at(keyword);
  if (keyword == "items") {
    if (!value.is_array()) return "";
    for (std::size_t i = 0; i < value.size(); ++i) {
      const std::string found = fault(value[i], rule, where + "/" + std::to_string(i));
      if (!found.empty()) return found;
    }
    return "";
  }
  if (keyword == "properties") {
    for (const auto& [name, part] : rule.items()) {
      if (!value.is_object() || !value.contains(name)) continue;
      const std::string found = fault(value.at(name), part, where + "/" + name);
      if (!found.empty()) return found;
    }
    return "";
  }
  if (keyword == "required") {
    for (const std::string name : rule) {
      if (value.is_object() && !value.contains(name)) return where + ": lacks " + name;
    }
    return "";
  }
  if (keyword == "additionalProperties" && rule == false) {
    if (!value.is_object()) return "";
    for (const auto& [name, part] : value.items()) {
      if (!schema.at("properties").contains(name)) return where + ": has " + name;
    }
    return "";
  }
  return where + ": the check does not know " + keyword;
}

}  // namespace zt::test
