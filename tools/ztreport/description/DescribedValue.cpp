#include "tools/ztreport/description/DescribedValue.h"

#include <array>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <optional>
#include <system_error>

#include "ztportal/base/Utf8.h"

namespace zt::tools {

using reader::FieldType;

namespace {

constexpr std::string_view kNull = "(null)";

/// How a float is written: two digits behind the point.
std::string writtenReal(float number) {
  std::array<char, 64> text{};
  const auto end = std::to_chars(text.data(), text.data() + text.size(),
                                 static_cast<double>(number), std::chars_format::fixed, 2);
  return {text.data(), end.ptr};
}

/// The number that is the whole of a text.
template <class Number>
std::optional<Number> numberOf(std::string_view text) {
  Number number{};
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
  return number;
}

}  // namespace

FieldType fieldTypeOf(ValueForm form) {
  if (form == ValueForm::Integer) return FieldType::Integer;
  if (form == ValueForm::Boolean) return FieldType::Boolean;
  return FieldType::String;
}

void ValueDescriber::fail(std::string_view part, std::string expected) const {
  throw Undescribable(_report->offsetOf(part), std::move(expected));
}

Json ValueDescriber::text(std::string_view value) const {
  if (value == kNull) return nullptr;
  for (std::string_view rest = value; !rest.empty();) {
    const auto character = firstUtf8Character(rest);
    if (!character) fail(rest, "UTF-8");
    rest.remove_prefix(character->length);
  }
  return value;
}

Json ValueDescriber::date(std::string_view value) {
  if (value == kNull) return nullptr;
  std::optional<std::string> moment = _dates.momentOf(value);
  if (!moment) fail(value, "a date as this time zone and language write it");
  return *std::move(moment);
}

Json ValueDescriber::integer(std::string_view value) const {
  const auto number = numberOf<std::int32_t>(value);
  if (!number || std::to_string(*number) != value) fail(value, "a 32-bit integer");
  return *number;
}

Json ValueDescriber::real(std::string_view value) const {
  const auto number = numberOf<double>(value);
  if (!number || !std::isfinite(static_cast<float>(*number)) ||
      writtenReal(static_cast<float>(*number)) != value) {
    fail(value, "a 32-bit float with two digits behind the point");
  }
  return *number;
}

Json ValueDescriber::boolean(std::string_view value) const {
  if (value == "TRUE") return true;
  if (value == "FALSE") return false;
  fail(value, "TRUE or FALSE");
}

Json ValueDescriber::enumerator(std::string_view value, const Enumeration& enumeration) const {
  if (value.empty()) return enumeration.unnamed;
  for (std::uint64_t number = 0; number < enumeration.count; ++number) {
    if (enumeration.nameOf(number) == value) return value;
  }
  fail(value, "a name that reports have, or none");
}

Json ValueDescriber::valueOf(const KeyLine& key, std::string_view value) {
  switch (key.form) {
    case ValueForm::Date:
      return date(value);
    case ValueForm::Integer:
      return integer(value);
    case ValueForm::Boolean:
      return boolean(value);
    case ValueForm::Enumeration:
      return enumerator(value, *key.enumeration);
    case ValueForm::Text:
    case ValueForm::LongInteger:  // in no report
    case ValueForm::TextList:
      break;
  }
  return text(value);
}

}  // namespace zt::tools
