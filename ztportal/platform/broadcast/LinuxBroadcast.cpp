// SPDX-License-Identifier: Apache-2.0
#include "ztportal/platform/broadcast/LinuxBroadcast.h"

#include <systemd/sd-bus.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>

#include "ztportal/base/DescriptorIdentity.h"
#include "ztportal/base/Free.h"
#include "ztportal/base/Log.h"
#include "ztportal/base/Utf8.h"

namespace zt {

namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::microseconds;

using Message = std::unique_ptr<sd_bus_message, Free<sd_bus_message_unref>>;
using Call = std::unique_ptr<sd_bus_slot, Free<sd_bus_slot_unref>>;

struct Connection {
  /// Whether the host has closed the socket. Its number may be another file of the host's by now.
  bool isLost() const {
    if (bus == nullptr) return false;
    const int number = sd_bus_get_fd(bus);  // negative after sd-bus has closed it itself
    return number >= 0 && !identity.isStill(number);
  }

  sd_bus* bus = nullptr;
  DescriptorIdentity identity;
  const Connection* forgottenBefore = nullptr;
};

void closeConnection(Connection* connection) {
  if (!connection->isLost()) {
    sd_bus_close_unref(connection->bus);
    delete connection;
    return;
  }
  // sd-bus cannot release a connection without closing its descriptor, and the number is not ours
  // any more. The list is for leak checkers.
  static std::atomic<const Connection*> forgotten{nullptr};
  connection->forgottenBefore = forgotten.exchange(connection);
}

using Bus = std::unique_ptr<Connection, Free<closeConnection>>;

/// Null if there is none.
Bus openSessionBus() {
  Bus connection(new Connection);
  if (const int opened = sd_bus_open_user(&connection->bus); opened < 0) {
    logOnce(ZtLogLevel::Info, "broadcast",
            "there is no session bus: ", std::generic_category().message(-opened));
    return nullptr;
  }
  connection->identity = DescriptorIdentity(sd_bus_get_fd(connection->bus));
  return connection;
}

bool isNoncharacter(char32_t code) {
  return (code >= 0xFDD0 && code <= 0xFDEF) || (code & 0xFFFEU) == 0xFFFE;
}

/// `text` with U+FFFD for each byte and each character that no D-Bus string can have for sd-bus:
/// NUL and malformed UTF-8 (D-Bus), and the noncharacters of Unicode (sd-bus, as sender and
/// receiver).
std::string withReplacements(std::string_view text) {
  std::string replaced;
  while (!text.empty()) {
    const auto character = firstUtf8Character(text);
    const bool isRefused = !character || character->code == 0 || isNoncharacter(character->code);
    const std::size_t length = character ? character->length : 1;
    replaced += isRefused ? kReplacementCharacter : text.substr(0, length);
    text.remove_prefix(length);
  }
  return replaced;
}

bool appendString(sd_bus_message* message, std::string_view text) {
  const auto isAppended = [message](const std::string& value) {
    return sd_bus_message_append_basic(message, SD_BUS_TYPE_STRING, value.c_str()) >= 0;
  };
  const bool hasNul = text.find('\0') != std::string_view::npos;
  return (!hasNul && isAppended(std::string(text))) || isAppended(withReplacements(text));
}

bool appendEntry(sd_bus_message* message, std::string_view key, std::string_view value) {
  return sd_bus_message_open_container(message, SD_BUS_TYPE_DICT_ENTRY, "ss") >= 0 &&
         appendString(message, key) && appendString(message, value) &&
         sd_bus_message_close_container(message) >= 0;
}

/// Null if no message can be made, for example because it would be too large.
Message makeSignal(sd_bus* bus, const std::string& member, const ZtString& object,
                   const std::map<std::string, ZtString>& userInfo) {
  sd_bus_message* created = nullptr;
  if (sd_bus_message_new_signal(bus, &created, LinuxBroadcast::kPath, LinuxBroadcast::kInterface,
                                member.c_str()) < 0) {
    return nullptr;
  }
  Message message(created);
  if (!appendString(created, object.printed())) return nullptr;
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

enum class Outcome { Received, NoBus, Failed, Unanswered };

/// Lets the bus work until `done`. Takes the time from `patience`.
Outcome processUntil(sd_bus* bus, const bool& done, microseconds& patience) {
  while (!done) {
    const auto start = Clock::now();
    const int progress = sd_bus_process(bus, nullptr);
    if (progress < 0) return Outcome::Failed;
    // A signal may interrupt the wait; then the bus is processed again.
    if (progress == 0) sd_bus_wait(bus, static_cast<std::uint64_t>(patience.count()));
    patience -= std::chrono::duration_cast<microseconds>(Clock::now() - start);
    if (patience <= microseconds(0)) return done ? Outcome::Received : Outcome::Unanswered;
  }
  return Outcome::Received;
}

/// Sends the signal and waits until the bus has received it.
Outcome send(sd_bus* bus, const std::string& member, const ZtString& object,
             const std::map<std::string, ZtString>& userInfo, microseconds& patience) {
  const Message message = makeSignal(bus, member, object, userInfo);
  if (!message || sd_bus_send(bus, message.get(), nullptr) < 0) return Outcome::Failed;
  // A bus may drop unread data of a connection that is closed. It replies in order, so its reply to
  // this call means that it has received the signal.
  bool hasReplied = false;
  sd_bus_slot* call = nullptr;
  if (sd_bus_call_method_async(bus, &call, "org.freedesktop.DBus", "/org/freedesktop/DBus",
                               "org.freedesktop.DBus", "GetId", noteReply, &hasReplied,
                               nullptr) < 0) {
    return Outcome::Failed;
  }
  const Call held(call);
  return processUntil(bus, hasReplied, patience);
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
    return bus && _place == place && !bus->isLost() ? std::move(bus) : nullptr;
  }

  void keep(Bus bus, BusPlace place) {
    // If the host has closed its standard streams, its next output would go to the bus.
    if (sd_bus_get_fd(bus->bus) <= STDERR_FILENO) return;
    _bus = std::move(bus);
    _place = std::move(place);
  }

  void close() { _bus.reset(); }

  static thread_local bool isThreadEnding;

 private:
  Bus _bus;
  BusPlace _place;
};

thread_local bool BusKeeper::isThreadEnding = false;
thread_local BusKeeper busKeeper;

}  // namespace

