#include "benchmarks/figures/LoopbackServer.h"

#include <netinet/in.h>
#include <netinet/tcp.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <charconv>
#include <stdexcept>
#include <thread>

namespace zt::bench {

namespace {

std::string answerWith(const std::string& body) {
  return "HTTP/1.1 200 OK\r\nContent-Type: text/xml\r\nContent-Length: " +
         std::to_string(body.size()) + "\r\n\r\n" + body;
}

struct Answers {
  explicit Answers(const std::string& reportUrl)
      : configuration(answerWith("<configuration><defSOAP>" + reportUrl +
                                 "</defSOAP><defTestSOAP>" + reportUrl +
                                 "</defTestSOAP></configuration>")) {}

  std::string configuration;
  std::string version = answerWith("<versioninfo>7.3</versioninfo>");
  std::string acceptance = answerWith(
      "<Envelope><Body><postPoolDatasResponse><return>true</return></postPoolDatasResponse></Body>"
      "</Envelope>");
};

/// How many bytes the request at the start of `bytes` has; 0 while its head is not complete.
std::size_t sizeOfRequest(std::string_view bytes) {
  constexpr std::string_view kEnd = "\r\n\r\n";
  constexpr std::string_view kLength = "\r\nContent-Length: ";
  const std::size_t end = bytes.find(kEnd);
  if (end == std::string_view::npos) return 0;
  const std::string_view head = bytes.substr(0, end);
  const std::size_t at = head.find(kLength);
  std::size_t length = 0;
  if (at != std::string_view::npos) {
    std::from_chars(head.data() + at + kLength.size(), head.data() + head.size(), length);
  }
  return end + kEnd.size() + length;
}

const std::string& answerTo(std::string_view request, const Answers& answers) {
  constexpr std::size_t kStart = 1024;  // as far as what is asked stands
  if (request.starts_with("GET ")) return answers.configuration;
  const bool asksVersion = request.substr(0, kStart).find("<getVersionInfo") != std::string::npos;
  return asksVersion ? answers.version : answers.acceptance;
}

void serve(int connection, const Answers& answers) {
  std::string bytes;
  std::array<char, 65536> part;
  for (;;) {
    const ssize_t count = ::recv(connection, part.data(), part.size(), 0);
    if (count <= 0) break;
    bytes.append(part.data(), static_cast<std::size_t>(count));
    const std::size_t size = sizeOfRequest(bytes);
    if (size == 0 || bytes.size() < size) continue;
    const std::string& answer = answerTo(bytes, answers);
    if (::send(connection, answer.data(), answer.size(), MSG_NOSIGNAL) < 0) break;
    bytes.erase(0, size);
  }
  ::close(connection);
}

[[noreturn]] void serveAll(int listener, const Answers& answers) {
  ::prctl(PR_SET_PDEATHSIG, SIGKILL);
  for (;;) {
    const int connection = ::accept4(listener, nullptr, nullptr, SOCK_CLOEXEC);
    if (connection < 0) continue;
    const int on = 1;
    ::setsockopt(connection, IPPROTO_TCP, TCP_NODELAY, &on, sizeof(on));
    std::thread([connection, &answers] { serve(connection, answers); }).detach();
  }
}

}  // namespace

LoopbackServer::LoopbackServer() {
  const int listener = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  socklen_t length = sizeof(address);
  auto* const generic = reinterpret_cast<sockaddr*>(&address);
  if (::bind(listener, generic, length) != 0 || ::listen(listener, 64) != 0 ||
      ::getsockname(listener, generic, &length) != 0) {
    throw std::runtime_error("no loopback port");
  }
  _port = ntohs(address.sin_port);
  _process = ::fork();
  if (_process == 0) serveAll(listener, Answers(reportUrl()));
  ::close(listener);
}

LoopbackServer::~LoopbackServer() {
  ::kill(_process, SIGKILL);
  ::waitpid(_process, nullptr, 0);
}

std::string LoopbackServer::url(std::string_view path) const {
  return "http://127.0.0.1:" + std::to_string(_port) + std::string(path);
}

}  // namespace zt::bench
