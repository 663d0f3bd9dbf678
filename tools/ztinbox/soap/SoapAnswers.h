#pragma once

#include <string>
#include <string_view>

namespace zt::inbox {

/// The configuration document of the inbox at `url` ("http://127.0.0.1:8025").
std::string configurationDocument(std::string_view url);

/// The answer to a version request: a document whose root element is `versioninfo`.
std::string versionDocument();

/// The answer to a report (SOAP 1.1): taken, or not. The refusal holds no "true" anywhere, since
/// clients look for that word in the whole text.
std::string reportAnswer(bool accepted);

/// How much of an acceptance may be sent before a client takes it for one.
std::size_t harmlessLength(std::string_view acceptance);

/// What a network's log-in page answers to everything: neither acceptance nor refusal.
extern const std::string_view kGarbage;

inline constexpr const char* kXmlType = "text/xml; charset=utf-8";
inline constexpr const char* kHtmlType = "text/html; charset=utf-8";
inline constexpr const char* kTextType = "text/plain; charset=utf-8";

}  // namespace zt::inbox
