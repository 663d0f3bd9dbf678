#pragma once

#include <nlohmann/json.hpp>
#include <string>

namespace zt::test {

/// Checks a JSON value against a JSON schema (draft 2020-12), as far as the project's own schemas
/// go: $ref, type, const, enum, not, allOf, oneOf, properties, required, additionalProperties
/// (false), items, minimum, maximum, pattern. Any other keyword that would restrict the value makes
/// the check fail, so that none is passed over.
///
///     EXPECT_EQ(SchemaCheck(document).fault(value, schema), "");
class SchemaCheck {
 public:
  /// `$ref` is looked up in `document`, which outlives the check.
  explicit SchemaCheck(const nlohmann::json& document) : _document(document) {}

  /// What is wrong and where (a JSON pointer into the value); empty when nothing is.
  std::string fault(const nlohmann::json& value, const nlohmann::json& schema,
                    const std::string& where = "") const;

  /// `schema` itself, or what its $ref leads to.
  const nlohmann::json& resolved(const nlohmann::json& schema) const;

 private:
  std::string keywordFault(const std::string& keyword, const nlohmann::json& value,
                           const nlohmann::json& schema, const std::string& where) const;
  std::string objectFault(const std::string& keyword, const nlohmann::json& value,
                          const nlohmann::json& schema, const std::string& where) const;

  const nlohmann::json& _document;
};

}  // namespace zt::test
