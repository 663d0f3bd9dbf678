#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <string_view>

/// The literals of the report's text, each of them once.
namespace zt {

inline constexpr std::string_view kSoapTypeAttribute = "xsi:type=\"";

/// A start tag in the two forms of a report: with its SOAP type attribute, and plain.
///
///     kName.text(true)     "<Name xsi:type=\"xsd:string\">"
///     kName.text(false)    "<Name>"
class Tag {
 public:
  /// `open` is all up to the attribute, `rest` all behind it.
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

// The two end tags of a generic array that do not match their start tags. Every server that reads
// these reports expects them so.
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

}  // namespace zt
