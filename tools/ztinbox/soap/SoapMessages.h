#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace zt::inbox {

enum class SoapRequest { kReport, kVersion, kOther };

/// Which request `body` is: decided by the name of the first element in the SOAP body (or of the
/// root element, without an envelope), with any prefix. The values of a report do not matter.
SoapRequest soapRequest(std::string_view body);

/// The configuration document of the inbox at `url` ("http://127.0.0.1:8025").
std::string configurationDocument(std::string_view url);

/// The response to a version request: a document with the root element `versioninfo`.
std::string versionDocument();

/// The response to a report (SOAP 1.1): accepted or refused. A refusal must not contain "true"
/// anywhere, since clients search the whole text for that word.
std::string reportAnswer(bool accepted);

/// How many bytes of an acceptance may be sent without a client accepting it as one.
std::size_t harmlessLength(std::string_view acceptance);

/// A log-in page of a network: neither acceptance nor refusal.
extern const std::string_view kGarbage;

}  // namespace zt::inbox
