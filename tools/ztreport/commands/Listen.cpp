// SPDX-License-Identifier: Apache-2.0
#include <poll.h>
#include <systemd/sd-bus.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <iostream>
#include <limits>
#include <string>
#include <vector>

#include "tools/common/StopSignals.h"
#include "tools/ztreport/commands/Commands.h"
#include "tools/ztreport/commands/UserBus.h"
#include "ztportal/platform/json/Json.h"

namespace zt::tools {

namespace {

constexpr const char* kPath = "/com/kelvane/ZtPortal";
constexpr const char* kInterface = "com.kelvane.ZtPortal";
constexpr const char* kMember = "ZtPortalGhostNotification";
constexpr const char* kSignature = "sa{ss}";

using Lines = std::vector<std::string>;

/// Called by sd-bus for each matching signal; must not throw. Signals of another signature are
/// ignored.
int takeBroadcast(sd_bus_message* message, void* lines, sd_bus_error* /*error*/) noexcept {
  if (sd_bus_message_has_signature(message, kSignature) <= 0) return 0;
  const char* object = nullptr;
  if (sd_bus_message_read(message, "s", &object) < 0) return 0;
  if (sd_bus_message_enter_container(message, SD_BUS_TYPE_ARRAY, "{ss}") < 0) return 0;
  Json userInfo = Json::object();
  const char* key = nullptr;
  const char* value = nullptr;
  while (sd_bus_message_read(message, "{ss}", &key, &value) > 0) userInfo[key] = value;
  const Json line{{"object", object}, {"userInfo", std::move(userInfo)}};
  static_cast<Lines*>(lines)->push_back(line.text() + "\n");
  return 0;
}

[[noreturn]] void fail(const std::string& what, int error) {
  throw Failure(Exit::MachineFailed, what + ": " + std::strerror(-error));
}

/// From now to a time of CLOCK_MONOTONIC in microseconds, as poll() expects it.
int millisecondsTo(std::uint64_t time) {
  if (time == UINT64_MAX) return -1;
  timespec now{};
  ::clock_gettime(CLOCK_MONOTONIC, &now);
  const auto present = static_cast<std::uint64_t>(now.tv_sec) * 1'000'000 +
                       static_cast<std::uint64_t>(now.tv_nsec) / 1'000;
  if (time <= present) return 0;
  constexpr std::uint64_t kLongest = std::numeric_limits<int>::max();
  return static_cast<int>(std::min((time - present + 999) / 1'000, kLongest));
}

/// Waits until the bus has work, or not at all when `isBusy`. True after SIGINT or SIGTERM.
bool isStopped(sd_bus* bus, int stop, bool isBusy) {
  std::uint64_t time = 0;
  if (isBusy || sd_bus_get_timeout(bus, &time) < 0) time = isBusy ? 0 : UINT64_MAX;
  const int events = sd_bus_get_events(bus);
  std::array<pollfd, 2> both{
      {{stop, POLLIN, 0}, {sd_bus_get_fd(bus), static_cast<short>(std::max(events, 0)), 0}}};
  const int ready = ::poll(both.data(), both.size(), millisecondsTo(time));
  return ready > 0 && both[0].revents != 0;
}

}  // namespace

Exit listen() {
  const StopSignals stop;
  std::string reason;
  const UserBus bus = openUserBus(reason);
  if (bus == nullptr) throw Failure(Exit::MachineFailed, "no session bus: " + reason);
  Lines lines;
  const int matched = sd_bus_match_signal(bus.get(), nullptr, nullptr, kPath, kInterface, kMember,
                                          takeBroadcast, &lines);
  if (matched < 0) fail("cannot listen on the session bus", matched);
  std::cerr << "ztreport: listening on the session bus" << std::endl;

  for (;;) {
    const int progress = sd_bus_process(bus.get(), nullptr);
    for (const std::string& line : lines) print(line);
    lines.clear();
    if (progress < 0) fail("the connection to the session bus was lost", progress);
    if (isStopped(bus.get(), stop.number(), progress > 0)) return Exit::Done;
  }
}

}  // namespace zt::tools
