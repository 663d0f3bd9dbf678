#include "tools/ztinbox/soap/SoapAnswers.h"

#include "tools/ztinbox/Version.h"

namespace zt::inbox {

namespace {

constexpr std::string_view kResponseElement = "postPoolDatasResponse";

constexpr std::string_view kAnswerBegin =
    R"(<?xml version="1.0" encoding="UTF-8"?>
<SOAP-ENV:Envelope xmlns:SOAP-ENV="http://schemas.xmlsoap.org/soap/envelope/" xmlns:xsi="http://www.w3.org/2001/XMLSchema-instance" xmlns:xsd="http://www.w3.org/2001/XMLSchema">
  <SOAP-ENV:Body>
    <ns1:postPoolDatasResponse xmlns:ns1="http://reporting.kelvane.example/portal" SOAP-ENV:encodingStyle="http://schemas.xmlsoap.org/soap/encoding/">
      <return xsi:type="xsd:boolean">)";

constexpr std::string_view kAnswerEnd = R"(</return>
    </ns1:postPoolDatasResponse>
  </SOAP-ENV:Body>
</SOAP-ENV:Envelope>
)";

}  // namespace

const std::string_view kGarbage =
    "<!DOCTYPE html>\n<html><head><title>Welcome</title></head>"
    "<body>Please log in to use this network.</body></html>\n";

std::string configurationDocument(std::string_view url) {
  std::string document = "<configuration><defSOAP>";
  document.append(url).append("/soap</defSOAP><defTestSOAP>");
  document.append(url).append("/soap-test</defTestSOAP></configuration>");
  return document;
}

std::string versionDocument() {
  return "<versioninfo>" + std::string(nameAndVersion()) + "</versioninfo>";
}

std::string reportAnswer(bool accepted) {
  std::string answer(kAnswerBegin);
  answer += accepted ? "true" : "false";
  answer += kAnswerEnd;
  return answer;
}

std::size_t harmlessLength(std::string_view acceptance) {
  return acceptance.find(kResponseElement) + kResponseElement.size() / 2;
}

}  // namespace zt::inbox
