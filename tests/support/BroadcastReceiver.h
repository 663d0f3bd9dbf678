// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <systemd/sd-bus.h>
#include <unistd.h>

#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <map>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "tests/support/ScopedEnvironment.h"
#include "tests/support/Subprocess.h"

namespace zt::test {

inline constexpr const char* kListenForBroadcasts = "ZT_TEST_LISTEN_FOR_BROADCASTS";

/// A string after its length, so that different lists of strings are written differently.
inline std::string countedText(const std::string& text) {
  return std::to_string(text.size()) + ":" + text + ",";
}

/// Each broadcast is one line, so line ends within it are written as "\\n".
inline std::string onOneLine(const std::string& text) {
  std::string line;
  for (const char byte : text) {
    if (byte == '\n') {
      line += "\\n";
    } else {
      line += byte;
    }
  }
  return line;
}

/// A broadcast as `BroadcastReceiver` returns it.
inline std::string broadcastLine(const std::string& name, const std::string& object,
                                 const std::map<std::string, std::string>& userInfo) {
  std::string line = countedText("/com/kelvane/ZtPortal") + countedText("com.kelvane.ZtPortal") +
                     countedText(name) + countedText("sa{ss}") + countedText(object);
  for (const auto& [key, value] : userInfo) line += countedText(key) + countedText(value);
  return onOneLine(line);
}

inline int printSignal(sd_bus_message* message, void*, sd_bus_error*) {
  const char* object = nullptr;
  std::string line = countedText(sd_bus_message_get_path(message)) +
                     countedText(sd_bus_message_get_interface(message)) +
                     countedText(sd_bus_message_get_member(message)) +
                     countedText(sd_bus_message_get_signature(message, 1));
  sd_bus_message_read(message, "s", &object);
  line += countedText(object);
  sd_bus_message_enter_container(message, SD_BUS_TYPE_ARRAY, "{ss}");
  const char* key = nullptr;
  const char* value = nullptr;
  while (sd_bus_message_read(message, "{ss}", &key, &value) > 0) {
    line += countedText(key) + countedText(value);
  }
  std::puts(onOneLine(line).c_str());
  std::fflush(stdout);
  return 0;
}

/// If the variable is set, a test program runs no tests but receives broadcasts: it prints "ready"
/// and then one line for each signal, until it is killed.
inline const bool kIsListening = [] {
  if (std::getenv(kListenForBroadcasts) == nullptr) return false;
  sd_bus* bus = nullptr;
  const bool isListening =
      sd_bus_open_user(&bus) >= 0 &&
      sd_bus_match_signal(bus, nullptr, nullptr, nullptr, "com.kelvane.ZtPortal", nullptr,
                          printSignal, nullptr) >= 0;
  std::puts(isListening ? "ready" : "cannot listen");
  std::fflush(stdout);
  while (sd_bus_process(bus, nullptr) >= 0) sd_bus_wait(bus, UINT64_MAX);
  ::_exit(1);
}();

/// A second process on the session bus of the environment. It receives the library's broadcasts as
/// soon as it is constructed.
class BroadcastReceiver {
 public:
  BroadcastReceiver() {
    const ScopedEnvironment listen(kListenForBroadcasts, "1");
    _process = std::make_unique<Subprocess>(
        std::vector<std::string>{std::filesystem::read_symlink("/proc/self/exe").string()});
    if (_process->readLine(kPatience) != "ready") throw std::runtime_error("no receiver");
  }

  /// Waits for the next broadcast and returns it as a `broadcastLine`.
  std::optional<std::string> next() { return _process->readLine(kPatience); }

 private:
  static constexpr std::chrono::seconds kPatience{60};

  std::unique_ptr<Subprocess> _process;
};

}  // namespace zt::test
