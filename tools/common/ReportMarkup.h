#pragma once

#include <array>
#include <string_view>

#include "tools/common/Report.h"

/// The lines of a report without their blanks, as the library writes them.
namespace zt::reader {

/// A start tag in the two forms of a report.
struct Tag {
  std::string_view soap;
  std::string_view plain;

  constexpr std::string_view in(Form form) const { return form == Form::Soap ? soap : plain; }
};

inline constexpr std::string_view kEnvelope =
    "<SOAP-ENV:Envelope"
    " xmlns:SOAP-ENV=\"http://schemas.xmlsoap.org/soap/envelope/\""
    " xmlns:SOAP-ENC=\"http://schemas.xmlsoap.org/soap/encoding/\""
    " xmlns:xsi=\"http://www.w3.org/2001/XMLSchema-instance\""
    " xmlns:xsd=\"http://www.w3.org/2001/XMLSchema\">";
inline constexpr std::string_view kBody = "<SOAP-ENV:Body>";
inline constexpr std::string_view kRequest =
    "<postPoolDatas xmlns:m=\"http://reporting.kelvane.example/portal\""
    " SOAP-ENV:encodingStyle=\"http://schemas.xmlsoap.org/soap/encoding/\">";
inline constexpr std::string_view kRequestEnd = "</postPoolDatas>";
inline constexpr std::string_view kBodyEnd = "</SOAP-ENV:Body>";
inline constexpr std::string_view kEnvelopeEnd = "</SOAP-ENV:Envelope>";
inline constexpr std::string_view kDeclaration = "<?xml version=\"1.0\"?>";

inline constexpr Tag kReport{"<reportData xsi:type=\"com_Report\">", "<reportData>"};
inline constexpr std::string_view kReportEnd = "</reportData>";
inline constexpr Tag kPools{"<Datas xsi:type=\"com_Pools\">", "<Datas>"};
inline constexpr std::string_view kPoolsEnd = "</Datas>";

/// One line of the report's head.
struct Head {
  Tag tag;
  std::string_view end;
  std::string_view Report::*value;
};
inline constexpr std::array<Head, 5> kHeads{{
    {{"<ReportID xsi:type=\"xsd:string\">", "<ReportID>"}, "</ReportID>", &Report::reportId},
    {{"<MachineID xsi:type=\"xsd:string\">", "<MachineID>"}, "</MachineID>", &Report::machineId},
    {{"<CustomerID xsi:type=\"xsd:string\">", "<CustomerID>"},
     "</CustomerID>",
     &Report::customerId},
    {{"<ApplicationID xsi:type=\"xsd:string\">", "<ApplicationID>"},
     "</ApplicationID>",
     &Report::applicationId},
    {{"<ApplicationVersion xsi:type=\"xsd:string\">", "<ApplicationVersion>"},
     "</ApplicationVersion>",
     &Report::applicationVersion},
}};

inline constexpr Tag kPool{"<Data xsi:type=\"com_Pool\" Pool=\"", "<Data Pool=\""};
inline constexpr std::string_view kPoolTypeEnd = "\">";
inline constexpr std::string_view kPoolEnd = "</Data>";
inline constexpr Tag kDate{"<Date xsi:type=\"xsd:dateTime\">", "<Date>"};
inline constexpr std::string_view kDateEnd = "</Date>";

inline constexpr Tag kFields{"<Fields xsi:type=\"com_Fields\">", "<Fields>"};
inline constexpr Tag kNoFields{"<Fields xsi:type=\"com_Fields\"/>", "<Fields/>"};
inline constexpr std::string_view kFieldsEnd = "</Fields>";

/// The start of a field of each type.
struct FieldTag {
  Tag tag;
  FieldType type;
};
inline constexpr std::array<FieldTag, 6> kFieldTags{{
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
inline constexpr std::string_view kFieldEnd = "</Field>";
inline constexpr Tag kName{"<Name xsi:type=\"xsd:string\">", "<Name>"};
inline constexpr Tag kBareName{"<Name xsi:type=\"xsd:string\" type=\"none\">",
                               "<Name type=\"none\">"};
inline constexpr std::string_view kNameEnd = "</Name>";
inline constexpr Tag kValue{"<Value xsi:type=\"xsd:string\">", "<Value>"};
inline constexpr std::string_view kValueEnd = "</Value>";

// A generic array is closed by these two, on purpose.
inline constexpr std::string_view kArrayNameEnd = "</Date>";
inline constexpr std::string_view kArrayEnd = "</Data>";

}  // namespace zt::reader
