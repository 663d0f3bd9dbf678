// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace zt::inbox {

enum class SoapRequest { kReport, kVersion, kOther };

/// Which request `body` is. The name of the first element in the SOAP body decides (or that of the
/// root element, if there is no envelope), with any prefix. The content of a report does not
/// matter.
SoapRequest soapRequest(std::string_view body);

/// The configuration document of the inbox at `url` ("http://127.0.0.1:8025").
std::string configurationDocument(std::string_view url);

/// The response to a version request: a document with the root element `versioninfo`.
std::string versionDocument();

/// The response to a report (SOAP 1.1). A refusal must not contain "true" anywhere, because clients
/// search the whole text for that word.
std::string reportAnswer(bool accepted);

/// The length of a beginning of `acceptance` that no client treats as an acceptance.
std::size_t harmlessLength(std::string_view acceptance);

/// The login page of a network, which is neither an acceptance nor a refusal.
extern const std::string_view kGarbage;

}  // namespace zt::inbox
