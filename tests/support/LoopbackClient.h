// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "ztportal/base/FileDescriptor.h"

namespace zt::test {

/// A TCP connection to the loopback interface, for raw bytes.
class RawClient {
 public:
  /// How a connection ended.
  enum class End { kOrderly, kReset, kStillOpen };

  /// Throws std::runtime_error if nothing listens there.
  explicit RawClient(int port, const std::string& address = "127.0.0.1");

  /// Returns false if the server does not read all of it.
  bool send(std::string_view bytes) const;
  /// Ends sending; responses can still arrive.
  void endSending() const;

  /// Receives the next bytes; empty at the end of the connection, or if none arrive in time.
  std::string receiveSome(int patienceInMilliseconds = 30'000);
  /// Receives everything until the connection ends or no more bytes arrive in time.
  std::string receiveAll(int patienceInMilliseconds = 30'000);
  /// How the connection ended; valid after receiveAll().
  End end() const { return _end; }

 private:
  FileDescriptor _socket;
  End _end = End::kStillOpen;
};

/// A POST request with a body, and with `headers`, each of which ends with CR LF. The connection
/// stays open.
std::string postRequest(std::string_view target, std::string_view body,
                        std::string_view headers = "");

/// Sends HTTP requests to the loopback interface, each on a new connection.
///
///     const auto response = HttpClient(port).get("/api/v1/reports");
///     ASSERT_TRUE(response);
///     EXPECT_EQ(response->status, 200);
class HttpClient {
 public:
  struct Response {
    int status = 0;
    std::string head;  ///< status line and headers
    std::string body;

    /// The values of the headers of this name, in order.
    std::vector<std::string> headers(std::string_view name) const;
    /// The first of them; empty if there is none.
    std::string header(std::string_view name) const;
  };

  explicit HttpClient(int port, std::string address = "127.0.0.1");

  void setTimeout(int seconds) { _milliseconds = seconds * 1000; }

  /// Nullopt if no complete response arrives. Each of `headers` ends with CR LF; a "Host" among
  /// them replaces that of the address.
  std::optional<Response> request(std::string_view method, std::string_view target,
                                  std::string_view body = "", std::string_view headers = "") const;
  std::optional<Response> get(std::string_view target, std::string_view headers = "") const {
    return request("GET", target, "", headers);
  }
  std::optional<Response> post(std::string_view target, std::string_view body = "",
                               std::string_view type = "text/xml") const {
    return request("POST", target, body, typeHeader(type));
  }
  std::optional<Response> put(std::string_view target, std::string_view body,
                              std::string_view type = "application/json") const {
    return request("PUT", target, body, typeHeader(type));
  }
  std::optional<Response> remove(std::string_view target) const {
    return request("DELETE", target);
  }

 private:
  static std::string typeHeader(std::string_view type) {
    return "Content-Type: " + std::string(type) + "\r\n";
  }

  int _port;
  std::string _address;
  int _milliseconds = 30'000;
};

}  // namespace zt::test
