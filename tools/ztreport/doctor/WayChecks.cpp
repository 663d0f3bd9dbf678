#include "tools/ztreport/doctor/WayChecks.h"

#include <stdlib.h>

#include <string_view>

#include "tools/ztreport/doctor/Asking.h"
#include "tools/ztreport/doctor/ProxyRules.h"

namespace zt::tools {

namespace {

constexpr const char* kNoUrl = "the configuration URL cannot be used";
constexpr const char* kUnsteady =
    "see whether the server or the way to it is slow: all of an answer has to be there within two "
    "seconds";

/// What the library asks a server for its version with.
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
  std::string reason = "the answer is no XML (";
  if (error.line != 0) {
    reason.append("line ").append(std::to_string(error.line));
    reason.append(", column ").append(std::to_string(error.column)).append(": ");
  }
  return reason + text(error.reason) + ")";
}

/// Why an answer is none that the library reads; empty when it is an XML document.
std::string faultOf(const Answer& answer, std::shared_ptr<ZtXMLDocument>& document) {
  if (!answer.failure.empty()) return answer.failure;
  if (answer.status < 200 || answer.status > 299) {
    return "the server answers with status " + std::to_string(answer.status);
  }
  ZtXMLError error;
  document = ZtXMLDocument::parse(answer.body, ZtXMLKeep::Content, &error);
  return document == nullptr ? noXml(error) : "";
}

bool isTestMode(ZtPortalData& document) {
  document.addPool("DOCTOR", ZtDate::now());
  return document.getSoapString().find(text(document.customerId()) + "_Test</CustomerID>") !=
         std::string::npos;
}

/// Why the library, which does not say, read no configuration.
Finding whyNoConfiguration(const Patient& patient) {
  std::shared_ptr<ZtXMLDocument> document;
  const std::string fault = faultOf(ask(patient.configurationUrl), document);
  if (!fault.empty()) {
    return failed(fault, "open " + patient.configuration->shown +
                             " in a browser on this machine; it has to show the customer's "
                             "configuration document");
  }
  const auto url = ZtUtils::childNamed(*document->rootElement(), "defSOAP");
  if (!url || text(url->text()).find_first_not_of(" \t\r\n") == std::string::npos) {
    return failed(
        "the configuration names no report URL: its root element has no <defSOAP> with a "
        "text in it",
        "have the customer's configuration document completed");
  }
  return failed("read only when it was asked for a second time", kUnsteady);
}

/// Why the server, by the library, did not give its version.
Finding whyNoVersion(const Patient& patient) {
  std::shared_ptr<ZtXMLDocument> document;
  const std::string url = text(patient.isInTestMode ? patient.document->reportTestUrl()
                                                    : patient.document->reportUrl());
  const std::string fault = faultOf(ask(url, kVersionRequest), document);
  const std::string& shown = patient.server->shown;
  if (!fault.empty()) {
    return failed(fault, "see whether the server at " + shown +
                             " runs, and whether a firewall lets this machine through");
  }
  const auto version = ZtUtils::childNamed(document->documentNode(), "versioninfo");
  if (!version || text(version->text()).find_first_not_of(" \t\r\n") == std::string::npos) {
    return failed("the answer is no <versioninfo> with a text in it",
                  "see whether " + shown + " is a reporting server");
  }
  return failed("given only when it was asked for a second time", kUnsteady);
}

}  // namespace

Finding checkConfigurationUrl(Patient& patient) {
  patient.configuration = webAddress(patient.configurationUrl);
  if (patient.configuration) return ok(patient.configuration->shown);
  if (patient.configurationUrl.empty()) return failed("empty", "give one with --config-url");
  return failed(patient.configurationUrl + " is no http or https URL",
                "give a whole one, such as http://127.0.0.1:8025/reporting/kelvane.xml");
}

Finding checkNameLookup(Patient& patient) {
  if (!patient.configuration) return skipped(kNoUrl);
  const ProxyChoice choice = proxyOf(*patient.configuration);
  const auto proxy = choice.url.empty() ? std::nullopt : proxyAddress(choice.url);
  if (!choice.url.empty() && !proxy) return skipped("the proxy's URL cannot be used");
  // A proxy looks the server's name up itself.
  const std::string& host = proxy ? proxy->host : patient.configuration->host;
  const std::string whose = proxy ? " (the proxy)" : "";
  std::string addresses;
  const std::string failure = lookUp(host, addresses);
  if (failure.empty()) return ok(host + whose + " is " + addresses);
  return failed(host + whose + ": " + failure,
                "see whether the name is right, and whether this machine can look up names "
                "(resolv.conf)");
}

Finding checkProxy(Patient& patient) {
  if (!patient.configuration) return skipped(kNoUrl);
  const std::string& scheme = patient.configuration->scheme;
  const ProxyChoice choice = proxyOf(*patient.configuration);
  if (choice.url.empty() && !choice.variable.empty()) {
    return ok("none: " + choice.variable + " names " + patient.configuration->host);
  }
  const char* const capitals = ::getenv("HTTP_PROXY");
  if (choice.url.empty() && scheme == "http" && capitals != nullptr && *capitals != '\0') {
    return warning("none: HTTP_PROXY is set, but for http only http_proxy counts",
                   "set http_proxy if the proxy is wanted");
  }
  if (choice.url.empty()) return ok("none: neither " + scheme + "_proxy nor all_proxy is set");

  const auto proxy = proxyAddress(choice.url);
  if (!proxy) {
    return failed(choice.variable + " is no URL of a proxy",
                  "set it to one, such as http://127.0.0.1:3128, or unset it");
  }
  const std::string what = proxy->shown + " because of " + choice.variable;
  const std::string failure = knock(proxy->host, proxy->port);
  if (failure.empty()) return ok(what);
  return failed(what + ": " + failure, "start the proxy, unset " + choice.variable + ", or name " +
                                           patient.configuration->host + " in no_proxy");
}

Finding checkConfiguration(Patient& patient) {
  if (!patient.configuration) return skipped(kNoUrl);
  patient.document =
      ZtPortalData::initWithValues(patient.configurationUrl, false, "ztreport", nullptr, nullptr);
  patient.isInTestMode = isTestMode(*patient.document);
  if (!patient.document->gotConfiguration()) return whyNoConfiguration(patient);
  return ok("read");
}

Finding checkReportUrl(Patient& patient) {
  if (!patient.document || !patient.document->gotConfiguration()) {
    return skipped("there is no configuration");
  }
  const std::string reportUrl = text(patient.document->reportUrl());
  const std::string testUrl = text(patient.document->reportTestUrl());
  const std::string& used = patient.isInTestMode ? testUrl : reportUrl;
  const std::string mode = patient.isInTestMode ? " (test mode)" : "";
  constexpr const char* kRemedy = "have the customer's configuration document mended";
  if (used.empty()) return failed("the configuration names none for the test mode", kRemedy);
  patient.server = webAddress(used);
  if (!patient.server) return failed(used + mode + " is no http or https URL", kRemedy);
  if (testUrl.empty()) {
    return warning(patient.server->shown + ", but none for the test mode", kRemedy);
  }
  return ok(patient.server->shown + mode);
}

Finding checkVersion(Patient& patient) {
  if (!patient.server) return skipped("there is no report URL");
  if (patient.document->online()) return ok(text(patient.document->serverVersion()));
  return whyNoVersion(patient);
}

}  // namespace zt::tools
