#include "tools/ztinbox/http/OpenConnections.h"

#include <sys/socket.h>

namespace zt::inbox {

OpenConnections::Entry::Entry(OpenConnections& all, int socket) : _all(all), _socket(socket) {
  const std::lock_guard lock(_all._mutex);
  _all._sockets.insert(socket);
  if (_all._ended) ::shutdown(socket, SHUT_RDWR);
}

OpenConnections::Entry::~Entry() {
  const std::lock_guard lock(_all._mutex);
  _all._sockets.erase(_socket);
}

void OpenConnections::endAll() {
  const std::lock_guard lock(_mutex);
  _ended = true;
  for (const int socket : _sockets) ::shutdown(socket, SHUT_RDWR);
}

}  // namespace zt::inbox
