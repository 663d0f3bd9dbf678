#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "tools/ztreport/JsonValue.h"

namespace zt::tools {

/// How a key of a description reaches the object that it describes. A class's keys are a table:
///
///     constexpr std::array<Key<Step>, 2> kStepKeys{{
///         {"stepName", text<Step, &Step::setStepName>},
///         {"stepType", enumeration<Step, &Step::setStepType, stepTypeToString, 5>}}};
template <class Object>
struct Key {
  std::string_view name;
  void (*set)(Object&, const JsonValue&);
};

template <class Object, auto kSet>
void text(Object& object, const JsonValue& value) {
  (object.*kSet)(value.string());
}
template <class Object, auto kSet>
void date(Object& object, const JsonValue& value) {
  (object.*kSet)(value.date());
}
template <class Object, auto kSet>
void integer(Object& object, const JsonValue& value) {
  (object.*kSet)(value.integer());
}
template <class Object, auto kSet>
void longInteger(Object& object, const JsonValue& value) {
  (object.*kSet)(value.longInteger());
}
template <class Object, auto kSet>
void flag(Object& object, const JsonValue& value) {
  (object.*kSet)(value.booleanByte());
}
/// A number, or a name that `kNameOf` gives for a number below `kCount`.
template <class Object, auto kSet, ZtString (*kNameOf)(std::uint64_t), std::uint64_t kCount>
void enumeration(Object& object, const JsonValue& value) {
  (object.*kSet)(value.enumeration(kNameOf, kCount));
}

/// Sets what `name` stands for, and says whether the table knows it.
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

/// The value of a member that decides how all others are read; `known` are its values, for the
/// message when it is absent.
inline std::string discriminator(const JsonValue& object, const std::string& name,
                                 const std::string& known) {
  const nlohmann::json* value = object.member(name);
  if (value == nullptr) object.fail("\"" + name + "\" is absent; it is one of " + known);
  return object.child(name, *value).text();
}

}  // namespace zt::tools
