#pragma once

#include <mutex>
#include <unordered_set>

namespace zt::inbox {

/// The sockets of the open connections, so that all can be ended at once, whatever their threads
/// are waiting for. Any thread may call it.
class OpenConnections {
 public:
  /// Holds a socket in the list; destroyed before the socket is closed.
  class Entry {
   public:
    Entry(OpenConnections& all, int socket);
    Entry(const Entry&) = delete;
    Entry& operator=(const Entry&) = delete;
    ~Entry();

   private:
    OpenConnections& _all;
    int _socket;
  };

  /// Ends every connection there is and every one that comes: reads see its end, writes fail.
  void endAll();

 private:
  std::mutex _mutex;
  std::unordered_set<int> _sockets;
  bool _ended = false;
};

}  // namespace zt::inbox
