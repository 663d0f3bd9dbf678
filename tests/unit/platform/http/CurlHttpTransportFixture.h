// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "tests/support/LoopbackServer.h"
#include "ztportal/platform/http/CurlHttpTransport.h"

namespace zt::test {

using std::chrono_literals::operator""ms;
using std::chrono_literals::operator""s;
using Then = LoopbackResponse::Then;

inline constexpr std::size_t kLargest = std::size_t{16} * 1024 * 1024;

/// No proxy of the machine that the tests run on gets in between; a test may name its own.
class CurlHttpTransportFixture : public ::testing::Test {
 protected:
  CurlHttpTransportFixture() {
    for (const char* name : {"http_proxy", "https_proxy", "all_proxy", "no_proxy", "HTTPS_PROXY",
                             "ALL_PROXY", "NO_PROXY"}) {
      unsetenv(name);
    }
  }

  HttpResponse get(std::string_view url, std::chrono::milliseconds timeout = 20s) {
    return _transport.exchange({url, "GET", {}, std::nullopt, timeout});
  }
  HttpResponse post(std::string_view url, std::string_view body,
                    std::span<const HttpHeader> headers = {}) {
    return _transport.exchange({url, "POST", headers, body, 20s});
  }

  zt::CurlHttpTransport _transport;
};

inline std::string withLength(std::string_view status, std::string_view body) {
  std::string answer = "HTTP/1.1 ";
  answer += status;
  answer += "\r\nContent-Length: " + std::to_string(body.size()) + "\r\n\r\n";
  return answer += body;
}
inline LoopbackResponse ok(std::string_view body, Then then = Then::Keep) {
  return {withLength("200 OK", body), then};
}
inline LoopbackResponse redirect(std::string_view status, const std::string& location) {
  return {"HTTP/1.1 " + std::string(status) + "\r\nLocation: " + location +
          "\r\nContent-Length: 0\r\n\r\n"};
}

/// A loopback port that nobody listens on.
inline std::string refusingUrl() {
  const LoopbackServer ended(std::vector<LoopbackResponse>{});
  return ended.url("/");
}

}  // namespace zt::test
