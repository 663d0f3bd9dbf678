// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <chrono>
#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "ztportal/platform/http/HttpTransport.h"

namespace zt::test {

/// Responds with a function of the test and records the requests. Without a function every request
/// fails.
class FakeHttpTransport final : public HttpTransport {
 public:
  struct Asked {
    std::string url;
    std::string method;
    std::vector<std::pair<std::string, std::string>> headers;
    std::optional<std::string> body;
    std::chrono::milliseconds timeout;
  };

  HttpResponse exchange(const HttpRequest& request) override {
    Asked& last = asked.emplace_back();
    last.url = request.url;
    last.method = request.method;
    for (const HttpHeader& header : request.headers) {
      last.headers.emplace_back(header.name, header.value);
    }
    if (request.body) last.body = std::string(*request.body);
    last.timeout = request.timeout;
    return answer ? answer(last) : HttpResponse{};
  }
  void closeConnections() override { ++closings; }

  std::function<HttpResponse(const Asked&)> answer;
  std::vector<Asked> asked;
  int closings = 0;  // calls of closeConnections()
};

}  // namespace zt::test
