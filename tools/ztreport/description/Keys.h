#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "tools/ztreport/description/JsonValue.h"
#include "ztportal/ztportal.h"

namespace zt::tools {

/// Names of the numbers of an enumeration.
struct Enumeration {
  ZtString (*nameOf)(std::uint64_t);  ///< empty for a number without a name
  std::uint64_t count;                ///< no number from here on has a name
  std::uint64_t unnamed;              ///< stands for all numbers that are written as an empty text
};

inline constexpr Enumeration kStepTypes{ZtPortalDef::stepTypeToString, ZtPortalStepError + 1,
                                        ZtPortalStepError + 1};
inline constexpr Enumeration kDiagnoseTypes{ZtPortalDef::diagnoseTypeToString,
                                            ZtPortalDiagnoseRIS + 1, ZtPortalDiagnoseRIS + 1};
inline constexpr Enumeration kLanguages{ZtPortalDef::languageToString, ZtLanguageVietnamese + 1,
                                        ZtLanguageSerbian};

/// What the value of a key is.
enum class ValueForm { Text, Date, Integer, LongInteger, Boolean, Enumeration, TextList };

/// A key of a description without the object that it describes: how it stands in a report.
struct KeyLine {
  std::string_view name;
  std::string_view field;  ///< the field's name in a report; empty where no report carries it
  ValueForm form;
  const Enumeration* enumeration = nullptr;
};

/// A key of a description, how it reaches the object that it describes, and how it stands in a
/// report. A class's keys are a table, in the order in which reports have them:
///
///     constexpr std::array<Key<Step>, 2> kStepKeys{{
///         text<Step, &Step::setStepName>("stepName", "STEP_NAME"),
///         enumeration<Step, &Step::setStepType, kStepTypes>("stepType", "STEP_TYPE")}};
template <class Object>
struct Key {
  KeyLine line;
  void (*set)(Object&, const JsonValue&);
};

template <class Object, auto kSet>
constexpr Key<Object> text(std::string_view name, std::string_view field = {}) {
  return {{name, field, ValueForm::Text},
          [](Object& object, const JsonValue& value) { (object.*kSet)(value.string()); }};
}
template <class Object, auto kSet>
constexpr Key<Object> date(std::string_view name, std::string_view field = {}) {
  return {{name, field, ValueForm::Date},
          [](Object& object, const JsonValue& value) { (object.*kSet)(value.date()); }};
}
template <class Object, auto kSet>
constexpr Key<Object> integer(std::string_view name, std::string_view field = {}) {
  return {{name, field, ValueForm::Integer},
          [](Object& object, const JsonValue& value) { (object.*kSet)(value.integer()); }};
}
template <class Object, auto kSet>
constexpr Key<Object> longInteger(std::string_view name, std::string_view field = {}) {
  return {{name, field, ValueForm::LongInteger},
          [](Object& object, const JsonValue& value) { (object.*kSet)(value.longInteger()); }};
}
template <class Object, auto kSet>
constexpr Key<Object> flag(std::string_view name, std::string_view field = {}) {
  return {{name, field, ValueForm::Boolean},
          [](Object& object, const JsonValue& value) { (object.*kSet)(value.booleanByte()); }};
}
/// A number, or the name of one.
template <class Object, auto kSet, const Enumeration& kEnumeration>
constexpr Key<Object> enumeration(std::string_view name, std::string_view field = {}) {
  return {{name, field, ValueForm::Enumeration, &kEnumeration},
          [](Object& object, const JsonValue& value) {
            (object.*kSet)(value.enumeration(kEnumeration.nameOf, kEnumeration.count));
          }};
}

/// A table's keys without their objects.
template <class Object, std::size_t kCount>
constexpr std::array<KeyLine, kCount> linesOf(const std::array<Key<Object>, kCount>& keys) {
  std::array<KeyLine, kCount> lines{};
  for (std::size_t i = 0; i < kCount; ++i) lines[i] = keys[i].line;
  return lines;
}

/// Sets what `name` stands for, and says whether the table knows it.
template <class Object, std::size_t kCount>
bool setByKey(const std::array<Key<Object>, kCount>& keys, Object& object, const std::string& name,
              const JsonValue& value) {
  for (const Key<Object>& key : keys) {
    if (key.line.name != name) continue;
    key.set(object, value);
    return true;
  }
  return false;
}

/// The value of a member that decides how all others are read; `known` are its values, for the
/// message when it is absent.
inline std::string discriminator(const JsonValue& object, const std::string& name,
                                 const std::string& known) {
  const Json* value = object.member(name);
  if (value == nullptr) object.fail("\"" + name + "\" is absent; it is one of " + known);
  return object.child(name, *value).text();
}

}  // namespace zt::tools
