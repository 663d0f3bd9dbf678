// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "ztportal/base/ZtBOOL.h"
#include "ztportal/system/HostRules.h"

/// The literals of the report's text, and functions that write a single field.
namespace zt {

inline constexpr std::string_view kSoapTypeAttribute = "xsi:type=\"";

/// A start tag in the two forms of a report: with a SOAP type attribute, and plain.
///
///     kName.text(true)     "<Name xsi:type=\"xsd:string\">"
///     kName.text(false)    "<Name>"
class Tag {
 public:
  /// `open` is the text before the attribute, `rest` the text after it.
  consteval Tag(std::string_view open, std::string_view soapType, std::string_view rest) {
    addTo(_soap, _soapSize, open);
    addTo(_soap, _soapSize, " ");
    addTo(_soap, _soapSize, kSoapTypeAttribute);
    addTo(_soap, _soapSize, soapType);
    addTo(_soap, _soapSize, "\"");
    addTo(_soap, _soapSize, rest);
    addTo(_plain, _plainSize, open);
    addTo(_plain, _plainSize, rest);
  }

  constexpr std::string_view text(bool soap) const {
    return soap ? std::string_view(_soap.data(), _soapSize)
                : std::string_view(_plain.data(), _plainSize);
  }

 private:
  using Buffer = std::array<char, 64>;
  static consteval void addTo(Buffer& buffer, std::size_t& size, std::string_view piece) {
    std::copy(piece.begin(), piece.end(), buffer.begin() + static_cast<std::ptrdiff_t>(size));
    size += piece.size();
  }

  Buffer _soap{};
  std::size_t _soapSize = 0;
  Buffer _plain{};
  std::size_t _plainSize = 0;
};

inline constexpr std::string_view kComField = "com_Field";
inline constexpr std::string_view kComFields = "com_Fields";
inline constexpr std::string_view kComPool = "com_Pool";
inline constexpr std::string_view kXsdString = "xsd:string";
inline constexpr std::string_view kXsdDateTime = "xsd:dateTime";

// Elements of a field.
inline constexpr Tag kStringField("<Field", kComField, " FieldType=\"string\">\r\n");
inline constexpr Tag kIntegerField("<Field", kComField, " FieldType=\"integer\">\r\n");
inline constexpr Tag kFloatField("<Field", kComField, " FieldType=\"float\">\r\n");
inline constexpr Tag kBooleanField("<Field", kComField, " FieldType=\"boolean\">\r\n");
inline constexpr Tag kArrayField("<Field", kComField, " FieldType=\"array\">\r\n");
inline constexpr Tag kBareField("<Field", kComField, " type=\"none\">\r\n");
inline constexpr std::string_view kFieldEnd = "</Field>\r\n";
inline constexpr Tag kName("  <Name", kXsdString, ">");
inline constexpr Tag kBareName("  <Name", kXsdString, " type=\"none\">");
inline constexpr std::string_view kNameEnd = "</Name>\r\n";
inline constexpr Tag kValue("  <Value", kXsdString, ">");
inline constexpr std::string_view kValueEnd = "</Value>\r\n";

// Deliberately not the end tags of <Name> and <Field>: the servers that read generic arrays expect
// these.
inline constexpr std::string_view kArrayNameEnd = "</Date>\r\n";
inline constexpr std::string_view kArrayEnd = "</Data>\r\n";

// Groups of fields.
inline constexpr Tag kFields("  <Fields", kComFields, ">\r\n");
inline constexpr Tag kNoFields("  <Fields", kComFields, "/>\r\n");
inline constexpr std::string_view kFieldsEnd = "  </Fields>\r\n";

// Elements of a pool.
inline constexpr Tag kPool("<Data", kComPool, " Pool=\"");
inline constexpr std::string_view kPoolTypeEnd = "\">\r\n";
inline constexpr Tag kDate("  <Date", kXsdDateTime, ">");
inline constexpr std::string_view kDateEnd = "</Date>\r\n";
inline constexpr std::string_view kPoolEnd = "</Data>\r\n";

// Values.
inline constexpr std::string_view kTrue = "TRUE";
inline constexpr std::string_view kFalse = "FALSE";
inline constexpr std::string_view kNull = "(null)";

/// Appends `text` so that an XML parser reads it back unchanged in the content of an element:
/// "&lt;", "&gt;", "&amp;" and "&#13;" for the characters that it would read otherwise
/// (XML 1.0, 2.4 and 2.11). A byte that is not UTF-8 and a character that XML cannot hold
/// (XML 1.0, 2.2) become U+FFFD.
void appendEscaped(std::string& xml, std::string_view text);

/// Appends a name or a value: escaped if the host wants that, otherwise unchanged.
inline void appendValue(std::string& xml, std::string_view text) {
  if (valuesAreEscaped()) {
    appendEscaped(xml, text);
  } else {
    xml += text;
  }
}

/// The same for the value of an attribute, where quotes and white space are escaped too (XML 1.0,
/// 3.3.3).
void appendAttributeValue(std::string& xml, std::string_view text);

/// The type of the pool that this thread is writing, for the host's filter; empty outside a pool.
std::string_view& writtenPoolType();

/// Appends the four lines of a field with a value, unless the host's filter drops it.
///
///     <Field FieldType="string">
///       <Name>Result</Name>
///       <Value>OK</Value>
///     </Field>
void appendField(std::string& xml, std::string_view prefix, const Tag& field, std::string_view name,
                 std::string_view value, bool soap);

/// The text of a field's lines before and after its value; `name` is written as it is.
void appendFieldStart(std::string& xml, std::string_view prefix, const Tag& field,
                      std::string_view name, bool soap);
void appendFieldEnd(std::string& xml, std::string_view prefix);

/// The text of a number, without allocating a string.
class NumberText {
 public:
  /// Decimal, with a minus sign if negative.
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
