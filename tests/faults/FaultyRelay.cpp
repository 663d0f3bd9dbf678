#include "tests/faults/FaultyRelay.h"

#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/socket.h>

#include <array>
#include <charconv>
#include <memory>
#include <stdexcept>
#include <string_view>
#include <utility>

namespace zt::torture {

namespace {

using std::chrono::microseconds;
using std::chrono::milliseconds;

constexpr milliseconds kForever{-1};
constexpr std::string_view kHeadEnd = "\r\n\r\n";
constexpr std::string_view kInterim = "HTTP/1.1 102 Processing\r\n\r\n";

/// A closed one when nobody listens there.
FileDescriptor connected(int port) {
  FileDescriptor server(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
  if (!server.isOpen()) throw std::runtime_error("no socket for the relay");
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  address.sin_port = htons(static_cast<std::uint16_t>(port));
  if (::connect(server.number(), reinterpret_cast<const sockaddr*>(&address), sizeof(address)) !=
      0) {
    server.close();
  }
  return server;
}

bool sendAll(int to, std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t count = ::send(to, bytes.data(), bytes.size(), MSG_NOSIGNAL);
    if (count < 0) return false;
    bytes.remove_prefix(static_cast<std::size_t>(count));
  }
  return true;
}

void resetOnClose(int socket) {
  const linger atOnce{1, 0};
  ::setsockopt(socket, SOL_SOCKET, SO_LINGER, &atOnce, sizeof(atOnce));
}

std::size_t announcedLength(std::string_view head) {
  constexpr std::string_view kName = "\r\nContent-Length: ";
  const std::size_t found = head.find(kName);
  std::size_t length = 0;
  if (found != std::string_view::npos) {
    std::from_chars(head.data() + found + kName.size(), head.data() + head.size(), length);
  }
  return length;
}

bool isWhole(std::string_view message) {
  const std::size_t end = message.find(kHeadEnd);
  if (end == std::string_view::npos) return false;
  const std::size_t head = end + kHeadEnd.size();
  return message.size() >= head + announcedLength(message.substr(0, head));
}

Exchange exchangeOf(std::string_view request) {
  if (request.starts_with("GET")) return Exchange::kConfiguration;
  const bool isVersion = request.find("<getVersionInfo ") != std::string_view::npos;
  return isVersion ? Exchange::kVersion : Exchange::kReport;
}

}  // namespace

FaultyRelay::FaultyRelay(int serverPort, std::function<void()> killServer)
    : _killServer(std::move(killServer)),
      _serverPort(serverPort),
      _stop(::eventfd(0, EFD_CLOEXEC)),
      _acceptor([this] { acceptAll(); }) {}

FaultyRelay::~FaultyRelay() {
  ::eventfd_write(_stop.number(), 1);
  _acceptor.join();
  for (std::thread& connection : _threads) connection.join();
}

void FaultyRelay::setPlan(const RelayPlan& plan) {
  const std::lock_guard lock(_mutex);
  _plan = plan;
}

RelayPlan FaultyRelay::planFor(const std::string& request) const {
  const std::lock_guard lock(_mutex);
  return _plan.exchange == exchangeOf(request) ? _plan : RelayPlan{};
}

void FaultyRelay::acceptAll() {
  for (;;) {
    std::array<pollfd, 2> waiting{{{_port.socket(), POLLIN, 0}, {_stop.number(), POLLIN, 0}}};
    if (::poll(waiting.data(), waiting.size(), -1) < 0) continue;
    if (waiting[1].revents != 0) return;
    FileDescriptor client = _port.accept();
    if (!client.isOpen()) continue;
    _threads.emplace_back([this, client = std::move(client)] { serve(client); });
  }
}

void FaultyRelay::serve(const FileDescriptor& client) {
  for (;;) {
    const Received request = receive(client.number(), client.number());
    if (!request.whole || !relay(client, request.bytes)) return;
  }
}

/// Whether the connection goes on.
bool FaultyRelay::relay(const FileDescriptor& client, const std::string& request) {
  const RelayPlan plan = planFor(request);
  if (plan.fault == RelayFault::kResetBeforeRequest) {
    resetOnClose(client.number());
    return false;
  }
  if (plan.fault == RelayFault::kHang) {
    isLeftWithin(client.number(), kForever);
    return false;
  }
  if (plan.fault == RelayFault::kKillServerFirst) _killServer();
  const Received received = ask(request, client.number(), plan);
  return !received.clientLeft && answer(client.number(), received, plan);
}

FaultyRelay::Received FaultyRelay::ask(const std::string& request, int client,
                                       const RelayPlan& plan) const {
  const FileDescriptor server = connected(_serverPort);
  if (!server.isOpen() || !sendAll(server.number(), request)) return {};
  if (plan.fault == RelayFault::kKillServer) {
    std::this_thread::sleep_for(microseconds(plan.amount));
    _killServer();
  }
  return receive(server.number(), client);
}

/// Reads one message; ends early when `watched`, another connection, is left.
FaultyRelay::Received FaultyRelay::receive(int from, int watched) const {
  Received received;
  while (!received.whole) {
    const short leaving = from == watched ? POLLIN : POLLRDHUP;
    std::array<pollfd, 3> waiting{
        {{from, POLLIN, 0}, {watched, leaving, 0}, {_stop.number(), POLLIN, 0}}};
    if (::poll(waiting.data(), waiting.size(), -1) < 0) continue;
    received.clientLeft = waiting[2].revents != 0 || (from != watched && waiting[1].revents != 0);
    if (received.clientLeft) return received;
    std::array<char, 65536> part;
    const ssize_t count = ::recv(from, part.data(), part.size(), 0);
    if (count <= 0) return received;
    received.bytes.append(part.data(), static_cast<std::size_t>(count));
    received.whole = isWhole(received.bytes);
  }
  return received;
}

bool FaultyRelay::answer(int client, const Received& received, const RelayPlan& plan) const {
  const std::string_view bytes = received.bytes;
  switch (plan.fault) {
    case RelayFault::kResetBeforeAnswer:
      resetOnClose(client);
      return false;
    case RelayFault::kResetInAnswer:
    case RelayFault::kCutInAnswer:
      sendAll(client, bytes.substr(0, plan.amount % (bytes.size() + 1)));
      if (plan.fault == RelayFault::kResetInAnswer) resetOnClose(client);
      return false;
    case RelayFault::kResetAfterAnswer:
      sendAll(client, bytes);
      resetOnClose(client);
      return false;
    case RelayFault::kDrip:
      return drip(client, received.bytes, microseconds(plan.amount)) && received.whole;
    case RelayFault::kInterimFirst:
      return sendAll(client, kInterim) && sendAll(client, bytes) && received.whole;
    default:
      return sendAll(client, bytes) && received.whole;
  }
}

bool FaultyRelay::drip(int client, const std::string& bytes, microseconds pause) const {
  const int atOnce = 1;
  ::setsockopt(client, IPPROTO_TCP, TCP_NODELAY, &atOnce, sizeof(atOnce));
  for (const char& byte : bytes) {
    std::this_thread::sleep_for(pause);
    if (isLeftWithin(client, milliseconds::zero())) return false;
    if (!sendAll(client, std::string_view(&byte, 1))) return false;
  }
  return true;
}

/// Whether the client, or all of this, ends within `time`.
bool FaultyRelay::isLeftWithin(int client, milliseconds time) const {
  std::array<pollfd, 2> waiting{{{client, POLLRDHUP, 0}, {_stop.number(), POLLIN, 0}}};
  return ::poll(waiting.data(), waiting.size(), static_cast<int>(time.count())) > 0;
}

}  // namespace zt::torture
