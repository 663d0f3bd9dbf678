// SPDX-License-Identifier: Apache-2.0
#include "ztportal/portal/description/JsonValue.h"

#include <cmath>
#include <limits>
#include <optional>
#include <utility>

#include "ztportal/portal/description/DescribedDate.h"

namespace zt {

void JsonValue::fail(const std::string& reason) const {
  throw JsonError(withPointer(_pointer, reason));
}

void JsonValue::expected(std::string_view what) const {
  constexpr std::size_t kShown = 60;
  std::string found = _value->asciiText();
  if (found.size() > kShown) {
    found.resize(kShown);
    found += "...";
  }
  fail("expected " + std::string(what) + ", found " + found);
}

ZtString JsonValue::string() const {
  if (_value->isNull()) return nullptr;
  if (!_value->isString()) expected("a string or null");
  return _value->string();
}

std::string JsonValue::text() const {
  if (!_value->isString()) expected("a string");
  return _value->string();
}

ZtDate JsonValue::date() const {
  constexpr std::string_view kForm = "a date such as \"2026-11-21T12:00:00.123Z\" or null";
  if (_value->isNull()) return {};
  if (!_value->isString()) expected(kForm);
  const std::optional<ZtDate> date = dateOf(_value->string());
  if (!date) expected(kForm);
  return *date;
}

std::int64_t JsonValue::integerBetween(std::int64_t smallest, std::int64_t largest) const {
  if (!_value->isInteger()) expected("an integer");
  const bool tooLarge =
      _value->isUnsigned() && _value->unsignedInteger() > static_cast<std::uint64_t>(largest);
  const std::int64_t number = tooLarge ? 0 : _value->integer();
  if (tooLarge || number < smallest || number > largest) {
    fail(_value->text() + " is out of range (" + std::to_string(smallest) + " to " +
         std::to_string(largest) + ")");
  }
  return number;
}

std::int32_t JsonValue::integer() const {
  using Limits = std::numeric_limits<std::int32_t>;
  return static_cast<std::int32_t>(integerBetween(Limits::min(), Limits::max()));
}

std::int64_t JsonValue::longInteger() const {
  using Limits = std::numeric_limits<std::int64_t>;
  return integerBetween(Limits::min(), Limits::max());
}

float JsonValue::real() const {
  if (!_value->isNumber()) expected("a number");
  const auto number = static_cast<float>(_value->number());
  if (std::isinf(number)) fail(_value->text() + " is out of the range of a 32-bit float");
  return number;
}

bool JsonValue::boolean() const {
  if (!_value->isBoolean()) expected("true or false");
  return _value->boolean();
}

ZtBOOL JsonValue::booleanByte() const {
  if (_value->isBoolean()) return _value->boolean() ? ZtBOOL{1} : ZtBOOL{0};
  if (!_value->isNumber()) expected("true, false or a number from -128 to 255");
  return static_cast<ZtBOOL>(static_cast<unsigned char>(integerBetween(-128, 255)));
}

std::uint64_t JsonValue::enumeration(const std::function<ZtString(std::uint64_t)>& nameOf,
                                     std::uint64_t count) const {
  if (_value->isUnsigned()) return _value->unsignedInteger();
  if (!_value->isString()) expected("a name or an integer without a sign");
  const auto& name = _value->string();
  std::string known;
  for (std::uint64_t number = 0; number < count; ++number) {
    const ZtString candidate = nameOf(number);
    if (candidate.empty()) continue;
    if (candidate == name) return number;
    known += (known.empty() ? "" : ", ") + std::string(candidate.view());
  }
  expected("one of " + known + " or a number");
}

std::vector<JsonValue> JsonValue::list() const {
  if (!_value->isArray()) expected("a list");
  std::vector<JsonValue> values;
  values.reserve(_value->values().size());
  for (const Json& value : _value->values()) {
    values.emplace_back(value, childPointer(_pointer, std::to_string(values.size())));
  }
  return values;
}

void JsonValue::eachMember(
    const std::function<bool(const std::string&, const JsonValue&)>& read) const {
  if (!_value->isObject()) expected("an object");
  for (const auto& [name, value] : _value->members()) {
    const JsonValue at = child(name, value);
    if (!read(name, at)) at.fail("unknown key");
  }
}

const Json* JsonValue::member(const std::string& name) const {
  if (!_value->isObject()) expected("an object");
  return _value->find(name);
}

JsonValue JsonValue::child(const std::string& name, const Json& value) const {
  return {value, childPointer(_pointer, name)};
}

}  // namespace zt
