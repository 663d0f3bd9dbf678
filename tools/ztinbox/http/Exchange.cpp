// SPDX-License-Identifier: Apache-2.0
#include "tools/ztinbox/http/Exchange.h"

#include "tools/ztinbox/http/HttpSyntax.h"
#include "ztportal/base/Text.h"
#include "ztportal/platform/json/Json.h"

namespace zt::inbox {

namespace {

bool isBelowApi(std::string_view path) { return path == "/api" || path.starts_with("/api/"); }

}  // namespace

std::vector<std::string> HttpRequest::header(std::string_view name) const {
  std::vector<std::string> values;
  for (const auto& [candidate, value] : headers) {
    if (equalsAnyCase(candidate, name)) values.push_back(value);
  }
  return values;
}

HttpResponse refusalOf(std::string_view path, const Refusal& refusal) {
  HttpResponse response;
  response.status = refusal.status;
  if (refusal.status == status::kUnavailable) response.headers.emplace_back("Retry-After", "1");
  if (isBelowApi(path)) {
    // "about:blank": the status is the type of the problem.
    const Json problem{{"detail", refusal.reason},
                       {"status", refusal.status},
                       {"title", statusPhrase(refusal.status)},
                       {"type", "about:blank"}};
    response.setBody(problem.text() + "\n", kProblemType);
  } else {
    response.setBody(refusal.reason + "\n", kTextType);
  }
  return response;
}

void refuse(Exchange& exchange, const Refusal& refusal) {
  HttpResponse response = refusalOf(exchange.request.path, refusal);
  for (auto& header : exchange.response.headers) response.headers.push_back(std::move(header));
  exchange.response = std::move(response);
}

void refuseMethod(Exchange& exchange, const char* allowed) {
  exchange.response.headers.emplace_back("Allow", allowed);
  refuse(exchange, {status::kNotAllowed, "method not allowed: " + exchange.request.method});
}

}  // namespace zt::inbox
