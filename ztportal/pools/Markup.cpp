// SPDX-License-Identifier: Apache-2.0
#include "ztportal/pools/Markup.h"

#include <charconv>
#include <optional>

#include "ztportal/base/Text.h"
#include "ztportal/base/Utf8.h"

namespace zt {

namespace {

/// What is written in place of `code`; empty for a character that stays as it is.
std::string_view escapeOf(char32_t code, bool isInAttribute) {
  switch (code) {
    case '<':
      return "&lt;";
    case '>':
      return "&gt;";
    case '&':
      return "&amp;";
    case '\r':
      return "&#13;";
    case '"':
      return isInAttribute ? "&quot;" : "";
    case '\t':
      return isInAttribute ? "&#9;" : "";
    case '\n':
      return isInAttribute ? "&#10;" : "";
    default:
      return code < ' ' || code == 0xFFFE || code == 0xFFFF ? kReplacementCharacter : "";
  }
}

void appendEscapedText(std::string& xml, std::string_view text, bool isInAttribute) {
  while (!text.empty()) {
    const std::optional<Utf8Character> character = firstUtf8Character(text);
    const std::string_view escape =
        character ? escapeOf(character->code, isInAttribute) : kReplacementCharacter;
    const std::size_t length = character ? character->length : 1;
    xml += escape.empty() ? text.substr(0, length) : escape;
    text.remove_prefix(length);
  }
}

}  // namespace

void appendEscaped(std::string& xml, std::string_view text) { appendEscapedText(xml, text, false); }

void appendAttributeValue(std::string& xml, std::string_view text) {
  if (valuesAreEscaped()) {
    appendEscapedText(xml, text, true);
  } else {
    xml += text;
  }
}

std::string_view& writtenPoolType() {
  constinit static thread_local std::string_view type;
  return type;
}

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
  if (valuesArePlain()) {
    appendFieldStart(xml, prefix, field, name, soap);
    xml += value;
    return appendFieldEnd(xml, prefix);
  }
  std::string filtered(value);
  if (!passesValueFilter(writtenPoolType(), name, filtered)) return;
  std::string writtenName;
  appendValue(writtenName, name);
  appendFieldStart(xml, prefix, field, writtenName, soap);
  appendValue(xml, filtered);
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
