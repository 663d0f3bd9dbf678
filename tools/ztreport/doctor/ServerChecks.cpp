#include <stdlib.h>

#include <string_view>

#include "tools/ztreport/doctor/Checks.h"

namespace zt::tools {

namespace {

constexpr const char* kNoUrl = "the configuration URL cannot be used";
constexpr const char* kUnsteady =
    "check whether the server or the network is slow: the whole response must arrive within two "
    "seconds";

/// The library's request for the server's version.
constexpr const char* kVersionRequest =
    "<SOAP-ENV:Envelope xmlns:SOAP-ENV=\"http://schemas.xmlsoap.org/soap/envelope/\""
    " xmlns:SOAP-ENC=\"http://schemas.xmlsoap.org/soap/encoding/\""
    " xmlns:xsi=\"http://www.w3.org/2001/XMLSchema-instance\""
    " xmlns:xsd=\"http://www.w3.org/2001/XMLSchema\">"
    "  <SOAP-ENV:Body>"
    "    <getVersionInfo xmlns:m=\"http://reporting.kelvane.example/portal\""
    " SOAP-ENV:encodingStyle=\"http://schemas.xmlsoap.org/soap/encoding\"/>"
    "  </SOAP-ENV:Body>"
    "</SOAP-ENV:Envelope>";

std::string text(const ZtString& value) { return std::string(value.view()); }

ProxyChoice proxyOf(const WebAddress& address) {
  return proxyFor(address.scheme, address.host, [](const char* name) { return ::getenv(name); });
}

std::string noXml(const ZtXMLError& error) {
  std::string reason = "the response is not XML (";
  if (error.line != 0) {
    reason.append("line ").append(std::to_string(error.line));
    reason.append(", column ").append(std::to_string(error.column)).append(": ");
  }
  return reason + text(error.reason) + ")";
}

/// Why the library cannot use a response; empty when it is an XML document.
std::string faultOf(const Response& response, std::shared_ptr<ZtXMLDocument>& document) {
  if (!response.failure.empty()) return response.failure;
  if (response.status < 200 || response.status > 299) {
    return "the server responds with status " + std::to_string(response.status);
  }
  ZtXMLError error;
  document = ZtXMLDocument::parse(response.body, ZtXMLKeep::Content, &error);
  return document == nullptr ? noXml(error) : "";
}

bool isTestMode(ZtPortalData& document) {
  document.addPool("DOCTOR", ZtDate::now());
  return document.getSoapString().find(text(document.customerId()) + "_Test</CustomerID>") !=
         std::string::npos;
}

/// Why the library, which gives no reason, read no configuration.
Finding whyNoConfiguration(const Subject& subject) {
  std::shared_ptr<ZtXMLDocument> document;
  const std::string fault = faultOf(request(subject.configurationUrl), document);
  if (!fault.empty()) {
    return failed(fault, "open " + subject.configuration->shown +
                             " in a browser on this machine; it must show the customer's "
                             "configuration document");
  }
  const auto url = ZtUtils::childNamed(*document->rootElement(), "defSOAP");
  if (!url || text(url->text()).find_first_not_of(" \t\r\n") == std::string::npos) {
    return failed(
        "the configuration names no report URL: its root element has no <defSOAP> element "
        "with text",
        "add the URL to the customer's configuration document");
  }
  return failed("read only at the second request", kUnsteady);
}

/// Why the library did not receive the version.
Finding whyNoVersion(const Subject& subject) {
  std::shared_ptr<ZtXMLDocument> document;
  const std::string url = text(subject.isInTestMode ? subject.document->reportTestUrl()
                                                    : subject.document->reportUrl());
  const std::string fault = faultOf(request(url, kVersionRequest), document);
  const std::string& shown = subject.server->shown;
  if (!fault.empty()) {
    return failed(fault, "check that the server at " + shown +
                             " is running, and that no firewall blocks this machine");
  }
  const auto version = ZtUtils::childNamed(document->documentNode(), "versioninfo");
  if (!version || text(version->text()).find_first_not_of(" \t\r\n") == std::string::npos) {
    return failed("the response is not a <versioninfo> element with text",
                  "check that " + shown + " is a reporting server");
  }
  return failed("received only at the second request", kUnsteady);
}

}  // namespace

Finding checkConfigurationUrl(Subject& subject) {
  subject.configuration = webAddress(subject.configurationUrl);
  if (subject.configuration) return ok(subject.configuration->shown);
  if (subject.configurationUrl.empty()) return failed("empty", "give one with --config-url");
  return failed(subject.configurationUrl + " is not an http or https URL",
                "give a complete URL, such as http://127.0.0.1:8025/reporting/kelvane.xml");
}

Finding checkNameLookup(Subject& subject) {
  if (!subject.configuration) return skipped(kNoUrl);
  const ProxyChoice choice = proxyOf(*subject.configuration);
  const auto proxy = choice.url.empty() ? std::nullopt : proxyAddress(choice.url);
  if (!choice.url.empty() && !proxy) return skipped("the proxy's URL cannot be used");
  // A proxy resolves the server's name itself.
  const std::string& host = proxy ? proxy->host : subject.configuration->host;
  const std::string whose = proxy ? " (the proxy)" : "";
  std::string addresses;
  const std::string failure = lookUp(host, addresses);
  if (failure.empty()) return ok(host + whose + " is " + addresses);
  return failed(host + whose + ": " + failure,
                "check the name, and that this machine can resolve names (resolv.conf)");
}

Finding checkProxy(Subject& subject) {
  if (!subject.configuration) return skipped(kNoUrl);
  const std::string& scheme = subject.configuration->scheme;
  const ProxyChoice choice = proxyOf(*subject.configuration);
  if (choice.url.empty() && !choice.variable.empty()) {
    return ok("none: " + choice.variable + " names " + subject.configuration->host);
  }
  const char* const upperCase = ::getenv("HTTP_PROXY");
  if (choice.url.empty() && scheme == "http" && upperCase != nullptr && *upperCase != '\0') {
    return warning("none: HTTP_PROXY is set, but http uses only http_proxy",
                   "set http_proxy if you need the proxy");
  }
  if (choice.url.empty()) return ok("none: neither " + scheme + "_proxy nor all_proxy is set");

  const auto proxy = proxyAddress(choice.url);
  if (!proxy) {
    return failed(choice.variable + " is not a proxy URL",
                  "set it to a URL such as http://127.0.0.1:3128, or unset it");
  }
  const std::string what = proxy->shown + " because of " + choice.variable;
  const std::string failure = connectTo(proxy->host, proxy->port);
  if (failure.empty()) return ok(what);
  return failed(what + ": " + failure, "start the proxy, unset " + choice.variable + ", or name " +
                                           subject.configuration->host + " in no_proxy");
}

Finding checkConfiguration(Subject& subject) {
  if (!subject.configuration) return skipped(kNoUrl);
  subject.document =
      ZtPortalData::initWithValues(subject.configurationUrl, false, "ztreport", nullptr, nullptr);
  subject.isInTestMode = isTestMode(*subject.document);
  if (!subject.document->gotConfiguration()) return whyNoConfiguration(subject);
  return ok("read");
}

Finding checkReportUrl(Subject& subject) {
  if (!subject.document || !subject.document->gotConfiguration()) {
    return skipped("there is no configuration");
  }
  const std::string reportUrl = text(subject.document->reportUrl());
  const std::string testUrl = text(subject.document->reportTestUrl());
  const std::string& used = subject.isInTestMode ? testUrl : reportUrl;
  const std::string mode = subject.isInTestMode ? " (test mode)" : "";
  constexpr const char* kRemedy = "correct the customer's configuration document";
  if (used.empty()) return failed("the configuration has none for test mode", kRemedy);
  subject.server = webAddress(used);
  if (!subject.server) return failed(used + mode + " is not an http or https URL", kRemedy);
  if (testUrl.empty()) {
    return warning(subject.server->shown + ", but none for test mode", kRemedy);
  }
  return ok(subject.server->shown + mode);
}

Finding checkVersion(Subject& subject) {
  if (!subject.server) return skipped("there is no report URL");
  if (subject.document->online()) return ok(text(subject.document->serverVersion()));
  return whyNoVersion(subject);
}

}  // namespace zt::tools
