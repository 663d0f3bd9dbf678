#include "ztportal/platform/linux/LinuxBroadcast.h"

#include <systemd/sd-bus.h>

#include <chrono>
#include <cstdint>
#include <memory>
#include <string_view>

namespace zt {

namespace {

using Clock = std::chrono::steady_clock;

constexpr std::chrono::seconds kPatience{2};

struct CloseBus {
  void operator()(sd_bus* bus) const { sd_bus_close_unref(bus); }
};
using Bus = std::unique_ptr<sd_bus, CloseBus>;

struct ReleaseMessage {
  void operator()(sd_bus_message* message) const { sd_bus_message_unref(message); }
};
using Message = std::unique_ptr<sd_bus_message, ReleaseMessage>;

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

/// Null when the texts cannot stand in a message.
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

int noteAnswer(sd_bus_message*, void* answered, sd_bus_error*) {
  *static_cast<bool*>(answered) = true;
  return 0;
}

void processUntil(sd_bus* bus, const bool& done, Clock::time_point deadline) {
  while (!done) {
    const int progress = sd_bus_process(bus, nullptr);
    if (progress < 0) return;
    const auto left =
        std::chrono::duration_cast<std::chrono::microseconds>(deadline - Clock::now()).count();
    if (left <= 0) return;
    // A wait that a signal cut short is like one that ended: there is another look at the bus.
    if (progress == 0) sd_bus_wait(bus, static_cast<std::uint64_t>(left));
  }
}

}  // namespace

void LinuxBroadcast::post(const ZtString& name, const ZtString& object,
                          const std::map<std::string, ZtString>& userInfo) {
  const auto deadline = Clock::now() + kPatience;
  const std::string member(name.printed());
  if (member.find('\0') != std::string::npos) return;
  if (sd_bus_member_name_is_valid(member.c_str()) <= 0) return;

  bool answered = false;
  const Bus bus = openSessionBus();
  if (!bus) return;
  const Message message = makeSignal(bus.get(), member, object, userInfo);
  if (!message || sd_bus_send(bus.get(), message.get(), nullptr) < 0) return;
  // A bus that finds the connection closed while it still reads may drop what it has not read.
  // It answers in order, so with the answer to this call it has the signal whole.
  if (sd_bus_call_method_async(bus.get(), nullptr, "org.freedesktop.DBus", "/org/freedesktop/DBus",
                               "org.freedesktop.DBus", "GetId", noteAnswer, &answered,
                               nullptr) < 0) {
    return;
  }
  processUntil(bus.get(), answered, deadline);
}

}  // namespace zt
