// SPDX-License-Identifier: Apache-2.0
#include "tests/support/ReportOutline.h"

#include <algorithm>
#include <sstream>
#include <vector>

namespace zt::test {

namespace {

struct Line {
  std::size_t column = 0;
  std::string text;
};

/// "- x | y" becomes the lines "-" and, two columns behind it, "x" and "y".
std::vector<Line> linesOf(std::string_view outline) {
  std::vector<Line> lines;
  std::istringstream stream{std::string(outline)};
  for (std::string line; std::getline(stream, line);) {
    std::size_t column = line.find_first_not_of(' ');
    if (column == line.npos) continue;
    line.erase(0, column);
    if (line.starts_with('-')) {
      lines.push_back({column, "-"});
      column += 2;
      line.erase(0, 2);
    }
    while (!line.empty()) {
      const std::size_t end = std::min(line.find(" | "), line.size());
      lines.push_back({column, line.substr(0, end)});
      line.erase(0, end + 3);
    }
  }
  return lines;
}

class Writer {
 public:
  Writer(std::string_view outline, bool soap) : _lines(linesOf(outline)), _soap(soap) {}

  bool isAtEnd() const { return _at == _lines.size(); }

  std::string fields(const std::string& blanks) {
    std::string text;
    const std::size_t column = columnOfNext();
    while (!isAtEnd() && columnOfNext() == column) text += field(blanks);
    return text;
  }

  std::string element(const std::string& name, const std::string& type,
                      const std::string& attributes = "") const {
    return "<" + name + (_soap ? " xsi:type=\"" + type + "\"" : "") + attributes;
  }

 private:
  std::size_t columnOfNext() const { return isAtEnd() ? 0 : _lines[_at].column; }

  std::string field(const std::string& blanks) {
    const auto [column, line] = _lines[_at++];
    const std::string type = line.substr(0, line.find(' '));
    const std::size_t equals = line.find(" =");
    const std::size_t nameAt = std::min(type.size() + 1, line.size());
    const std::string name = line.substr(nameAt, equals == line.npos ? equals : equals - nameAt);
    const std::string inner = blanks + "  ";
    if (type == "none") {
      return blanks + element("Field", "com_Field", " type=\"none\"") + ">\n" + inner +
             element("Name", "xsd:string", " type=\"none\"") + ">" + name + "</Name>\n" + blanks +
             "</Field>\n";
    }
    const bool isArray = type == "array";
    const std::string kind = type == "records" ? "array" : type;
    std::string text = blanks + element("Field", "com_Field", " FieldType=\"" + kind + "\"") +
                       ">\n" + inner + element("Name", "xsd:string") + ">" + name +
                       (isArray ? "</Date>\n" : "</Name>\n");
    const std::string fieldsTag = inner + element("Fields", "com_Fields");
    const std::string fieldsEnd = inner + "</Fields>\n";
    if (isArray) {
      const bool isEmpty = columnOfNext() <= column;
      return text + fieldsTag + (isEmpty ? "/>\n" : ">\n" + fields(blanks + "    ") + fieldsEnd) +
             blanks + "</Data>\n";
    }
    if (type == "records") {
      while (columnOfNext() > column) {
        const std::size_t record = _lines[_at++].column;
        text += fieldsTag + ">\n";
        if (columnOfNext() > record) text += fields(blanks + "    ");
        text += fieldsEnd;
      }
    } else {
      const std::string value = equals + 3 < line.size() ? line.substr(equals + 3) : "";
      text += inner + element("Value", "xsd:string") + ">" + value + "</Value>\n";
    }
    return text + blanks + "</Field>\n";
  }

  std::vector<Line> _lines;
  std::size_t _at = 0;
  bool _soap;
};

}  // namespace

std::string fieldLines(std::string_view outline, std::size_t indent, bool soap) {
  return Writer(outline, soap).fields(std::string(indent, ' '));
}

std::string poolLines(const std::string& type, const std::string& date, std::string_view outline,
                      bool soap, std::size_t indent) {
  Writer writer(outline, soap);
  const std::string blanks(indent, ' ');
  const std::string inner = blanks + "  ";
  const std::string fieldsTag = inner + writer.element("Fields", "com_Fields");
  const std::string fields =
      writer.isAtEnd() ? "/>\n" : ">\n" + writer.fields(inner + "  ") + inner + "</Fields>\n";
  return blanks + writer.element("Data", "com_Pool", " Pool=\"" + type + "\"") + ">\n" + inner +
         writer.element("Date", "xsd:dateTime") + ">" + date + "</Date>\n" + fieldsTag + fields +
         blanks + "</Data>\n";
}

std::string crlf(std::string_view lines) {
  std::string text;
  for (const char byte : lines) {
    if (byte == '\n') text += '\r';
    text += byte;
  }
  return text;
}

}  // namespace zt::test
