#pragma once

#include "tools/ztinbox/http/Fd.h"
#include "tools/ztinbox/http/ListenAddress.h"

namespace zt::inbox {

/// A TCP socket that listens.
class ListeningSocket {
 public:
  /// Port 0: a free one. Throws MachineFault when the address cannot be had.
  explicit ListeningSocket(const ListenAddress& address);

  /// Where it listens, with the port it got.
  const ListenAddress& address() const { return _address; }
  int number() const { return _socket.number(); }

  /// The next waiting connection, not blocking and without delay of small packets; closed when
  /// there is none.
  Fd accept() const;

 private:
  Fd _socket;
  ListenAddress _address;
};

}  // namespace zt::inbox
