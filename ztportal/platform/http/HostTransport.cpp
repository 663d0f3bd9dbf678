#include "ztportal/platform/http/HostTransport.h"

#include <chrono>
#include <exception>
#include <utility>

namespace zt {

namespace {

ZtTransportResponse responseTo(const ZtTransportRequest& request,
                               const ZtTransportOptions& options) noexcept try {
  return options.transport(request);
} catch (const std::exception& error) {
  ZtTransportResponse failed;
  try {
    failed.error = error.what();
  } catch (const std::bad_alloc&) {
  }
  return failed;
} catch (...) {
  return {};
}

}  // namespace

HttpResponse exchangeByHost(const HttpRequest& request) {
  ZtTransportRequest passed;
  passed.method = request.method;
  passed.url = request.url;
  for (const HttpHeader& header : request.headers) {
    passed.headers.emplace_back(header.name, header.value);
  }
  const auto& more = request.options->headers;
  passed.headers.insert(passed.headers.end(), more.begin(), more.end());
  passed.body = request.body.value_or("");

  const auto start = std::chrono::steady_clock::now();
  ZtTransportResponse received = responseTo(passed, *request.options);
  HttpResponse response;
  response.times.total = std::chrono::duration_cast<std::chrono::microseconds>(
      std::chrono::steady_clock::now() - start);
  response.status = received.status;
  response.retryAfter = received.retryAfter;
  if (received.status != 0) {
    response.body = std::move(received.body);
    return response;
  }
  response.error = ZtDeliveryError::Host;
  response.message = std::move(received.error);
  if (response.message.empty()) response.message = "The host's transport failed.";
  return response;
}

}  // namespace zt
