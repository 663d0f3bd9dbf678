#include "ztportal/platform/broadcast/LinuxBroadcast.h"

#include <systemd/sd-bus.h>
#include <unistd.h>

#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <optional>
#include <string_view>
#include <utility>

#include "ztportal/platform/Free.h"

namespace zt {

namespace {

using Clock = std::chrono::steady_clock;

constexpr std::chrono::seconds kPatience{2};

using Bus = std::unique_ptr<sd_bus, Free<sd_bus_close_unref>>;
using Message = std::unique_ptr<sd_bus_message, Free<sd_bus_message_unref>>;
using Call = std::unique_ptr<sd_bus_slot, Free<sd_bus_slot_unref>>;

Bus openSessionBus() {
  sd_bus* bus = nullptr;
  if (sd_bus_open_user(&bus) < 0) return nullptr;
  return Bus(bus);
}

bool appendText(sd_bus_message* message, std::string_view text) {
  if (text.find('\0') != std::string_view::npos) return false;
  return sd_bus_message_append_basic(message, SD_BUS_TYPE_STRING, std::string(text).c_str()) >= 0;
}

bool appendEntry(sd_bus_message* message, std::string_view key, std::string_view value) {
  return sd_bus_message_open_container(message, SD_BUS_TYPE_DICT_ENTRY, "ss") >= 0 &&
         appendText(message, key) && appendText(message, value) &&
         sd_bus_message_close_container(message) >= 0;
}

/// Null if a message cannot contain the strings.
Message makeSignal(sd_bus* bus, const std::string& member, const ZtString& object,
                   const std::map<std::string, ZtString>& userInfo) {
  sd_bus_message* created = nullptr;
  if (sd_bus_message_new_signal(bus, &created, LinuxBroadcast::kPath, LinuxBroadcast::kInterface,
                                member.c_str()) < 0) {
    return nullptr;
  }
  Message message(created);
  if (!appendText(created, object.printed())) return nullptr;
  if (sd_bus_message_open_container(created, SD_BUS_TYPE_ARRAY, "{ss}") < 0) return nullptr;
  for (const auto& [key, value] : userInfo) {
    if (!appendEntry(created, key, value.printed())) return nullptr;
  }
  if (sd_bus_message_close_container(created) < 0) return nullptr;
  return message;
}

int noteReply(sd_bus_message*, void* hasReplied, sd_bus_error*) {
  *static_cast<bool*>(hasReplied) = true;
  return 0;
}

void processUntil(sd_bus* bus, const bool& done, Clock::time_point deadline) {
  while (!done) {
    const int progress = sd_bus_process(bus, nullptr);
    if (progress < 0) return;
    const auto left =
        std::chrono::duration_cast<std::chrono::microseconds>(deadline - Clock::now()).count();
    if (left <= 0) return;
    // A signal may interrupt the wait; then the bus is processed again.
    if (progress == 0) sd_bus_wait(bus, static_cast<std::uint64_t>(left));
  }
}

/// Sends the signal and waits until the bus has received it; false on failure.
bool send(sd_bus* bus, const std::string& member, const ZtString& object,
          const std::map<std::string, ZtString>& userInfo, Clock::time_point deadline) {
  const Message message = makeSignal(bus, member, object, userInfo);
  if (!message || sd_bus_send(bus, message.get(), nullptr) < 0) return false;
  // A bus may drop unread data of a connection that is closed. It replies in order, so its reply to
  // this call means that it has received the signal.
  bool hasReplied = false;
  sd_bus_slot* call = nullptr;
  if (sd_bus_call_method_async(bus, &call, "org.freedesktop.DBus", "/org/freedesktop/DBus",
                               "org.freedesktop.DBus", "GetId", noteReply, &hasReplied,
                               nullptr) < 0) {
    return false;
  }
  const Call held(call);
  processUntil(bus, hasReplied, deadline);
  return hasReplied;
}

/// What a connection is for: the process and the environment that names the bus.
struct BusPlace {
  pid_t process = ::getpid();
  std::optional<std::string> address = variable("DBUS_SESSION_BUS_ADDRESS");
  std::optional<std::string> runtimeFolder = variable("XDG_RUNTIME_DIR");

  static std::optional<std::string> variable(const char* name) {
    const char* const value = std::getenv(name);
    return value == nullptr ? std::nullopt : std::optional<std::string>(value);
  }
  bool operator==(const BusPlace&) const = default;
};

/// The thread's connection, between two messages. It is closed when the thread ends; a destructor
/// that runs later opens its own connection for each message.
class BusKeeper {
 public:
  BusKeeper() = default;
  BusKeeper(const BusKeeper&) = delete;
  BusKeeper& operator=(const BusKeeper&) = delete;
  ~BusKeeper() { isThreadEnding = true; }

  /// The connection to the bus of `place`; null if there is none.
  Bus take(const BusPlace& place) {
    Bus bus = std::move(_bus);
    return bus && _place == place ? std::move(bus) : nullptr;
  }

  void keep(Bus bus, BusPlace place) {
    // If the host has closed its standard streams, its next output would go to the bus.
    if (sd_bus_get_fd(bus.get()) <= STDERR_FILENO) return;
    _bus = std::move(bus);
    _place = std::move(place);
  }

  static thread_local bool isThreadEnding;

 private:
  Bus _bus;
  BusPlace _place;
};

thread_local bool BusKeeper::isThreadEnding = false;
thread_local BusKeeper keeper;

}  // namespace

void LinuxBroadcast::post(const ZtString& name, const ZtString& object,
                          const std::map<std::string, ZtString>& userInfo) {
  const auto deadline = Clock::now() + kPatience;
  const std::string member(name.printed());
  if (member.find('\0') != std::string::npos) return;
  if (sd_bus_member_name_is_valid(member.c_str()) <= 0) return;

  BusPlace place;
  const auto sentBy = [&](Bus bus) {
    if (!bus || !send(bus.get(), member, object, userInfo, deadline)) return false;
    if (!BusKeeper::isThreadEnding) keeper.keep(std::move(bus), std::move(place));
    return true;
  };
  // The kept connection is closed if the bus has been restarted.
  if (!BusKeeper::isThreadEnding && sentBy(keeper.take(place))) return;
  if (Clock::now() < deadline) sentBy(openSessionBus());
}

void LinuxBroadcast::closeConnections() {}

}  // namespace zt
