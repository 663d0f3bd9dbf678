// SPDX-License-Identifier: Apache-2.0
#include "tools/ztreport/network/Request.h"

#include <netdb.h>
#include <sys/socket.h>

#include <array>
#include <future>
#include <memory>
#include <thread>
#include <utility>

#include "tools/ztreport/network/Certificates.h"
#include "tools/ztreport/network/CurlHandle.h"
#include "tools/ztreport/network/WebAddress.h"
#include "ztportal/base/Free.h"
#include "ztportal/base/Text.h"
#include "ztportal/ztportal.h"

namespace zt::tools {

namespace {

constexpr std::size_t kMostRedirects = 5;

using HeaderList = std::unique_ptr<curl_slist, Free<curl_slist_free_all>>;
using Addresses = std::unique_ptr<addrinfo, Free<::freeaddrinfo>>;

std::size_t takeBody(char* bytes, std::size_t /*one*/, std::size_t size, void* body) {
  static_cast<std::string*>(body)->append(bytes, size);
  return size;
}

Fault failureOf(const CurlHandle& handle, CURLcode code, const WebAddress& server) {
  const std::string failure = handle.failureOf(code);
  if (code == CURLE_PEER_FAILED_VERIFICATION) return certificateFault(server, failure);
  if (code == CURLE_SSL_CACERT_BADFILE) {
    return {failure, "correct SSL_CERT_FILE and SSL_CERT_DIR, or unset them"};
  }
  return {failure, ""};
}

using Clock = std::chrono::steady_clock;
using Headers = std::vector<std::pair<std::string, std::string>>;

/// One request without redirects. `next` is where the response redirects to, or empty.
Response requestOnce(const WebAddress& server, const std::optional<std::string>& body,
                     const Headers& added, Clock::time_point deadline, std::string& next) {
  Response response;
  const auto left = std::chrono::floor<std::chrono::milliseconds>(deadline - Clock::now());
  if (left.count() <= 0) {
    response.failure = Fault{tooSlow(), ""};
    return response;
  }
  CurlHandle handle;
  handle.set(CURLOPT_TIMEOUT_MS, static_cast<long>(left.count()));
  HeaderList headers;
  for (const char* line : {"Expect:", "Proxy-Connection:", "Content-Type: application/xml",
                           "User-Agent: Kelvane portal service (osx)"}) {
    headers.reset(curl_slist_append(headers.release(), line));
  }
  for (const auto& [name, value] : added) {
    std::string line = name;
    appendText(line, ": ", value);
    headers.reset(curl_slist_append(headers.release(), line.c_str()));
  }
  handle.set(CURLOPT_URL, server.shown.c_str());
  if (!server.user.empty() || !server.password.empty()) {
    handle.set(CURLOPT_USERNAME, server.user.c_str());
    handle.set(CURLOPT_PASSWORD, server.password.c_str());
  }
  handle.set(CURLOPT_HTTPHEADER, headers.get());
  handle.set(CURLOPT_WRITEFUNCTION, takeBody);
  handle.set(CURLOPT_WRITEDATA, &response.body);
  if (body) {
    handle.set(CURLOPT_POSTFIELDSIZE_LARGE, static_cast<curl_off_t>(body->size()));
    handle.set(CURLOPT_POSTFIELDS, body->c_str());
  }
  const CURLcode code = handle.perform();
  // The response of a proxy that opens no tunnel counts.
  const bool isTunnelRefused =
      code != CURLE_OK && handle.get<long>(CURLINFO_HTTP_CONNECTCODE) > 299;
  if (code != CURLE_OK && !isTunnelRefused) response.failure = failureOf(handle, code, server);
  response.status =
      handle.get<long>(isTunnelRefused ? CURLINFO_HTTP_CONNECTCODE : CURLINFO_RESPONSE_CODE);
  response.retryAfter = std::chrono::seconds(handle.get<curl_off_t>(CURLINFO_RETRY_AFTER));
  const char* const redirect = handle.get<const char*>(CURLINFO_REDIRECT_URL);
  next = redirect != nullptr ? redirect : "";
  return response;
}

/// Why the library does not follow a redirect; empty when it does.
std::string whyNotFollowed(const WebAddress& from, const std::optional<WebAddress>& to,
                           std::size_t count) {
  if (count >= kMostRedirects) return "it is the sixth";
  if (!to) return "it is not an http or https URL";
  if (from.scheme == "https" && to->scheme == "http") return "it gives up https";
  // libcurl adds those of `from` to a redirect that is relative to it.
  const bool hasOwn = to->user != from.user || to->password != from.password;
  if (hasOwn && !(to->user.empty() && to->password.empty())) {
    return "it contains a user name or password";
  }
  return "";
}

struct LookedUp {
  std::string failure;
  std::string addresses;
};

LookedUp lookUpNow(const std::string& host) {
  addrinfo hints{};
  hints.ai_socktype = SOCK_STREAM;
  addrinfo* found = nullptr;
  const int error = ::getaddrinfo(host.c_str(), nullptr, &hints, &found);
  if (error != 0) return {::gai_strerror(error), ""};
  const Addresses list(found);
  LookedUp result;
  for (const addrinfo* entry = found; entry != nullptr; entry = entry->ai_next) {
    std::array<char, NI_MAXHOST> text{};
    if (::getnameinfo(entry->ai_addr, entry->ai_addrlen, text.data(), text.size(), nullptr, 0,
                      NI_NUMERICHOST) != 0) {
      continue;
    }
    if (!result.addresses.empty()) result.addresses += ", ";
    result.addresses += text.data();
  }
  return result;
}

}  // namespace

Response request(const std::string& url, const std::optional<std::string>& body) {
  auto server = webAddress(url);
  if (!server) {
    Response none;
    none.failure = Fault{shownUrl(url) + " is not an http or https URL", ""};
    return none;
  }
  const Clock::time_point deadline = Clock::now() + timeLimit();
  Headers added = ZtHost::transportOptions().headers;
  std::vector<std::string> redirects;
  for (;;) {
    std::string next;
    Response response = requestOnce(*server, body, added, deadline, next);
    response.redirects = redirects;
    if (response.failure || next.empty()) return response;

    auto target = webAddress(next);
    const std::string reason = whyNotFollowed(*server, target, redirects.size());
    if (!reason.empty()) {
      response.failure =
          Fault{"the redirect to " + shownUrl(next) + " is not followed: " + reason, ""};
      return response;
    }
    redirects.push_back(target->shown);
    const bool isSame = target->isSameServer(*server);
    target->user = isSame ? server->user : "";
    target->password = isSame ? server->password : "";
    if (!isSame) added.clear();
    server = std::move(target);
  }
}

std::string lookUp(const std::string& host, std::string& addresses) {
  // A lookup cannot be cancelled; the thread of one that hangs is abandoned.
  std::packaged_task<LookedUp()> task([host] { return lookUpNow(host); });
  std::future<LookedUp> future = task.get_future();
  std::thread(std::move(task)).detach();
  if (future.wait_for(timeLimit()) != std::future_status::ready) return tooSlow();
  LookedUp result = future.get();
  addresses = std::move(result.addresses);
  return result.failure;
}

std::string connectTo(const std::string& host, int port) {
  const bool isAddress = host.find(':') != std::string::npos;
  const std::string url =
      "http://" + (isAddress ? "[" + host + "]" : host) + ":" + std::to_string(port);
  CurlHandle handle;
  handle.set(CURLOPT_URL, url.c_str());
  handle.set(CURLOPT_PROXY, "");
  handle.set(CURLOPT_CONNECT_ONLY, 1L);
  return handle.failureOf(handle.perform());
}

}  // namespace zt::tools
