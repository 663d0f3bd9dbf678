#include "tools/ztreport/description/JsonValue.h"

#include <cmath>
#include <limits>
#include <utility>

#include "tools/ztreport/description/Moment.h"

namespace zt::tools {

using nlohmann::json;

void JsonValue::fail(const std::string& reason) const { throw JsonError(placed(_pointer, reason)); }

void JsonValue::expected(std::string_view what) const {
  constexpr std::size_t kShown = 60;
  std::string found = _value->dump(-1, ' ', true);
  if (found.size() > kShown) {
    found.resize(kShown);
    found += "...";
  }
  fail("expected " + std::string(what) + ", found " + found);
}

ZtString JsonValue::string() const {
  if (_value->is_null()) return nullptr;
  if (!_value->is_string()) expected("a string or null");
  return _value->get_ref<const std::string&>();
}

std::string JsonValue::text() const {
  if (!_value->is_string()) expected("a string");
  return _value->get<std::string>();
}

ZtDate JsonValue::date() const {
  constexpr std::string_view kForm = "a date such as \"2026-11-21T12:00:00.123Z\" or null";
  if (_value->is_null()) return {};
  if (!_value->is_string()) expected(kForm);
  const std::optional<ZtDate> date = parseMoment(_value->get_ref<const std::string&>());
  if (!date) expected(kForm);
  return *date;
}

std::int64_t JsonValue::integerBetween(std::int64_t smallest, std::int64_t largest) const {
  if (!_value->is_number_integer()) expected("an integer");
  const bool tooLarge = _value->is_number_unsigned() &&
                        _value->get<std::uint64_t>() > static_cast<std::uint64_t>(largest);
  const std::int64_t number = tooLarge ? 0 : _value->get<std::int64_t>();
  if (tooLarge || number < smallest || number > largest) {
    fail(_value->dump() + " is out of range (" + std::to_string(smallest) + " to " +
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
  if (!_value->is_number()) expected("a number");
  const auto number = static_cast<float>(_value->get<double>());
  if (std::isinf(number)) fail(_value->dump() + " is out of the range of a 32-bit float");
  return number;
}

bool JsonValue::boolean() const {
  if (!_value->is_boolean()) expected("true or false");
  return _value->get<bool>();
}

ZtBOOL JsonValue::booleanByte() const {
  if (_value->is_boolean()) return _value->get<bool>() ? ZtBOOL{1} : ZtBOOL{0};
  if (!_value->is_number()) expected("true, false or a number from -128 to 255");
  return static_cast<ZtBOOL>(static_cast<unsigned char>(integerBetween(-128, 255)));
}

std::uint64_t JsonValue::enumeration(const std::function<ZtString(std::uint64_t)>& nameOf,
                                     std::uint64_t count) const {
  if (_value->is_number_unsigned()) return _value->get<std::uint64_t>();
  if (!_value->is_string()) expected("a name or an integer without a sign");
  const auto& name = _value->get_ref<const std::string&>();
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
  if (!_value->is_array()) expected("a list");
  std::vector<JsonValue> values;
  values.reserve(_value->size());
  for (const json& value : *_value) {
    values.emplace_back(value, childPointer(_pointer, std::to_string(values.size())));
  }
  return values;
}

void JsonValue::eachMember(
    const std::function<bool(const std::string&, const JsonValue&)>& read) const {
  if (!_value->is_object()) expected("an object");
  for (const auto& [name, value] : _value->items()) {
    const JsonValue at = child(name, value);
    if (!read(name, at)) at.fail("unknown key");
  }
}

const json* JsonValue::member(const std::string& name) const {
  if (!_value->is_object()) expected("an object");
  const auto found = _value->find(name);
  return found != _value->end() ? &*found : nullptr;
}

JsonValue JsonValue::child(const std::string& name, const json& value) const {
  return {value, childPointer(_pointer, name)};
}

}  // namespace zt::tools
