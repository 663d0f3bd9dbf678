// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <string>

#include "tests/support/ReportOutline.h"

namespace zt::test {

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
  const std::string empty = poolLines("CUSTOM", "2026-11-21T12:00:00.000UTC", "", false, 4);
  const std::string list = "<Fields>\n" + fields + "      </Fields>";
  return std::string(empty).replace(empty.find("<Fields/>"), 9, list);
}

/// A field of a plain report's pool, four lines. Name and value can be any.
inline std::string plainField(const std::string& name, const std::string& value,
                              const std::string& type = "string") {
  const std::string blanks(8, ' ');
  return blanks + "<Field FieldType=\"" + type + "\">\n" + blanks + "  <Name>" + name +
         "</Name>\n" + blanks + "  <Value>" + value + "</Value>\n" + blanks + "</Field>\n";
}

/// The fields of an outline (`ReportOutline.h`) in a plain report's pool.
inline std::string plainFields(std::string_view outline) { return fieldLines(outline, 8); }

}  // namespace zt::test
