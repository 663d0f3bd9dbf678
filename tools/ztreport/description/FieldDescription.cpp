#include "tools/ztreport/description/FieldDescription.h"

#include <memory>
#include <string>
#include <string_view>

#include "tools/ztreport/description/Keys.h"

namespace zt::tools {

namespace {

/// Sets what the members of a field say, whose kind has been decided on.
template <class Field, class SetValue>
void readField(const JsonValue& object, const std::shared_ptr<Field>& field,
               std::string_view valueKey, SetValue setValue) {
  object.eachMember([&](const std::string& key, const JsonValue& value) {
    if (key == "type") return true;
    if (key == "name") {
      field->setFieldName(value.string());
      return true;
    }
    if (valueKey.empty() || key != valueKey) return false;  // also a key without a letter
    setValue(*field, value);
    return true;
  });
}

void addField(const JsonValue& object, ZtPortalPoolArray& array) {
  static const std::string kTypes = "string, integer, float, boolean, array, none";
  const std::string type = discriminator(object, "type", kTypes);
  if (type == "string") {
    readField(object, array.addString(nullptr, nullptr), "value",
              [](auto& field, const JsonValue& value) { field.setData(value.string()); });
  } else if (type == "integer") {
    readField(object, array.addInteger(nullptr, 0), "value",
              [](auto& field, const JsonValue& value) { field.setData(value.integer()); });
  } else if (type == "float") {
    readField(object, array.addFloat(nullptr, 0), "value",
              [](auto& field, const JsonValue& value) { field.setData(value.real()); });
  } else if (type == "boolean") {
    readField(object, array.addBOOL(nullptr, 0), "value",
              [](auto& field, const JsonValue& value) { field.setData(value.booleanByte()); });
  } else if (type == "array") {
    readField(object, array.addArray(nullptr), "fields",
              [](auto& field, const JsonValue& value) { addFields(value, field); });
  } else if (type == "none") {
    const auto field = ZtPortalPoolField::initWithName(nullptr);
    array.mutableFields()->push_back(field);
    readField(object, field, "", [](auto& /*field*/, const JsonValue& /*value*/) {});
  } else {
    object.child("type", *object.member("type")).fail("no such type; it is one of " + kTypes);
  }
}

}  // namespace

void addFields(const JsonValue& list, ZtPortalPoolArray& array) {
  for (const JsonValue& field : list.list()) addField(field, array);
}

}  // namespace zt::tools
