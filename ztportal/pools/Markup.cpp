#include "ztportal/pools/Markup.h"

#include <charconv>

#include "ztportal/base/Text.h"

namespace zt {

void appendFieldStart(std::string& xml, std::string_view prefix, const Tag& field,
                      std::string_view name, bool soap) {
  appendText(xml, prefix, field.text(soap),             //
             prefix, kName.text(soap), name, kNameEnd,  //
             prefix, kValue.text(soap));
}

void appendFieldEnd(std::string& xml, std::string_view prefix) {
  appendText(xml, kValueEnd, prefix, kFieldEnd);
}

void appendField(std::string& xml, std::string_view prefix, const Tag& field, std::string_view name,
                 std::string_view value, bool soap) {
  appendFieldStart(xml, prefix, field, name, soap);
  xml += value;
  appendFieldEnd(xml, prefix);
}

NumberText::NumberText(std::int32_t number) {
  char* const begin = _text.data();
  const auto result = std::to_chars(begin, begin + _text.size(), number);
  _size = static_cast<std::size_t>(result.ptr - begin);
}

NumberText::NumberText(float number) {
  char* const begin = _text.data();
  // The largest float has 39 digits before the point, so the text always fits.
  const auto result = std::to_chars(begin, begin + _text.size(), static_cast<double>(number),
                                    std::chars_format::fixed, 2);
  _size = static_cast<std::size_t>(result.ptr - begin);
}

}  // namespace zt
