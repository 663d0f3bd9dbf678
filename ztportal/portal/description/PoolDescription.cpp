// SPDX-License-Identifier: Apache-2.0
#include "ztportal/portal/description/PoolDescription.h"

#include <concepts>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

#include "ztportal/portal/KeyedValue.h"

namespace zt {

namespace {

/// The value of the member that decides how all others are read; `known` lists the possible values.
std::string discriminator(const JsonValue& object, const std::string& name,
                          const std::string& known) {
  const Json* value = object.member(name);
  if (value == nullptr) object.fail("\"" + name + "\" is absent; it is one of " + known);
  return object.child(name, *value).text();
}

[[noreturn]] void failDiscriminator(const JsonValue& object, const std::string& name,
                                    const std::string& known) {
  object.child(name, *object.member(name)).fail("no such " + name + "; it is one of " + known);
}

ZtDate timeStampOf(const JsonValue& object) {
  const Json* timeStamp = object.member("timeStamp");
  if (timeStamp == nullptr) return ZtDate::now();
  return object.child("timeStamp", *timeStamp).date();
}

// Generic fields.

void addFields(const JsonValue& list, ZtPortalPoolArray& array);

/// Reads the members of a field whose type is known. A field without a value has no `valueKey`.
template <class FieldType, class SetValue>
void readField(const JsonValue& object, const std::shared_ptr<FieldType>& field,
               std::string_view valueKey, SetValue setValue) {
  object.eachMember([&](const std::string& key, const JsonValue& value) {
    if (key == "type") return true;
    if (key == "name") {
      field->setFieldName(value.string());
      return true;
    }
    if (valueKey.empty() || key != valueKey) return false;  // "" is an unknown key, too
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
    failDiscriminator(object, "type", kTypes);
  }
}

void addFields(const JsonValue& list, ZtPortalPoolArray& array) {
  for (const JsonValue& field : list.list()) addField(field, array);
}

// The fields of a table: `read` reads the value of a field to its place.

bool readByKey(const KeyedObject& object, const std::string& key, const JsonValue& value);

void read(const JsonValue& /*value*/, std::monostate /*place*/) {}
void read(const JsonValue& value, ZtAtomic<ZtString>* place) { place->store(value.string()); }
void read(const JsonValue& value, ZtAtomic<ZtDate>* place) { place->store(value.date()); }
void read(const JsonValue& value, std::int32_t* place) { *place = value.integer(); }
void read(const JsonValue& value, std::int64_t* place) { *place = value.longInteger(); }
void read(const JsonValue& value, ZtBOOL* place) { *place = value.booleanByte(); }
void read(const JsonValue& value, NamedNumber place) {
  *place.number = value.enumeration(place.names->nameOf, place.names->count);
}
void read(const JsonValue& value, StringList* place) {
  std::vector<ZtString> strings;
  for (const JsonValue& string : value.list()) strings.emplace_back(string.text());
  place->store(std::make_shared<const std::vector<ZtString>>(std::move(strings)));
}
void read(const JsonValue& value, RecordList place) {
  for (const JsonValue& object : value.list()) {
    const KeyedObject record = place.add(place.list, timeStampOf(object));
    object.eachMember([&record](const std::string& key, const JsonValue& member) {
      return readByKey(record, key, member);
    });
  }
}

/// Reads the value of `key` into `object`. Returns whether the table of its class has the key.
bool readByKey(const KeyedObject& object, const std::string& key, const JsonValue& value) {
  const KeyedValue found = object.find(object.object, key);
  std::visit([&value](auto place) { read(value, place); }, found);
  return !std::holds_alternative<std::monostate>(found);
}

template <class Pool>
void addDescribed(const JsonValue& object, ZtPortalData& document, bool mayExamineMachine) {
  constexpr bool kIsComputer = std::same_as<Pool, ZtPortalPoolComputerSystem>;
  std::shared_ptr<Pool> pool;
  if constexpr (kIsComputer) {
    const Json* autoCheck = object.member("autoCheck");
    const bool checks = autoCheck != nullptr && object.child("autoCheck", *autoCheck).boolean();
    pool = document.addPoolComputerSystemWithAutoCheck(timeStampOf(object),
                                                       checks && mayExamineMachine);
  } else {
    pool = addPoolOf<Pool>(document, timeStampOf(object));
  }
  object.eachMember([&pool](const std::string& key, const JsonValue& value) {
    if (key == "kind" || key == "timeStamp") return true;  // read above
    if (kIsComputer && key == "autoCheck") return true;
    if (key == "fields") {
      addFields(value, *pool->fields());
      return true;
    }
    return readByKey(keyed(*pool), key, value);
  });
}

}  // namespace

void addPool(const JsonValue& object, ZtPortalData& document, bool mayExamineMachine) {
  std::string known;
  eachPoolClass([&known]<class Pool> {
    known.append(known.empty() ? "" : ", ").append(Fields<Pool>::kKind);
  });
  const std::string kind = discriminator(object, "kind", known);
  bool added = false;
  eachPoolClass([&]<class Pool> {
    if (Fields<Pool>::kKind != kind) return;
    addDescribed<Pool>(object, document, mayExamineMachine);
    added = true;
  });
  if (!added) failDiscriminator(object, "kind", known);
}

}  // namespace zt
