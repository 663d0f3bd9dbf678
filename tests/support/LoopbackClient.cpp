// SPDX-License-Identifier: Apache-2.0
#include "tests/support/LoopbackClient.h"

#include <arpa/inet.h>
#include <netdb.h>
#include <netinet/in.h>
#include <strings.h>
#include <sys/socket.h>
#include <sys/time.h>

#include <array>
#include <cerrno>
#include <stdexcept>
#include <utility>

namespace zt::test {

namespace {

void setPatience(int socket, int milliseconds) {
  const timeval patience{milliseconds / 1000, static_cast<suseconds_t>(milliseconds % 1000) * 1000};
  ::setsockopt(socket, SOL_SOCKET, SO_RCVTIMEO, &patience, sizeof(patience));
}

}  // namespace

RawClient::RawClient(int port, const std::string& address) {
  addrinfo hints{};
  hints.ai_flags = AI_NUMERICHOST | AI_NUMERICSERV;
  hints.ai_socktype = SOCK_STREAM;
  addrinfo* found = nullptr;
  if (::getaddrinfo(address.c_str(), std::to_string(port).c_str(), &hints, &found) != 0) {
    throw std::runtime_error("no address: " + address);
  }
  _socket = FileDescriptor(::socket(found->ai_family, SOCK_STREAM | SOCK_CLOEXEC, 0));
  const int result = ::connect(_socket.number(), found->ai_addr, found->ai_addrlen);
  ::freeaddrinfo(found);
  if (result != 0) throw std::runtime_error("no connection");
}

bool RawClient::send(std::string_view bytes) const {
  while (!bytes.empty()) {
    const ssize_t count = ::send(_socket.number(), bytes.data(), bytes.size(), MSG_NOSIGNAL);
    if (count <= 0) return false;
    bytes.remove_prefix(static_cast<std::size_t>(count));
  }
  return true;
}

void RawClient::endSending() const { ::shutdown(_socket.number(), SHUT_WR); }

std::string RawClient::receiveSome(int patienceInMilliseconds) {
  setPatience(_socket.number(), patienceInMilliseconds);
  std::string part(std::size_t{16} * 1024, '\0');
  const ssize_t count = ::recv(_socket.number(), part.data(), part.size(), 0);
  part.resize(count > 0 ? static_cast<std::size_t>(count) : 0);
  return part;
}

std::string RawClient::receiveAll(int patienceInMilliseconds) {
  setPatience(_socket.number(), patienceInMilliseconds);
  std::string received;
  std::array<char, 65536> part{};
  for (;;) {
    const ssize_t count = ::recv(_socket.number(), part.data(), part.size(), 0);
    if (count > 0) {
      received.append(part.data(), static_cast<std::size_t>(count));
      continue;
    }
    _end = count == 0 ? End::kOrderly : errno == ECONNRESET ? End::kReset : End::kStillOpen;
    return received;
  }
}

std::string postRequest(std::string_view target, std::string_view body, std::string_view headers) {
  std::string request = "POST ";
  request.append(target).append(" HTTP/1.1\r\nHost: 127.0.0.1\r\n").append(headers);
  request.append("Content-Length: ").append(std::to_string(body.size())).append("\r\n\r\n");
  return request.append(body);
}

std::vector<std::string> HttpClient::Response::headers(std::string_view name) const {
  std::vector<std::string> values;
  for (std::size_t begin = head.find("\r\n"); begin != std::string::npos;) {
    begin += 2;
    const std::size_t end = head.find("\r\n", begin);
    const std::string_view line = std::string_view(head).substr(begin, end - begin);
    begin = end;
    if (line.size() <= name.size() || line[name.size()] != ':' ||
        ::strncasecmp(line.data(), name.data(), name.size()) != 0) {
      continue;
    }
    const std::size_t value = line.find_first_not_of(' ', name.size() + 1);
    values.emplace_back(line.substr(std::min(value, line.size())));
  }
  return values;
}

std::string HttpClient::Response::header(std::string_view name) const {
  const std::vector<std::string> values = headers(name);
  return values.empty() ? "" : values.front();
}

HttpClient::HttpClient(int port, std::string address) : _port(port), _address(std::move(address)) {}

std::optional<HttpClient::Response> HttpClient::request(std::string_view method,
                                                        std::string_view target,
                                                        std::string_view body,
                                                        std::string_view headers) const {
  std::string text(method);
  text.append(" ").append(target).append(" HTTP/1.1\r\nConnection: close\r\n").append(headers);
  if (!headers.starts_with("Host:")) {
    const bool isIpv6 = _address.find(':') != std::string::npos;
    text.append("Host: ").append(isIpv6 ? "[" + _address + "]" : _address);
    text.append(":").append(std::to_string(_port)).append("\r\n");
  }
  if (method != "GET") {
    text.append("Content-Length: ").append(std::to_string(body.size())).append("\r\n");
  }
  text.append("\r\n").append(body);

  RawClient client(_port, _address);
  if (!client.send(text)) return std::nullopt;
  const std::string received = client.receiveAll(_milliseconds);
  const std::size_t headEnd = received.find("\r\n\r\n");
  if (!received.starts_with("HTTP/1.1 ") || headEnd == std::string::npos) return std::nullopt;
  Response response{std::stoi(received.substr(9)), received.substr(0, headEnd),
                    received.substr(headEnd + 4)};
  const std::string length = response.header("Content-Length");
  if (!length.empty() && response.body.size() != std::stoul(length)) return std::nullopt;
  return response;
}

}  // namespace zt::test
