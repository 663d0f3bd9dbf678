// SPDX-License-Identifier: Apache-2.0
#include "tools/common/ReportReader.h"

#include <algorithm>
#include <array>
#include <utility>
#include <vector>

#include "tools/common/LineCursor.h"

namespace zt::reader {

namespace {

// The lines of a report without their indentation, as the library writes them.

/// A start tag in the two forms of a report.
struct Tag {
  std::string_view soap;
  std::string_view plain;

  constexpr std::string_view in(Form form) const { return form == Form::Soap ? soap : plain; }
};

constexpr std::string_view kEnvelope =
    "<SOAP-ENV:Envelope"
    " xmlns:SOAP-ENV=\"http://schemas.xmlsoap.org/soap/envelope/\""
    " xmlns:SOAP-ENC=\"http://schemas.xmlsoap.org/soap/encoding/\""
    " xmlns:xsi=\"http://www.w3.org/2001/XMLSchema-instance\""
    " xmlns:xsd=\"http://www.w3.org/2001/XMLSchema\">";
constexpr std::string_view kBody = "<SOAP-ENV:Body>";
constexpr std::string_view kRequest =
    "<postPoolDatas xmlns:m=\"http://reporting.kelvane.example/portal\""
    " SOAP-ENV:encodingStyle=\"http://schemas.xmlsoap.org/soap/encoding/\">";
constexpr std::string_view kRequestEnd = "</postPoolDatas>";
constexpr std::string_view kBodyEnd = "</SOAP-ENV:Body>";
constexpr std::string_view kEnvelopeEnd = "</SOAP-ENV:Envelope>";
constexpr std::string_view kDeclaration = "<?xml version=\"1.0\"?>";

constexpr Tag kReport{"<reportData xsi:type=\"com_Report\">", "<reportData>"};
constexpr std::string_view kReportEnd = "</reportData>";
constexpr Tag kPools{"<Datas xsi:type=\"com_Pools\">", "<Datas>"};
constexpr std::string_view kPoolsEnd = "</Datas>";

/// One line of the report's head.
struct Head {
  Tag tag;
  std::string_view end;
  std::string_view ParsedReport::*value;
};
constexpr std::array<Head, 5> kHeads{{
    {{"<ReportID xsi:type=\"xsd:string\">", "<ReportID>"}, "</ReportID>", &ParsedReport::reportId},
    {{"<MachineID xsi:type=\"xsd:string\">", "<MachineID>"},
     "</MachineID>",
     &ParsedReport::machineId},
    {{"<CustomerID xsi:type=\"xsd:string\">", "<CustomerID>"},
     "</CustomerID>",
     &ParsedReport::customerId},
    {{"<ApplicationID xsi:type=\"xsd:string\">", "<ApplicationID>"},
     "</ApplicationID>",
     &ParsedReport::applicationId},
    {{"<ApplicationVersion xsi:type=\"xsd:string\">", "<ApplicationVersion>"},
     "</ApplicationVersion>",
     &ParsedReport::applicationVersion},
}};

constexpr Tag kPool{"<Data xsi:type=\"com_Pool\" Pool=\"", "<Data Pool=\""};
constexpr std::string_view kPoolTypeEnd = "\">";
constexpr std::string_view kPoolEnd = "</Data>";
constexpr Tag kDate{"<Date xsi:type=\"xsd:dateTime\">", "<Date>"};
constexpr std::string_view kDateEnd = "</Date>";

constexpr Tag kFields{"<Fields xsi:type=\"com_Fields\">", "<Fields>"};
constexpr Tag kNoFields{"<Fields xsi:type=\"com_Fields\"/>", "<Fields/>"};
constexpr std::string_view kFieldsEnd = "</Fields>";

/// The start of a field of each type.
struct FieldTag {
  Tag tag;
  FieldType type;
};
constexpr std::array<FieldTag, 6> kFieldTags{{
    {{"<Field xsi:type=\"com_Field\" FieldType=\"string\">", "<Field FieldType=\"string\">"},
     FieldType::String},
    {{"<Field xsi:type=\"com_Field\" FieldType=\"integer\">", "<Field FieldType=\"integer\">"},
     FieldType::Integer},
    {{"<Field xsi:type=\"com_Field\" FieldType=\"float\">", "<Field FieldType=\"float\">"},
     FieldType::Float},
    {{"<Field xsi:type=\"com_Field\" FieldType=\"boolean\">", "<Field FieldType=\"boolean\">"},
     FieldType::Boolean},
    {{"<Field xsi:type=\"com_Field\" FieldType=\"array\">", "<Field FieldType=\"array\">"},
     FieldType::Array},
    {{"<Field xsi:type=\"com_Field\" type=\"none\">", "<Field type=\"none\">"}, FieldType::None},
}};
constexpr std::string_view kFieldEnd = "</Field>";
constexpr Tag kName{"<Name xsi:type=\"xsd:string\">", "<Name>"};
constexpr Tag kBareName{"<Name xsi:type=\"xsd:string\" type=\"none\">", "<Name type=\"none\">"};
constexpr std::string_view kNameEnd = "</Name>";
constexpr Tag kValue{"<Value xsi:type=\"xsd:string\">", "<Value>"};
constexpr std::string_view kValueEnd = "</Value>";

// A generic array is deliberately closed by these two.
constexpr std::string_view kArrayNameEnd = "</Date>";
constexpr std::string_view kArrayEnd = "</Data>";

// The indentation of the parts of a report.
constexpr std::size_t kRequestBlanks = 4;
constexpr std::size_t kSoapReportBlanks = 7;
constexpr std::size_t kPoolBlanks = 4;   // added to the report's
constexpr std::size_t kInnerBlanks = 2;  // of the lines within an element
constexpr std::size_t kFieldBlanks = 4;  // of a field in its parent

class Reader {
 public:
  explicit Reader(std::string_view text) : _lines(text) { _report.text = text; }

