#pragma once

#include <httplib.h>

#include <array>
#include <chrono>
#include <cstddef>
#include <string>

#include "tools/ztinbox/http/Fd.h"

namespace zt::inbox {

/// The largest request that is taken, its head not counted, and the largest head.
inline constexpr std::size_t kLargestRequest = 64UL * 1024 * 1024;
inline constexpr std::size_t kLargestHead = 256UL * 1024;

/// One connection of a client: what the HTTP library reads from and writes to, and the ways of
/// ending it that a misbehaving server has. Used by one thread.
class Connection final : public httplib::Stream {
 public:
  /// `socket` does not block.
  explicit Connection(Fd socket) : _socket(std::move(socket)) {}

  // For the loop that serves the connection.

  /// Waits for the first byte of the next request; false when it does not come in time.
  bool waitForRequest(std::chrono::milliseconds timeout);
  /// What is read next is a request's head, or its body. Each is limited in size.
  void beginHead();
  void beginBody();
  /// Whether no further request can be read from it.
  bool isEnding() const { return _ending || _silent || _readFailed || _inHead; }
  /// After the last answer: lets the client read it, even while it is still sending.
  void finish();

  // For what answers a request.

  /// Whether the client sent more than is taken.
  bool isOverLimit() const { return _overLimit; }
  bool isInHead() const { return _inHead; }
  /// The head of the request being read or answered, as it came.
  const std::string& head() const { return _head; }
  /// The answer is the last one, since the rest of the request will not be read.
  void endAfterAnswer() { _ending = true; }
  /// From now on nothing is sent, and the connection ends.
  void endSilently() { _silent = true; }
  /// The same, and the client sees a reset (TCP RST) in place of an orderly end.
  void reset();
  /// Waits; false when the connection broke or was ended meanwhile.
  bool staysOpenFor(std::chrono::milliseconds time) const;
  /// Waits until the client closes its side or the connection ends; false when `timeout` is over
  /// first. A negative one is never over.
  bool isLeftWithin(std::chrono::milliseconds timeout) const;
  /// The address of this machine that the client reached, in numbers; empty when unknown.
  std::string localAddress() const;
  /// The client's address and port: "127.0.0.1:40312", "[::1]:40312".
  std::string sender() const;

  // httplib::Stream

  bool is_readable() const override;
  bool is_writable() const override;
  ssize_t read(char* ptr, size_t size) override;
  ssize_t write(const char* ptr, size_t size) override;
  void get_remote_ip_and_port(std::string& ip, int& port) const override;
  void get_local_ip_and_port(std::string& ip, int& port) const override;
  socket_t socket() const override { return _socket.number(); }

 private:
  bool fillBuffer(std::chrono::milliseconds timeout);
  ssize_t takeBuffered(char* to, std::size_t size);

  Fd _socket;
  std::array<char, std::size_t{16} * 1024> _buffer{};
  std::size_t _bufferBegin = 0;
  std::size_t _bufferEnd = 0;
  std::size_t _mayRead = 0;
  std::string _head;
  bool _inHead = false;
  bool _overLimit = false;
  bool _readFailed = false;
  bool _ending = false;
  bool _silent = false;
};

}  // namespace zt::inbox
