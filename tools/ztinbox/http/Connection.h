// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <array>
#include <chrono>
#include <cstddef>
#include <string>
#include <utility>

#include "ztportal/base/FileDescriptor.h"

namespace zt::inbox {

/// The largest request body and the largest request head that are accepted.
inline constexpr std::size_t kLargestRequest = 64UL * 1024 * 1024;
inline constexpr std::size_t kLargestHead = 256UL * 1024;

/// One connection of a client: reading, writing, and the ways in which a misbehaving server ends
/// it. Used by one thread.
class Connection {
 public:
  /// `socket` is non-blocking.
  explicit Connection(FileDescriptor socket) : _socket(std::move(socket)) {}

  // For the loop that serves the connection

  /// Waits for the first byte of the next request; false after the timeout.
  bool waitForRequest(std::chrono::milliseconds timeout);
  /// The next bytes are the head of a request, or its body. The size of each is limited.
  void beginHead();
  void beginBody();
  /// Whether no further request can be read.
  bool isEnding() const { return _ending || _silent || _readFailed || _inHead; }
  /// Call it after the last response: lets the client read it, even while the client is still
  /// sending.
  void finish();

  // For the code that responds to a request

  /// Whether the client sent more than the limit.
  bool isOverLimit() const { return _overLimit; }
  bool isInHead() const { return _inHead; }
  /// The head of the current request, as it was received.
  const std::string& head() const { return _head; }
  /// Makes this response the last one, because the rest of the request will not be read.
  void endAfterResponse() { _ending = true; }
  /// Ends the connection without sending anything more.
  void endSilently() { _silent = true; }
  /// The same, but the client receives a reset (TCP RST) instead of an orderly end.
  void reset();
  /// Waits; returns false early if the connection fails or ends.
  bool staysOpenFor(std::chrono::milliseconds time) const;
  /// Waits until the client closes its side or the connection ends; false after the timeout, which
  /// is infinite if negative.
  bool isLeftWithin(std::chrono::milliseconds timeout) const;
  /// The numeric address of this machine that the client connected to; empty if unknown.
  std::string localAddress() const;
  /// The client's address and port: "127.0.0.1:40312", "[::1]:40312".
  std::string sender() const;

  // For the HTTP parser and writer; results as in POSIX

  bool isReadable() const;
  bool isWritable() const;
  ssize_t read(char* bytes, std::size_t size);
  ssize_t write(const char* bytes, std::size_t size);
  int socket() const { return _socket.number(); }

 private:
  bool fillBuffer(std::chrono::milliseconds timeout);
  ssize_t takeBuffered(char* to, std::size_t size);

  FileDescriptor _socket;
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