  void read() {
    if (_lines.atEnd()) return;
    readFormAndStart();
    readHeads();
    while (_lines.startsWith({_poolBlanks, "<Data"})) readPool();
    readEnd();
  }

  /// Finds the pools after the position where reading stopped, by the indentation of their lines.
  void findLaterPools() {
    if (_report.pools.empty()) return;
    const std::string_view text = _report.text;
    std::string start = "\n";
    start.append(_poolBlanks, ' ').append(in(kPool));
    std::size_t at = text.find(start, _lines.offset() - 1);
    while (at != std::string_view::npos) {
      at += start.size();
      const std::string_view line = text.substr(at, text.find('\n', at) - at);
      const std::size_t end = line.rfind(kPoolTypeEnd);
      if (end != std::string_view::npos) _report.laterPools.push_back(line.substr(0, end));
      at = text.find(start, at);
    }
  }

  /// The content that has been read; open lists end here.
  ParsedReport take() && {
    const std::size_t end = _report.fields.size();
    for (const OpenList& list : _open) {
      if (list.type != FieldType::None) _report.fields[list.owner].size = end - list.owner;
    }
    for (const std::size_t records : _openRecords) {
      _report.fields[records].size = end - records;
    }
    if (!_report.pools.empty()) _report.pools.back().end = end;
    return std::move(_report);
  }

 private:
  /// A list of fields whose end has not been reached yet: of a pool, a generic array or a record.
  struct OpenList {
    std::size_t owner;  // index of the array or record
    FieldType type;     // None: the pool's own
  };

  std::string_view in(const Tag& tag) const { return tag.in(_report.form); }
  /// A start tag without its ">". An element without a value may end in "/>" instead.
  static std::string_view open(std::string_view tag) { return tag.substr(0, tag.size() - 1); }

  void readFormAndStart() {
    if (_lines.startsWith({0, kEnvelope.substr(0, kEnvelope.find(' '))})) {
      _report.form = Form::Soap;
      _blanks = kSoapReportBlanks;
      _lines.takeLine({0, kEnvelope});
      _lines.takeLine({2, kBody});
      _lines.takeLine({kRequestBlanks, kRequest});
    } else if (_lines.startsWith({0, kDeclaration})) {
      _report.form = Form::Plain;
      _lines.takeLine({0, kDeclaration});
    } else {
      _lines.failInLine(quoted("<SOAP-ENV:Envelope").append(" or ").append(quoted(kDeclaration)));
    }
    _poolBlanks = _blanks + kPoolBlanks;
    _lines.takeLine({_blanks, in(kReport)});
  }

