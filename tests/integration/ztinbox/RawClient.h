#pragma once

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstring>
#include <stdexcept>
#include <string>
#include <string_view>

namespace zt::test {

/// A TCP connection to the loopback interface that sends and shows bytes as they are.
class RawClient {
 public:
  /// How a connection ended.
  enum class End { kOrderly, kReset, kStillOpen };

  explicit RawClient(int port) : _socket(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(static_cast<std::uint16_t>(port));
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    if (::connect(_socket, reinterpret_cast<sockaddr*>(&address), sizeof(address)) != 0) {
      ::close(_socket);
      throw std::runtime_error("no connection");
    }
  }
  RawClient(const RawClient&) = delete;
  RawClient& operator=(const RawClient&) = delete;
  ~RawClient() { ::close(_socket); }

  /// False when the other side does not take it all.
  bool send(std::string_view bytes) const {
    while (!bytes.empty()) {
      const ssize_t count = ::send(_socket, bytes.data(), bytes.size(), MSG_NOSIGNAL);
      if (count <= 0) return false;
      bytes.remove_prefix(static_cast<std::size_t>(count));
    }
    return true;
  }
  /// Nothing more will be sent; answers can still come.
  void endSending() const { ::shutdown(_socket, SHUT_WR); }

  /// What comes next; empty at the end of the connection, or when nothing came for a while.
  std::string receiveSome(int patienceInMilliseconds = 30'000) {
    setPatience(patienceInMilliseconds);
    std::string part(std::size_t{16} * 1024, '\0');
    const ssize_t count = ::recv(_socket, part.data(), part.size(), 0);
    part.resize(count > 0 ? static_cast<std::size_t>(count) : 0);
    return part;
  }

  /// Everything up to the end of the connection, or what comes until nothing came for a while.
  std::string receiveAll(int patienceInMilliseconds = 30'000) {
    setPatience(patienceInMilliseconds);
    std::string received;
    std::array<char, 4096> part{};
    for (;;) {
      const ssize_t count = ::recv(_socket, part.data(), part.size(), 0);
      if (count > 0) {
        received.append(part.data(), static_cast<std::size_t>(count));
        continue;
      }
      _end = count == 0 ? End::kOrderly : errno == ECONNRESET ? End::kReset : End::kStillOpen;
      return received;
    }
  }
  /// After receiveAll().
  End end() const { return _end; }

 private:
  void setPatience(int milliseconds) const {
    const timeval patience{milliseconds / 1000,
                           static_cast<suseconds_t>(milliseconds % 1000) * 1000};
    setsockopt(_socket, SOL_SOCKET, SO_RCVTIMEO, &patience, sizeof(patience));
  }

  int _socket;
  End _end = End::kStillOpen;
};

/// A request with a body, and with `headers` (each ended by a line end). Its connection is kept.
inline std::string postRequest(std::string_view target, std::string_view body,
                               std::string_view headers = "") {
  std::string request = "POST ";
  request.append(target).append(" HTTP/1.1\r\nHost: 127.0.0.1\r\n").append(headers);
  request.append("Content-Length: ").append(std::to_string(body.size())).append("\r\n\r\n");
  return request.append(body);
}

}  // namespace zt::test