struct LinuxBroadcast::Silence {
  BusPlace bus;
  Clock::time_point end;
};

LinuxBroadcast::LinuxBroadcast(std::chrono::milliseconds patience, std::chrono::milliseconds pause)
    : _patience(patience), _pause(pause) {}

LinuxBroadcast::~LinuxBroadcast() = default;

void LinuxBroadcast::post(const ZtString& name, const ZtString& object,
                          const std::map<std::string, ZtString>& userInfo) {
  const std::string member(name.printed());
  if (member.find('\0') != std::string::npos) return;
  if (sd_bus_member_name_is_valid(member.c_str()) <= 0) return;

  const BusPlace place;
  const auto silence = _silence.load();
  if (silence != nullptr && silence->bus == place && Clock::now() < silence->end) {
    log(ZtLogLevel::Debug, "broadcast", "not broadcast, because the session bus does not respond");
    return;
  }

  microseconds patience = _patience;
  const auto sendBy = [&](Bus bus) {
    if (!bus) return Outcome::NoBus;
    const Outcome outcome = send(bus->bus, member, object, userInfo, patience);
    // Such as for a message that is too large. sd-bus replies to the call itself then.
    if (outcome == Outcome::Received && sd_bus_is_open(bus->bus) <= 0) {
      log(ZtLogLevel::Warning, "broadcast", "the session bus has closed the connection");
    }
    if (outcome == Outcome::Received && !BusKeeper::isThreadEnding) {
      busKeeper.keep(std::move(bus), place);
    }
    return outcome;
  };
  Outcome outcome = Outcome::NoBus;
  if (!BusKeeper::isThreadEnding) outcome = sendBy(busKeeper.take(place));
  // The kept connection is closed if the bus has been restarted.
  if (outcome == Outcome::NoBus || outcome == Outcome::Failed) outcome = sendBy(openSessionBus());
  if (outcome == Outcome::Failed) {
    log(ZtLogLevel::Warning, "broadcast", "the session bus does not take the notification");
  }
  if (outcome == Outcome::Unanswered) {
    const auto pause = std::chrono::duration_cast<std::chrono::seconds>(_pause);
    log(ZtLogLevel::Warning, "broadcast", "the session bus does not respond; it is left alone for ",
        std::to_string(pause.count()), " seconds");
    _silence.store(std::make_shared<const Silence>(Silence{place, Clock::now() + _pause}));
  }
}

void LinuxBroadcast::closeConnections() {
  if (!BusKeeper::isThreadEnding) busKeeper.close();
}

}  // namespace zt
