#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "ztportal/base/ZtBOOL.h"
#include "ztportal/pools/Markup.h"

namespace zt {

/// Appends the four lines of one value field.
///
///     <Field FieldType="string">
///       <Name>Result</Name>
///       <Value>OK</Value>
///     </Field>
void appendField(std::string& xml, std::string_view prefix, const Tag& field, std::string_view name,
                 std::string_view value, bool soap);

/// The constant text of a field's lines up to its value, and behind it.
void appendFieldStart(std::string& xml, std::string_view prefix, const Tag& field,
                      std::string_view name, bool soap);
void appendFieldEnd(std::string& xml, std::string_view prefix);

/// A number as its field shows it, without the memory of a string.
class NumberText {
 public:
  /// Decimal, a minus sign where it is negative.
  explicit NumberText(std::int32_t number);
  /// Two digits after a point, whatever the locale, rounded as C's "%.2f" does.
  explicit NumberText(float number);

  std::string_view view() const { return {_text.data(), _size}; }

 private:
  std::array<char, 48> _text;
  std::size_t _size;
};

/// Only a byte of exactly 1 is true.
constexpr std::string_view booleanText(ZtBOOL value) { return value == 1 ? kTrue : kFalse; }

}  // namespace zt
