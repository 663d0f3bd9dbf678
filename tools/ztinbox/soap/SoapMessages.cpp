// SPDX-License-Identifier: Apache-2.0
#include "tools/ztinbox/soap/SoapMessages.h"

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

constexpr auto kNowhere = std::string_view::npos;
/// The request element is within this many bytes.
constexpr std::size_t kEnvelopeBytes = std::size_t{64} * 1024;

SoapRequest requestNamed(std::string_view element) {
  if (element == "postPoolDatas") return SoapRequest::kReport;
  if (element == "getVersionInfo") return SoapRequest::kVersion;
  return SoapRequest::kOther;
}

/// Iterates over the elements of a text in the order of their start tags.
class StartTags {
 public:
  explicit StartTags(std::string_view text) : _text(text) {}

  /// The next element's name without its prefix; empty at the end of the text.
  std::string_view next() {
    for (;;) {
      _at = _text.find('<', _at);
      if (_at == kNowhere) return {};
      ++_at;
      if (_text.substr(_at).starts_with("!--")) {
        _at = _text.find("-->", _at);
        continue;
      }
      const std::string_view name = nameHere();
      if (!name.empty()) return name;
    }
  }

 private:
  std::string_view nameHere() const {
    const std::string_view rest = _text.substr(_at);
    const std::size_t end = rest.find_first_of(" \t\r\n/>?!<");
    if (end == kNowhere) return {};
    const std::string_view name = rest.substr(0, end);
    return name.substr(name.rfind(':') + 1);
  }

  std::string_view _text;
  std::size_t _at = 0;
};

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
  return "<versioninfo>" + std::string(kNameAndVersion) + "</versioninfo>";
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

SoapRequest soapRequest(std::string_view body) {
  StartTags tags(body.substr(0, kEnvelopeBytes));
  std::string_view name = tags.next();
  if (name != "Envelope") return requestNamed(name);
  while (!name.empty() && name != "Body") name = tags.next();
  return requestNamed(tags.next());
}

}  // namespace zt::inbox
