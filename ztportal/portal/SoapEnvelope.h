#pragma once

#include <string_view>

namespace zt {

/// The envelope of both requests (SOAP 1.1), without a line end.
inline constexpr std::string_view kEnvelopeStart =
    "<SOAP-ENV:Envelope"
    " xmlns:SOAP-ENV=\"http://schemas.xmlsoap.org/soap/envelope/\""
    " xmlns:SOAP-ENC=\"http://schemas.xmlsoap.org/soap/encoding/\""
    " xmlns:xsi=\"http://www.w3.org/2001/XMLSchema-instance\""
    " xmlns:xsd=\"http://www.w3.org/2001/XMLSchema\">";
inline constexpr std::string_view kEnvelopeEnd = "</SOAP-ENV:Envelope>";
inline constexpr std::string_view kBodyStart = "  <SOAP-ENV:Body>";
inline constexpr std::string_view kBodyEnd = "  </SOAP-ENV:Body>";

/// Both requests declare the prefix "m" and then do without it: servers know them by the bare name.
inline constexpr std::string_view kReportingNamespace =
    " xmlns:m=\"http://reporting.kelvane.example/portal\"";

/// One request writes the encoding's URI with a slash at its end and the other without. Servers
/// compare the texts, so each keeps its own.
inline constexpr std::string_view kPostEncoding =
    " SOAP-ENV:encodingStyle=\"http://schemas.xmlsoap.org/soap/encoding/\"";
inline constexpr std::string_view kVersionEncoding =
    " SOAP-ENV:encodingStyle=\"http://schemas.xmlsoap.org/soap/encoding\"";

}  // namespace zt
