#pragma once

#include "ztportal/platform/broadcast/Broadcast.h"

namespace zt {

/// A signal on the user's D-Bus session bus: member `name`, signature "sa{ss}" (the object and the
/// user information). To watch them:
///
///     dbus-monitor "interface='com.kelvane.ZtPortal'"
///
/// A thread's connection to the bus stays open for its next message, until the thread ends or the
/// environment names another bus; a forked process opens its own. A call returns when the bus has
/// received the message, and after two seconds at the latest. Nothing is sent, and there is no
/// error, if there is no session bus or it refuses, if `name` is no D-Bus member name, if a string
/// is not UTF-8 or contains a NUL byte, or if the message exceeds the limit of D-Bus (128 MiB).
/// Without state: one object serves all threads.
class LinuxBroadcast final : public Broadcast {
 public:
  static constexpr const char* kPath = "/com/kelvane/ZtPortal";
  static constexpr const char* kInterface = "com.kelvane.ZtPortal";

  void post(const ZtString& name, const ZtString& object,
            const std::map<std::string, ZtString>& userInfo) override;
  void closeConnections() override;
};

}  // namespace zt
