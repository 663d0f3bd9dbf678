#pragma once

#include <atomic>
#include <chrono>
#include <cstddef>
#include <functional>
#include <list>
#include <mutex>
#include <string>
#include <thread>

#include "tests/support/LoopbackPort.h"
#include "ztportal/base/FileDescriptor.h"

namespace zt::torture {

/// The three requests of a delivery.
enum class Exchange { kConfiguration, kVersion, kReport };

/// What a relay does to an exchange, where the server itself does not misbehave.
enum class RelayFault {
  kNone,
  kResetBeforeRequest,  ///< the server never sees the request
  kResetBeforeAnswer,
  kResetInAnswer,  ///< after `amount` bytes of the answer
  kResetAfterAnswer,
  kCutInAnswer,      ///< an orderly end of the connection after `amount` bytes
  kDrip,             ///< one byte of the answer every `amount` microseconds
  kHang,             ///< no answer; until the client leaves
  kInterimFirst,     ///< an interim status before the answer
  kKillServer,       ///< the server dies `amount` microseconds after it got the request
  kKillServerFirst,  ///< the server dies before it gets the request
};

struct RelayPlan {
  Exchange exchange = Exchange::kReport;
  RelayFault fault = RelayFault::kNone;
  std::size_t amount = 0;
};

/// An HTTP proxy on a loopback port between the library and ztinbox that plays the faults of the
/// network. A plan is in force for every attempt at its exchange until the next plan; exchanges
/// of other kinds pass unharmed. Each connection has a thread.
class FaultyRelay {
 public:
  /// `killServer` is called, on a thread of the relay, where the plan says so.
  FaultyRelay(int serverPort, std::function<void()> killServer);
  FaultyRelay(const FaultyRelay&) = delete;
  FaultyRelay& operator=(const FaultyRelay&) = delete;
  ~FaultyRelay();

  std::string url() const { return _port.url(); }
  void setServerPort(int port) { _serverPort = port; }
  void setPlan(const RelayPlan& plan);

 private:
  /// What came of an answer before its end or the end of the connection.
  struct Received {
    std::string bytes;
    bool whole = false;
    bool clientLeft = false;
  };

  void acceptAll();
  void serve(const FileDescriptor& client);
  bool relay(const FileDescriptor& client, const std::string& request);
  Received ask(const std::string& request, int client, const RelayPlan& plan) const;
  Received receive(int from, int watched) const;
  bool answer(int client, const Received& received, const RelayPlan& plan) const;
  bool drip(int client, const std::string& bytes, std::chrono::microseconds pause) const;
  bool isLeftWithin(int client, std::chrono::milliseconds time) const;
  RelayPlan planFor(const std::string& request) const;

  std::function<void()> _killServer;
  std::atomic<int> _serverPort;
  test::LoopbackPort _port{test::LoopbackPort::Listens};
  FileDescriptor _stop;
  mutable std::mutex _mutex;
  RelayPlan _plan;
  std::list<std::thread> _threads;  // touched by the acceptor alone until it has ended
  std::thread _acceptor;
};

}  // namespace zt::torture