  void readHeads() {
    const std::size_t blanks = _blanks + kInnerBlanks;
    for (std::size_t i = 0; i < kHeads.size(); ++i) {
      const Tag& next = i + 1 < kHeads.size() ? kHeads[i + 1].tag : kPools;
      _report.*kHeads[i].value =
          _lines.takeElement({blanks, in(kHeads[i].tag)}, kHeads[i].end, {blanks, open(in(next))});
    }
    _lines.takeLine({blanks, in(kPools)});
  }

  void readEnd() {
    const std::size_t blanks = _blanks + kInnerBlanks;
    if (_report.pools.empty() || !_lines.startsWith({blanks, kPoolsEnd})) {
      _lines.failInLine(oneOf(_poolBlanks, "<Data", blanks, kPoolsEnd));
    }
    _lines.takeLine({blanks, kPoolsEnd});
    _lines.takeLine({_blanks, kReportEnd});
    if (_report.form == Form::Soap) {
      _lines.takeLine({kRequestBlanks, kRequestEnd});
      _lines.takeLine({2, kBodyEnd});
      _lines.takeLine({0, kEnvelopeEnd});
    }
    if (!_lines.atEnd()) _lines.failInLine("the end of the text");
  }

  void readPool() {
    const std::size_t inner = _poolBlanks + kInnerBlanks;
    _lines.takeStart({_poolBlanks, in(kPool)});
    const std::string_view type = _lines.takeValue(kPoolTypeEnd, {inner, "<Date"});
    Pool& pool = _report.pools.emplace_back();
    pool.type = type;
    pool.begin = pool.end = _report.fields.size();
    pool.date = _lines.takeElement({inner, in(kDate)}, kDateEnd, {inner, "<Fields"});
    pool.isEmptyTag = _lines.takeLineIf({inner, in(kNoFields)});
    if (!pool.isEmptyTag) {
      _lines.takeLine({inner, in(kFields)});
      _open.push_back({0, FieldType::None});
      readFields();
    }
    _lines.takeLine({_poolBlanks, kPoolEnd});
    pool.end = _report.fields.size();
  }

  /// The indentation of the owner of the innermost open list.
  std::size_t ownerBlanks() const { return _poolBlanks + kFieldBlanks * (_open.size() - 1); }

  /// Reads until the pool's list of fields, the outermost one, is closed.
  void readFields() {
    while (!_open.empty()) {
      const std::size_t blanks = ownerBlanks();
      if (_lines.takeLineIf({blanks + kInnerBlanks, kFieldsEnd})) {
        closeList(blanks);
      } else {
        readField(blanks + kFieldBlanks);
      }
    }
  }

  void closeList(std::size_t blanks) {
    const OpenList list = _open.back();
    _open.pop_back();
    if (list.type == FieldType::None) return;
    Field& owner = _report.fields[list.owner];
    owner.size = _report.fields.size() - list.owner;
    if (list.type == FieldType::Array) {
      _lines.takeLine({blanks, kArrayEnd});
    } else {
      readRecordOrEnd(blanks);
    }
  }

  void readField(std::size_t blanks) {
    const auto* const found =
        std::find_if(kFieldTags.begin(), kFieldTags.end(), [&](const FieldTag& candidate) {
          return _lines.startsWith({blanks, in(candidate.tag)});
        });
    if (found == kFieldTags.end()) {
      _lines.failInLine(oneOf(blanks, "<Field", blanks - kInnerBlanks, kFieldsEnd));
    }
    _lines.takeLine({blanks, in(found->tag)});
    if (found->type == FieldType::Array) return readArray(blanks);

    const bool isBare = found->type == FieldType::None;
    const std::size_t inner = blanks + kInnerBlanks;
    Field field;
    field.type = found->type;
    const LineCursor::Start end{blanks, kFieldEnd};
    if (isBare) {
      field.name = _lines.takeElement({inner, in(kBareName)}, kNameEnd, end);
    } else {
      field.name = _lines.takeElement({inner, in(kName)}, kNameEnd, {inner, open(in(kValue))});
      field.value = _lines.takeElement({inner, in(kValue)}, kValueEnd, end);
    }
    _lines.takeLine({blanks, kFieldEnd});
    _report.fields.push_back(field);
  }

