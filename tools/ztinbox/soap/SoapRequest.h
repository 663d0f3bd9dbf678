#pragma once

#include <string_view>

namespace zt::inbox {

enum class SoapRequest { kReport, kVersion, kOther };

/// Which request `body` holds: decided by the name of the first element in the SOAP body (or of
/// the document's element, without an envelope), whatever its prefix. What stands in a report's
/// values does not count.
SoapRequest soapRequest(std::string_view body);

}  // namespace zt::inbox
