#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace zt::test {

/// `lines`, which end with line feeds, with the line ends of a written report.
inline std::string crlf(std::string_view lines) {
  std::string text;
  for (const char byte : lines) {
    if (byte == '\n') text += '\r';
    text += byte;
  }
  return text;
}

/// Line 9 of a plain report is the first of `pools`.
inline std::string plainLines(const std::string& pools) {
  return "<?xml version=\"1.0\"?>\n"
         "<reportData>\n"
         "  <ReportID>{R}</ReportID>\n"
         "  <MachineID>{M}</MachineID>\n"
         "  <CustomerID>Kelvane</CustomerID>\n"
         "  <ApplicationID>{A}</ApplicationID>\n"
         "  <ApplicationVersion>2.1.77</ApplicationVersion>\n"
         "  <Datas>\n" +
         pools +
         "  </Datas>\n"
         "</reportData>\n";
}

/// A plain report with pools as the library writes them, behind four blanks.
inline std::string plainReportOf(const std::string& pools) {
  const std::string text = crlf(plainLines("@"));
  const std::size_t at = text.find('@');
  return text.substr(0, at) + pools + text.substr(at + 1);
}

/// Line 11 of a SOAP report is the first of `pools`.
inline std::string soapLines(const std::string& pools) {
  return "<SOAP-ENV:Envelope xmlns:SOAP-ENV=\"http://schemas.xmlsoap.org/soap/envelope/\""
         " xmlns:SOAP-ENC=\"http://schemas.xmlsoap.org/soap/encoding/\""
         " xmlns:xsi=\"http://www.w3.org/2001/XMLSchema-instance\""
         " xmlns:xsd=\"http://www.w3.org/2001/XMLSchema\">\n"
         "  <SOAP-ENV:Body>\n"
         "    <postPoolDatas xmlns:m=\"http://reporting.kelvane.example/portal\""
         " SOAP-ENV:encodingStyle=\"http://schemas.xmlsoap.org/soap/encoding/\">\n"
         "       <reportData xsi:type=\"com_Report\">\n"
         "         <ReportID xsi:type=\"xsd:string\">{R}</ReportID>\n"
         "         <MachineID xsi:type=\"xsd:string\">{M}</MachineID>\n"
         "         <CustomerID xsi:type=\"xsd:string\">Kelvane</CustomerID>\n"
         "         <ApplicationID xsi:type=\"xsd:string\">{A}</ApplicationID>\n"
         "         <ApplicationVersion xsi:type=\"xsd:string\">2.1.77</ApplicationVersion>\n"
         "         <Datas xsi:type=\"com_Pools\">\n" +
         pools +
         "         </Datas>\n"
         "       </reportData>\n"
         "    </postPoolDatas>\n"
         "  </SOAP-ENV:Body>\n"
         "</SOAP-ENV:Envelope>\n";
}

/// A pool of a plain report; line 12 is the first of `fields`.
inline std::string plainPool(const std::string& fields) {
  return "    <Data Pool=\"CUSTOM\">\n"
         "      <Date>2026-11-21T12:00:00.000UTC</Date>\n"
         "      <Fields>\n" +
         fields +
         "      </Fields>\n"
         "    </Data>\n";
}

/// A field of a plain report's pool, four lines.
inline std::string plainField(const std::string& name, const std::string& value,
                              const std::string& type = "string") {
  return "        <Field FieldType=\"" + type +
         "\">\n"
         "          <Name>" +
         name +
         "</Name>\n"
         "          <Value>" +
         value +
         "</Value>\n"
         "        </Field>\n";
}

}  // namespace zt::test
