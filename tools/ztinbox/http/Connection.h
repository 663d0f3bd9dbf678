// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <chrono>
#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>

#include "ztportal/base/FileDescriptor.h"

namespace zt::inbox {

/// The socket of a client, and the ways in which a misbehaving server ends it. Used by one thread
/// at a time.
class Connection {
 public:
  /// `socket` is non-blocking.
  explicit Connection(FileDescriptor socket) : _socket(std::move(socket)) {}

  // For the code that responds to a request

  /// The head of the current request, as it was received.
  const std::string& head() const { return _head; }
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

  // For the server

  void setHead(std::string head) { _head = std::move(head); }
  bool isSilent() const { return _silent; }
  int socket() const { return _socket.number(); }

  // These do not wait; they return nullopt if they would have to, and 0 if the connection has ended
  // or failed.

  std::optional<std::size_t> receive(std::span<char> bytes) const;
  std::optional<std::size_t> send(std::string_view first, std::string_view second = {}) const;

  /// Sends all of it, waiting for the client; false if the client takes nothing for a few seconds
  /// or has left.
  bool write(std::string_view bytes) const;
  bool isReadableWithin(std::chrono::milliseconds timeout) const;
  /// The client sees the end of what it receives, but can still send.
  void endSending() const;
  /// Ends both directions, also for a thread that is waiting for this connection.
  void endNow() const;
  void close() { _socket.close(); }

 private:
  FileDescriptor _socket;
  std::string _head;
  bool _silent = false;
};

}  // namespace zt::inbox
