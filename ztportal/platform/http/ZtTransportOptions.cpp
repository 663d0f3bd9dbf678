// SPDX-License-Identifier: Apache-2.0
#include "ztportal/platform/http/ZtTransportOptions.h"

#include <unistd.h>

#include <algorithm>
#include <array>

#include "ztportal/base/RegularFile.h"
#include "ztportal/base/Text.h"

namespace {

/// What is wrong with the PEM file of the member; empty if it has a block of this kind, or if there
/// is no `path`.
std::string fileProblem(std::string_view member, const std::string& path, std::string_view kind) {
  if (path.empty()) return {};
  std::string problem(member);
  const std::optional<std::string> content = zt::regularFile(path, zt::kReportFileLimit);
  if (!content) return problem += ": " + path + " cannot be read";
  if (content->find(kind) != std::string::npos) return {};
  zt::appendText(problem, ": ", path, " contains no ", kind, " in PEM form");
  return problem;
}

constexpr std::string_view kCertificate = "CERTIFICATE-----";
constexpr std::string_view kPrivateKey = "PRIVATE KEY-----";

std::string certificateProblem(const ZtTransportOptions& options) {
  std::string wrong = fileProblem("authorityFile", options.authorityFile, kCertificate);
  if (!wrong.empty()) return wrong;
  const std::string& folder = options.authorityFolder;
  // With the slash only a folder exists.
  if (!folder.empty() && ::access((folder + "/").c_str(), R_OK | X_OK) != 0) {
    return "authorityFolder: " + folder + " is not a folder that can be read";
  }
  if (options.clientCertificate.empty() && !options.clientKey.empty()) {
    return "clientKey: there is no clientCertificate";
  }
  wrong = fileProblem("clientCertificate", options.clientCertificate, kCertificate);
  if (!wrong.empty()) return wrong;
  // The file of a certificate may contain its key as well.
  return fileProblem("clientKey",
                     options.clientKey.empty() ? options.clientCertificate : options.clientKey,
                     kPrivateKey);
}

/// The schemes of proxies that libcurl knows, and none at all: "proxy.example.com:3128".
bool isProxy(std::string_view url) {
  constexpr std::array<std::string_view, 6> kSchemes{"http",    "https",  "socks4",
                                                     "socks4a", "socks5", "socks5h"};
  if (const std::size_t end = url.find("://"); end != std::string_view::npos) {
    if (!zt::isAnyOf(url.substr(0, end), kSchemes)) return false;
    url.remove_prefix(end + 3);
  }
  const std::string_view authority = url.substr(0, url.find_first_of("/?#"));
  const std::string_view host = authority.substr(authority.rfind('@') + 1);
  return !host.empty() && host.front() != ':' && host.find(' ') == std::string_view::npos &&
         !zt::hasControl(url);
}

std::string headerProblem(std::string_view name, std::string_view value) {
  // Those that the library or libcurl writes.
  constexpr std::array<std::string_view, 8> kReserved{
      "connection", "content-encoding",  "content-length", "content-type", "expect",
      "host",       "transfer-encoding", "user-agent"};
  const auto isTokenCharacter = [](char character) {  // RFC 9110, 5.6.2
    return zt::isLetter(character) ||
           std::string_view("0123456789!#$%&'*+-.^_`|~").find(character) != std::string_view::npos;
  };
  std::string problem = "headers: ";
  if (name.empty() || !std::all_of(name.begin(), name.end(), isTokenCharacter)) {
    return problem += "a name is empty or has a character that is not allowed";
  }
  problem += name;
  if (zt::isAnyOf(name, kReserved)) return problem += " is set by the library";
  return zt::hasControl(value) ? problem += " has a control character in its value" : "";
}

}  // namespace

std::string ZtTransportOptions::problem() const {
  std::string wrong = certificateProblem(*this);
  if (!wrong.empty()) return wrong;

  // The value may contain a password, so it is not repeated.
  if (proxy && !proxy->empty() && !isProxy(*proxy)) {
    return "proxy: the value is not the URL of an http, https or socks proxy";
  }
  if (noProxy && zt::hasControl(*noProxy)) return "noProxy: the list has a control character";

  for (const auto& [member, duration] :
       {std::pair("timeout", timeout), std::pair("connectTimeout", connectTimeout),
        std::pair("idleTimeout", idleTimeout)}) {
    if (duration.count() < 0) return std::string(member) + ": less than zero";
  }
  if (timeout.count() == 0 && idleTimeout.count() == 0) {
    return "timeout: without a limit only if there is an idleTimeout";
  }

  for (const auto& [name, value] : headers) {
    wrong = headerProblem(name, value);
    if (!wrong.empty()) return wrong;
  }
  return {};
}
