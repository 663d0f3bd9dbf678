// SPDX-License-Identifier: Apache-2.0
#include <stdlib.h>

#include <optional>

#include "tools/ztreport/doctor/Checks.h"
#include "tools/ztreport/doctor/ShellWord.h"
#include "tools/ztreport/network/ProxyRules.h"
#include "tools/ztreport/network/Request.h"
#include "tools/ztreport/network/ServerFault.h"

namespace zt::tools {

namespace {

constexpr const char* kNoUrl = "the configuration URL cannot be used";
constexpr const char* kProxyOption = "--proxy";
constexpr const char* kNoReportUrl = "there is no report URL";
constexpr const char* kUnsteady =
    "check whether the server or the network is slow: the whole response must arrive within two "
    "seconds";

ProxyChoice proxyOf(const WebAddress& address) {
  ProxyChoice choice =
      proxyFor(address.scheme, address.host, [](const char* name) { return ::getenv(name); });
  const bool isExcluded = choice.url.empty() && !choice.variable.empty();
  const std::optional<std::string> given = ZtHost::transportOptions().proxy;
  return given && !isExcluded ? ProxyChoice{*given, kProxyOption} : choice;
}

/// What a `Fault` of a request says; without one the library's own request failed, and only that.
Finding whyNot(const std::optional<Fault>& fault, const char* without) {
  return fault ? failed(fault->reason, fault->remedy) : failed(without, kUnsteady);
}

Finding lookUpServer(const WebAddress& address) {
  const ProxyChoice choice = proxyOf(address);
  const auto proxy = choice.url.empty() ? std::nullopt : proxyAddress(choice.url);
  if (!choice.url.empty() && !proxy) return skipped("the proxy's URL cannot be used");
  // A proxy resolves the server's name itself.
  const std::string& host = proxy ? proxy->host : address.host;
  const std::string whose = proxy ? " (the proxy)" : "";
  std::string addresses;
  const std::string failure = lookUp(host, addresses);
  if (failure.empty()) return ok(host + whose + " is " + addresses);
  return failed(host + whose + ": " + failure,
                "check the name, and that this machine can resolve names (resolv.conf)");
}

Finding findProxy(const WebAddress& address) {
  const ProxyChoice choice = proxyOf(address);
  if (choice.url.empty()) {
    if (choice.variable == kProxyOption) return ok("none, because of --proxy");
    if (!choice.variable.empty()) {
      return ok("none: " + choice.variable + " names " + address.host);
    }
    const char* const upperCase = ::getenv("HTTP_PROXY");
    if (address.scheme == "http" && upperCase != nullptr && *upperCase != '\0') {
      return warning("none: HTTP_PROXY is set, but http uses only http_proxy",
                     "set http_proxy if you need the proxy");
    }
    return ok("none: neither " + address.scheme + "_proxy nor all_proxy is set");
  }

  const auto proxy = proxyAddress(choice.url);
  if (!proxy) {
    return failed(choice.variable + " is not a proxy URL",
                  "set it to a URL such as http://127.0.0.1:3128, or unset it");
  }
  const std::string what = proxy->shown + " because of " + choice.variable;
  const std::string failure = connectTo(proxy->host, proxy->port);
  if (failure.empty()) return ok(what);
  const char* const undo = choice.variable == kProxyOption ? "leave out " : "unset ";
  return failed(what + ": " + failure, "start the proxy, " + (undo + choice.variable) +
                                           ", or name " + address.host + " in no_proxy");
}

}  // namespace

Finding checkConfigurationUrl(Subject& subject) {
  subject.configuration = webAddress(subject.configurationUrl);
  if (subject.configuration) return ok(subject.configuration->shown);
  if (subject.configurationUrl.empty()) return failed("empty", "give one with --config-url");
  return failed(shownUrl(subject.configurationUrl) + " is not an http or https URL",
                "give a complete URL, such as http://127.0.0.1:8025/reporting/kelvane.xml");
}

Finding checkNameLookup(Subject& subject) {
  return subject.configuration ? lookUpServer(*subject.configuration) : skipped(kNoUrl);
}

Finding checkProxy(Subject& subject) {
  return subject.configuration ? findProxy(*subject.configuration) : skipped(kNoUrl);
}

Finding checkReportNameLookup(Subject& subject) {
  return subject.server ? lookUpServer(*subject.server) : skipped(kNoReportUrl);
}

Finding checkReportProxy(Subject& subject) {
  return subject.server ? findProxy(*subject.server) : skipped(kNoReportUrl);
}

Finding checkConfiguration(Subject& subject) {
  if (!subject.configuration) return skipped(kNoUrl);
  subject.document =
      ZtPortalData::initWithValues(subject.configurationUrl, false, "ztreport", nullptr, nullptr);
  subject.isInTestMode = isInTestMode(*subject.document);
  if (ZtHost::consent() == ZtConsent::Revoked) {
    return failed("the user has revoked the consent to reports",
                  "ztreport --app-name=" + shellWord(subject.appName) + " consent given");
  }
  if (subject.document->gotConfiguration()) return ok("read");
  return whyNot(configurationFault(subject.configurationUrl), "read only at the second request");
}

Finding checkReportUrl(Subject& subject) {
  if (!subject.document || !subject.document->gotConfiguration()) {
    return skipped("there is no configuration");
  }
  const std::string reportUrl(subject.document->reportUrl());
  const std::string testUrl(subject.document->reportTestUrl());
  const std::string& used = subject.isInTestMode ? testUrl : reportUrl;
  const std::string mode = subject.isInTestMode ? " (test mode)" : "";
  constexpr const char* kRemedy = "correct the customer's configuration document";
  if (used.empty()) return failed("the configuration has none for test mode", kRemedy);
  subject.server = webAddress(used);
  if (!subject.server) {
    return failed(shownUrl(used) + mode + " is not an http or https URL", kRemedy);
  }
  if (testUrl.empty()) {
    return warning(subject.server->shown + ", but none for test mode", kRemedy);
  }
  return ok(subject.server->shown + mode);
}

Finding checkVersion(Subject& subject) {
  if (!subject.server) return skipped(kNoReportUrl);
  if (subject.document->online()) return ok(std::string(subject.document->serverVersion()));
  return whyNot(versionFault(serverUrlOf(*subject.document)),
                "received only at the second request");
}

}  // namespace zt::tools
