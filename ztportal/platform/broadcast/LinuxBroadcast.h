// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <chrono>
#include <map>
#include <memory>
#include <string>

#include "ztportal/base/ZtAtomic.h"
#include "ztportal/platform/broadcast/Broadcast.h"

namespace zt {

/// A signal on the user's D-Bus session bus: member `name`, signature "sa{ss}" (the object and the
/// user information). To watch them:
///
///     dbus-monitor "interface='com.kelvane.ZtPortal'"
///
/// What no D-Bus string can have is replaced by U+FFFD: NUL, malformed UTF-8 (each byte), and
/// noncharacters such as U+FFFF, which sd-bus refuses.
///
/// A thread's connection to the bus stays open for its next message, until the thread ends or the
/// environment names another bus; a forked process opens its own. If the host has closed the
/// socket, the connection is forgotten. A call returns when the bus has received the message. A bus
/// that does not answer in time gets no message for a while: `patience` is how long a call waits at
/// most, `pause` how long the process leaves that bus alone afterwards. Nothing is sent, and there
/// is no error, if there is no session bus or it refuses, if `name` is no D-Bus member name, or if
/// the message exceeds the limit of D-Bus (128 MiB). One object serves all threads.
class LinuxBroadcast final : public Broadcast {
 public:
  static constexpr const char* kPath = "/com/kelvane/ZtPortal";
  static constexpr const char* kInterface = "com.kelvane.ZtPortal";

  explicit LinuxBroadcast(std::chrono::milliseconds patience = std::chrono::milliseconds(100),
                          std::chrono::milliseconds pause = std::chrono::minutes(1));
  LinuxBroadcast(const LinuxBroadcast&) = delete;
  LinuxBroadcast& operator=(const LinuxBroadcast&) = delete;
  ~LinuxBroadcast() override;

  void post(const ZtString& name, const ZtString& object,
            const std::map<std::string, ZtString>& userInfo) override;
  void closeConnections() override;

 private:
  /// A bus that does not answer, and when it is tried again.
  struct Silence;

  const std::chrono::milliseconds _patience;
  const std::chrono::milliseconds _pause;
  ZtAtomic<std::shared_ptr<const Silence>> _silence;
};

}  // namespace zt