  /// Reads the beginning of an array or a list of records, up to its first field. The end tag of
  /// its name tells which of the two it is; the names of record lists are constants without line
  /// ends.
  void readArray(std::size_t blanks) {
    const std::size_t inner = blanks + kInnerBlanks;
    const std::size_t index = _report.fields.size();
    Field array;
    _lines.takeStart({inner, in(kName)});
    if (_lines.lineEndsWith(kNameEnd)) {
      array.type = FieldType::Records;
      array.name = _lines.takeValue(kNameEnd, {inner, in(kFields)});
      _report.fields.push_back(array);
      _openRecords.push_back(index);
      return readRecordOrEnd(blanks);
    }
    array.type = FieldType::Array;
    array.name = _lines.takeValue(kArrayNameEnd, {inner, "<Fields"});
    array.isEmptyTag = _lines.takeLineIf({inner, in(kNoFields)});
    _report.fields.push_back(array);
    if (array.isEmptyTag) {
      _lines.takeLine({blanks, kArrayEnd});
    } else {
      _lines.takeLine({inner, in(kFields)});
      _open.push_back({index, FieldType::Array});
    }
  }

  /// Reads what follows a record in the innermost list of records.
  void readRecordOrEnd(std::size_t blanks) {
    const std::string_view here = _lines.here();
    if (_lines.takeLineIf({blanks + kInnerBlanks, in(kFields)})) {
      Field record;
      record.type = FieldType::Record;
      record.name = here;
      _open.push_back({_report.fields.size(), FieldType::Record});
      _report.fields.push_back(record);
    } else if (_lines.takeLineIf({blanks, kFieldEnd})) {
      const std::size_t index = _openRecords.back();
      _openRecords.pop_back();
      _report.fields[index].size = _report.fields.size() - index;
    } else {
      _lines.failInLine(oneOf(blanks + kInnerBlanks, in(kFields), blanks, kFieldEnd));
    }
  }

  static std::string oneOf(std::size_t blanks, std::string_view tag, std::size_t otherBlanks,
                           std::string_view otherTag) {
    std::string text = quoted(tag);
    text.append(" after ").append(std::to_string(blanks)).append(" blanks or ");
    return text.append(quoted(otherTag)).append(" after ").append(std::to_string(otherBlanks));
  }

  LineCursor _lines;
  ParsedReport _report;
  std::size_t _blanks = 0;      // before the report's own lines
  std::size_t _poolBlanks = 0;  // before a pool's
  std::vector<OpenList> _open;
  std::vector<std::size_t> _openRecords;
};

std::string message(Place place, const std::string& reason) {
  std::string text = "line ";
  text.append(std::to_string(place.line)).append(", column ");
  return text.append(std::to_string(place.column)).append(": ").append(reason);
}

}  // namespace

Place placeIn(std::string_view text, std::size_t offset) {
  const std::string_view before = text.substr(0, offset);
  const auto lineEnds = static_cast<std::size_t>(std::count(before.begin(), before.end(), '\n'));
  const std::size_t lineStart = before.rfind('\n') + 1;  // 0 on the first line
  return {lineEnds + 1, before.size() - lineStart + 1};
}

ReadError::ReadError(Place place, const std::string& reason)
    : std::runtime_error(message(place, reason)), _place(place) {}

ParsedReport readReport(std::string_view text) {
  Reader reader(text);
  reader.read();
  return std::move(reader).take();
}

PartialReport readReportUpToFault(std::string_view text) {
  Reader reader(text);
  std::optional<ReadError> fault;
  try {
    reader.read();
  } catch (const ReadError& error) {
    fault = error;
    reader.findLaterPools();
  }
  return {std::move(reader).take(), std::move(fault)};
}

}  // namespace zt::reader
