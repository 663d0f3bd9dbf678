#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace zt::test {

/// The text that a pool should write, built line by line and independently of the library:
///
///     ExpectedText text(true, 4);       // with SOAP types, four blanks before the pool
///     text.beginPool("DIAGNOSE", "2026-11-21T12:00:00.123UTC");
///     text.field("string", "NAME", "value");
///     EXPECT_EQ(written(*pool, "    ", true), text.endPool());
class ExpectedText {
 public:
  explicit ExpectedText(bool soap, std::size_t indent = 0) : _soap(soap), _indent(indent) {}

  ExpectedText& beginPool(std::string_view type, std::string_view date) {
    line(0, "<Data" + typed("com_Pool") + " Pool=\"" + std::string(type) + "\">");
    line(2, "<Date" + typed("xsd:dateTime") + ">" + std::string(date) + "</Date>");
    return line(2, "<Fields" + typed("com_Fields") + ">");
  }
  std::string endPool() {
    line(2, "</Fields>");
    return line(0, "</Data>")._text;
  }

  ExpectedText& field(std::string_view type, std::string_view name, std::string_view value) {
    return fieldAt(4, type, name, value);
  }

  ExpectedText& beginArray(std::string_view name) {
    line(4, "<Field" + typed("com_Field") + " FieldType=\"array\">");
    return line(6, "<Name" + typed("xsd:string") + ">" + std::string(name) + "</Name>");
  }
  ExpectedText& beginRecord() { return line(6, "<Fields" + typed("com_Fields") + ">"); }
  ExpectedText& recordField(std::string_view type, std::string_view name, std::string_view value) {
    return fieldAt(8, type, name, value);
  }
  ExpectedText& endRecord() { return line(6, "</Fields>"); }
  ExpectedText& endArray() { return line(4, "</Field>"); }

 private:
  std::string typed(std::string_view type) const {
    return _soap ? " xsi:type=\"" + std::string(type) + "\"" : "";
  }
  ExpectedText& line(std::size_t depth, const std::string& content) {
    _text += std::string(_indent + depth, ' ') + content + "\r\n";
    return *this;
  }
  ExpectedText& fieldAt(std::size_t depth, std::string_view type, std::string_view name,
                        std::string_view value) {
    line(depth, "<Field" + typed("com_Field") + " FieldType=\"" + std::string(type) + "\">");
    line(depth + 2, "<Name" + typed("xsd:string") + ">" + std::string(name) + "</Name>");
    line(depth + 2, "<Value" + typed("xsd:string") + ">" + std::string(value) + "</Value>");
    return line(depth, "</Field>");
  }

  bool _soap;
  std::size_t _indent;
  std::string _text;
};

inline constexpr std::string_view kNoonText = "2026-11-21T12:00:00.123UTC";
inline constexpr std::string_view kLaterText = "2026-11-21T12:00:01.250UTC";

}  // namespace zt::test
