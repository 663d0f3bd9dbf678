#include "tools/ztreport/Description.h"

#include <array>
#include <string_view>

namespace zt::tools {

namespace {

using Fields = ZtPortalPoolArray::Fields;

/// How a key of the description reaches the object that it describes.
template <class Object>
struct Key {
  std::string_view name;
  void (*set)(Object&, const JsonValue&);
};

template <class Object, std::size_t kCount>
bool setByKey(const std::array<Key<Object>, kCount>& keys, Object& object, const std::string& name,
              const JsonValue& value) {
  for (const Key<Object>& key : keys) {
    if (key.name != name) continue;
    key.set(object, value);
    return true;
  }
  return false;
}

using Execution = ZtPortalPoolExecution;
constexpr std::array<Key<Execution>, 11> kExecutionKeys{{
    {"startPoint", [](Execution& pool, const JsonValue& v) { pool.setStartPoint(v.string()); }},
    {"endPoint", [](Execution& pool, const JsonValue& v) { pool.setEndPoint(v.string()); }},
    {"startTime", [](Execution& pool, const JsonValue& v) { pool.setStartTime(v.date()); }},
    {"endTime", [](Execution& pool, const JsonValue& v) { pool.setEndTime(v.date()); }},
    {"endResultString",
     [](Execution& pool, const JsonValue& v) { pool.setEndResultString(v.string()); }},
    {"endResultCode",
     [](Execution& pool, const JsonValue& v) { pool.setEndResultCode(v.string()); }},
    {"endErrorMessageString",
     [](Execution& pool, const JsonValue& v) { pool.setEndErrorMessageString(v.string()); }},
    {"endErrorMessageCode",
     [](Execution& pool, const JsonValue& v) { pool.setEndErrorMessageCode(v.string()); }},
    {"successfull",
     [](Execution& pool, const JsonValue& v) { pool.setSuccessfull(v.booleanByte()); }},
    {"cancelled", [](Execution& pool, const JsonValue& v) { pool.setCancelled(v.booleanByte()); }},
    {"executionType",
     [](Execution& pool, const JsonValue& v) { pool.setExecutionType(v.string()); }},
}};

using Step = ZtPortalPoolExecutionStep;
constexpr std::uint64_t kStepTypeCount = ZtPortalStepError + 1;
constexpr std::array<Key<Step>, 4> kStepKeys{{
    {"stepName", [](Step& step, const JsonValue& v) { step.setStepName(v.string()); }},
    {"stepType",
     [](Step& step, const JsonValue& v) {
       step.setStepType(v.enumeration(ZtPortalDef::stepTypeToString, kStepTypeCount));
     }},
    {"stepMessageString",
     [](Step& step, const JsonValue& v) { step.setStepMessageString(v.string()); }},
    {"stepMessageCode",
     [](Step& step, const JsonValue& v) { step.setStepMessageCode(v.string()); }},
}};

ZtDate timeStampOf(const JsonValue& object) {
  const nlohmann::json* timeStamp = object.member("timeStamp");
  if (timeStamp == nullptr) return ZtDate::now();
  return object.child("timeStamp", *timeStamp).date();
}

/// The value of a member that decides how all others are read.
std::string discriminator(const JsonValue& object, const std::string& name,
                          const std::string& known) {
  const nlohmann::json* value = object.member(name);
  if (value == nullptr) object.fail("\"" + name + "\" is absent; it is one of " + known);
  return object.child(name, *value).text();
}

void addFields(const JsonValue& list, ZtPortalPoolArray& array);

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

void addFields(const JsonValue& list, ZtPortalPoolArray& array) {
  for (const JsonValue& field : list.list()) addField(field, array);
}

/// What every pool takes besides its own keys. Says whether it knew the key.
bool setCommonKey(ZtPortalPool& pool, const std::string& key, const JsonValue& value) {
  if (key == "kind" || key == "timeStamp") return true;  // read before
  if (key != "fields") return false;
  addFields(value, *pool.fields());
  return true;
}

void addGeneric(const JsonValue& object, ZtPortalData& document) {
  const auto pool = document.addPool(nullptr, timeStampOf(object));
  object.eachMember([&](const std::string& key, const JsonValue& value) {
    if (key == "poolType") {
      pool->setPoolType(value.string());
      return true;
    }
    return setCommonKey(*pool, key, value);
  });
}

void addStep(const JsonValue& object, ZtPortalPoolExecution& pool) {
  const auto step = pool.addStep(timeStampOf(object), nullptr, ZtPortalStepEnter);
  object.eachMember([&](const std::string& key, const JsonValue& value) {
    return key == "timeStamp" || setByKey(kStepKeys, *step, key, value);
  });
}

void addExecution(const JsonValue& object, ZtPortalData& document) {
  const auto pool = document.addPoolExecution(timeStampOf(object));
  object.eachMember([&](const std::string& key, const JsonValue& value) {
    if (key == "steps") {
      for (const JsonValue& step : value.list()) addStep(step, *pool);
      return true;
    }
    return setCommonKey(*pool, key, value) || setByKey(kExecutionKeys, *pool, key, value);
  });
}

struct Kind {
  std::string_view name;
  void (*add)(const JsonValue&, ZtPortalData&);
};
constexpr std::array<Kind, 2> kKinds{{{"generic", addGeneric}, {"execution", addExecution}}};

void addPool(const JsonValue& object, ZtPortalData& document) {
  std::string known;
  for (const Kind& kind : kKinds) known += (known.empty() ? "" : ", ") + std::string(kind.name);
  const std::string name = discriminator(object, "kind", known);
  for (const Kind& kind : kKinds) {
    if (kind.name == name) return kind.add(object, document);
  }
  object.child("kind", *object.member("kind")).fail("no such kind; it is one of " + known);
}

}  // namespace

Description::Description(const std::string& text) : _json(parseJson(text)) {
  JsonValue(_json, "").eachMember([this](const std::string& key, const JsonValue& value) {
    if (key == "customerId") {
      _customerId = value.string();
    } else if (key == "applicationId") {
      _applicationId = value.string();
    } else if (key == "applicationVersion") {
      _applicationVersion = value.string();
    } else if (key == "configurationUrl") {
      _configurationUrl = value.text();
    } else if (key == "cacheConfiguration") {
      _cacheConfiguration = value.boolean();
    } else if (key == "pools") {
      _hasPools = !value.list().empty();
    } else {
      return false;
    }
    return true;
  });
  makeOffline();  // shows the faults of the pools before any server is asked
}

std::shared_ptr<ZtPortalData> Description::make(const ZtString& configurationUrl,
                                                bool cacheConfiguration) const {
  auto document = ZtPortalData::initWithValues(configurationUrl, cacheConfiguration, _customerId,
                                               _applicationId, _applicationVersion);
  if (const auto pools = _json.find("pools"); pools != _json.end()) {
    for (const JsonValue& pool : JsonValue(*pools, "/pools").list()) addPool(pool, *document);
  }
  return document;
}

std::shared_ptr<ZtPortalData> Description::makeOffline() const { return make(nullptr, false); }

std::shared_ptr<ZtPortalData> Description::makeOnline(const ZtString& configurationUrl) const {
  return make(configurationUrl, _cacheConfiguration);
}

}  // namespace zt::tools
