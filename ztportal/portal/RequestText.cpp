// SPDX-License-Identifier: Apache-2.0
#include "ztportal/portal/RequestText.h"

#include <array>
#include <cstddef>
#include <string_view>
#include <utility>

#include "ztportal/base/Text.h"
#include "ztportal/platform/time/DateText.h"
#include "ztportal/pools/Markup.h"

namespace zt {

namespace {

// The envelope of both requests (SOAP 1.1), without line ends.
constexpr std::string_view kEnvelopeStart =
    "<SOAP-ENV:Envelope"
    " xmlns:SOAP-ENV=\"http://schemas.xmlsoap.org/soap/envelope/\""
    " xmlns:SOAP-ENC=\"http://schemas.xmlsoap.org/soap/encoding/\""
    " xmlns:xsi=\"http://www.w3.org/2001/XMLSchema-instance\""
    " xmlns:xsd=\"http://www.w3.org/2001/XMLSchema\">";
constexpr std::string_view kEnvelopeEnd = "</SOAP-ENV:Envelope>";
constexpr std::string_view kBodyStart = "  <SOAP-ENV:Body>";
constexpr std::string_view kBodyEnd = "  </SOAP-ENV:Body>";

/// Both requests declare the prefix "m" but do not use it: servers expect the unprefixed name.
constexpr std::string_view kReportingNamespace =
    " xmlns:m=\"http://reporting.kelvane.example/portal\"";

// Only one of the requests ends the URI with a slash. Servers compare the text, so each request
// keeps its form.
constexpr std::string_view kPostEncoding =
    " SOAP-ENV:encodingStyle=\"http://schemas.xmlsoap.org/soap/encoding/\"";
constexpr std::string_view kVersionEncoding =
    " SOAP-ENV:encodingStyle=\"http://schemas.xmlsoap.org/soap/encoding\"";

/// The elements of the header.
constexpr std::array<std::pair<std::string_view, ZtString ReportHeader::*>, 5> kHeaderLines{{
    {"ReportID", &ReportHeader::reportId},
    {"MachineID", &ReportHeader::machineId},
    {"CustomerID", &ReportHeader::customerId},
    {"ApplicationID", &ReportHeader::applicationId},
    {"ApplicationVersion", &ReportHeader::applicationVersion},
}};
constexpr Tag kHeaderTagRest("", kXsdString, ">");

constexpr Tag kReport("<reportData", "com_Report", ">\r\n");
constexpr Tag kPools("  <Datas", "com_Pools", ">\r\n");

constexpr std::string_view kLineEnd = "\r\n";
constexpr std::string_view kSoapIndent = "       ";
// The indentation of the pools: four spaces more than `reportData`.
constinit const ZtString kSoapPoolPrefix = ZtString::constant<"           ">();
constinit const ZtString kPlainPoolPrefix = ZtString::constant<"    ">();

/// Enough for a typical report: an inventory, forty steps and thirty facts take 64 KiB.
constexpr std::size_t kUsualSize = std::size_t{80} * 1024;

/// Servers expect each of these elements, so a dropped value is empty.
void appendHeaderValue(std::string& xml, std::string_view name, std::string_view value) {
  if (valuesArePlain()) {
    xml += value;
  } else if (std::string filtered(value); passesValueFilter({}, name, filtered)) {
    appendValue(xml, filtered);
  }
}

}  // namespace

std::string reportText(const ReportHeader& header,
                       const std::vector<std::shared_ptr<ZtPortalPool>>& pools, bool soap) {
  if (pools.empty()) return "";  // hosts recognise an empty report by its empty text
  const Timestamps allInOneZone;
  const std::string_view indent = soap ? kSoapIndent : std::string_view();
  std::string xml;
  xml.reserve(kUsualSize);

  if (soap) {
    appendText(xml, kEnvelopeStart, kLineEnd, kBodyStart, kLineEnd,  //
               "    <postPoolDatas", kReportingNamespace, kPostEncoding, ">\r\n");
  } else {
    xml += "<?xml version=\"1.0\"?>\r\n";
  }
  appendText(xml, indent, kReport.text(soap));
  for (const auto& [name, value] : kHeaderLines) {
    appendText(xml, indent, "  <", name, kHeaderTagRest.text(soap));
    appendHeaderValue(xml, name, (header.*value).printed());
    appendText(xml, "</", name, ">", kLineEnd);
  }
  appendText(xml, indent, kPools.text(soap));

  const ZtString& poolPrefix = soap ? kSoapPoolPrefix : kPlainPoolPrefix;
  // A field of the host's may add a pool while it is written; none is ever removed.
  const std::size_t count = pools.size();
  for (std::size_t i = 0; i < count; ++i) pools[i]->addToXml(poolPrefix, xml, soap);

  appendText(xml, indent, "  </Datas>\r\n", indent, "</reportData>\r\n");
  if (soap) {
    appendText(xml, "    </postPoolDatas>\r\n", kBodyEnd, kLineEnd, kEnvelopeEnd, kLineEnd);
  }
  return xml;
}

ZtString testCustomerId(const ZtString& customerId) {
  if (customerId.isNull()) return nullptr;
  std::string id;
  appendText(id, customerId.view(), "_Test");
  return id;
}

std::string versionRequest() {
  std::string request;
  appendText(request, kEnvelopeStart, kBodyStart,                                 //
             "    <getVersionInfo", kReportingNamespace, kVersionEncoding, "/>",  //
             kBodyEnd, kEnvelopeEnd);
  return request;
}

}  // namespace zt
