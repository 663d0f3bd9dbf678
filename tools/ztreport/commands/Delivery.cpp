// SPDX-License-Identifier: Apache-2.0
#include "tools/ztreport/commands/Delivery.h"

#include <array>
#include <chrono>
#include <optional>

#include "tools/ztreport/commands/InputOutput.h"
#include "tools/ztreport/network/ServerFault.h"
#include "tools/ztreport/network/WebAddress.h"

namespace zt::tools {

void checkConfigurationUrl(const std::string& url) {
  if (url.empty()) throw WrongUsage("--config-url: empty");
  if (webAddress(url)) return;
  throw WrongUsage("--config-url: " + shownUrl(url) + " is not an http or https URL");
}

std::string whyNotAccepted(ZtPortalData& document) {
  if (!document.gotConfiguration()) {
    const std::string url(document.configurationUrl().view());
    const std::optional<Fault> fault = configurationFault(url);
    return "no configuration at " + shownUrl(url) +
           (fault ? ": " + fault->reason : ", although the server responds now");
  }
  const std::string url = serverUrlOf(document);
  if (url.empty()) return "the configuration has no URL for test mode";
  const std::string server = shownUrl(url) + ": ";
  const ZtDelivery delivery = document.lastDelivery();
  const std::size_t size = delivery.requestBytes;
  Response response;
  response.status = delivery.httpStatus;
  if (response.status >= 200 && response.status <= 299) {
    return server + "the response does not confirm the report";
  }
  if (response.status != 0) return server + statusFault(response, "POST", size).reason;
  if (const std::optional<Fault> fault = versionFault(url)) return server + fault->reason;
  return server + "no complete response to the report of " + std::to_string(size) +
         " bytes, although the server responds now";
}

Json jsonOfDelivery(const ZtDelivery& delivery) {
  // In the order of the enumerations.
  constexpr std::array<const char*, 11> kOutcomes{
      "not sent", "accepted",    "refused",    "invalid response", "unreachable", "timed out",
      "offline",  "no test URL", "no consent", "dropped",          "unreadable"};
  constexpr std::array<const char*, 15> kErrors{
      "none",     "library",  "address", "name lookup", "proxy", "connection", "tls",   "timeout",
      "transfer", "redirect", "status",  "content",     "file",  "host",       "memory"};
  const auto milliseconds = [](std::chrono::microseconds time) {
    return std::chrono::duration<double, std::milli>(time).count();
  };
  return {{"outcome", kOutcomes.at(static_cast<std::size_t>(delivery.outcome))},
          {"error", kErrors.at(static_cast<std::size_t>(delivery.error))},
          {"httpStatus", delivery.httpStatus},
          {"message", delivery.message},
          {"url", delivery.url},
          {"requestBytes", delivery.requestBytes},
          {"responseBytes", delivery.responseBytes},
          {"lookupTime", milliseconds(delivery.lookupTime)},
          {"connectTime", milliseconds(delivery.connectTime)},
          {"tlsTime", milliseconds(delivery.tlsTime)},
          {"responseTime", milliseconds(delivery.responseTime)},
          {"totalTime", milliseconds(delivery.totalTime)},
          {"retryAfterSeconds", std::int64_t{delivery.retryAfter.count()}},
          {"savedTo", delivery.savedTo},
          {"saveError", delivery.saveError},
          {"saveErrorNumber", delivery.saveErrorNumber}};
}

}  // namespace zt::tools
