// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "tests/unit/tools/common/ReportText.h"

namespace zt::test {

/// Size in bytes of the largest report that the inbox accepts.
inline constexpr std::size_t kLargestReport = 64UL * 1024 * 1024;

/// `piece`, as often as `size` bytes need.
inline std::string repeated(const std::string& piece, std::size_t size) {
  std::string text;
  text.reserve(size + piece.size());
  while (text.size() < size) text += piece;
  return text;
}

/// Writes a report as the library does: unescaped, line by line.
struct SampleReport {
  std::string reportId = "{0F6B1C5E-0000-4000-8000-000000000001}";
  std::string machineId = "{11111111-2222-3333-4444-555555555555}";
  std::string customerId = "Kelvane";
  std::string applicationId = "{7C1B7F6E-5B0B-4F0E-9C53-0D1B9B8F0A11}";
  std::string applicationVersion = "2.1.77";
  std::vector<std::string> pools{"EXECUTION"};
  std::string name = "EDITION";  ///< of the field that each pool has
  std::string value = "Home";
  std::string moreFields;  ///< lines behind it

  std::string text() const {
    std::string datas;
    for (const std::string& pool : pools) {
      datas += "           <Data xsi:type=\"com_Pool\" Pool=\"" + pool +
               "\">\r\n"
               "             <Date xsi:type=\"xsd:dateTime\">2026-11-21T12:00:00.123UTC</Date>\r\n"
               "             <Fields xsi:type=\"com_Fields\">\r\n" +
               field(name, value) + moreFields +
               "             </Fields>\r\n"
               "           </Data>\r\n";
    }
    // From the end to the beginning, so that no value is taken for a mark.
    std::string report = crlf(soapLines("@"));
    const std::pair<std::string_view, const std::string&> marks[] = {
        {"@", datas},           {"2.1.77", applicationVersion},
        {"{A}", applicationId}, {"Kelvane", customerId},
        {"{M}", machineId},     {"{R}", reportId}};
    for (const auto& [mark, content] : marks) {
      report.replace(report.find(mark), mark.size(), content);
    }
    return report;
  }

  /// The four lines of a string field.
  static std::string field(const std::string& name, const std::string& value) {
    const std::string indent(15, ' ');
    return indent + "<Field xsi:type=\"com_Field\" FieldType=\"string\">\r\n" +  //
           indent + "  <Name xsi:type=\"xsd:string\">" + name + "</Name>\r\n" +  //
           indent + "  <Value xsi:type=\"xsd:string\">" + value + "</Value>\r\n" + indent +
           "</Field>\r\n";
  }
};

inline SampleReport reportOf(std::string customerId) {
  SampleReport report;
  report.customerId = std::move(customerId);
  return report;
}

inline SampleReport reportWithId(std::string reportId) {
  SampleReport report;
  report.reportId = std::move(reportId);
  return report;
}

/// The library's request for the server's version.
inline constexpr std::string_view kVersionRequest =
    "<SOAP-ENV:Envelope xmlns:SOAP-ENV=\"http://schemas.xmlsoap.org/soap/envelope/\">"
    "  <SOAP-ENV:Body>"
    "    <getVersionInfo xmlns:m=\"http://reporting.kelvane.example/portal\"/>"
    "  </SOAP-ENV:Body>"
    "</SOAP-ENV:Envelope>";

}  // namespace zt::test
