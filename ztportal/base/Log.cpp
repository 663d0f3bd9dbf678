// SPDX-License-Identifier: Apache-2.0
#include "ztportal/base/Log.h"

#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <cstddef>
#include <functional>
#include <utility>

#include "ztportal/base/HostSetting.h"

namespace zt {

namespace {

constinit std::atomic<bool> hasHandler = false;

/// Whether the handler is running on this thread.
constinit thread_local bool isLogging = false;

/// Hash values of the messages that are passed only once. Two that share a place may be passed
/// again.
constinit std::array<std::atomic<std::size_t>, 256> passedMessages{};

}  // namespace

void setLogHandler(ZtLogHandler handler) {
  const bool isGiven = setHostFunction(std::move(handler));
  for (std::atomic<std::size_t>& passed : passedMessages) passed = 0;
  hasHandler = isGiven;
}

bool hasLogHandler() noexcept { return hasHandler.load(std::memory_order_relaxed); }

void passToLog(ZtLogLevel level, std::string_view module, std::string_view message) noexcept {
  if (isLogging) return;
  const int error = errno;
  isLogging = true;
  try {
    if (const auto handler = hostSetting<ZtLogHandler>().load()) {
      std::string line(message.empty() ? "no memory for a message" : message);
      std::replace_if(line.begin(), line.end(), isControl, '?');
      (*handler)(level, module, line);
    }
  } catch (...) {
    // A report is worth more than its log.
  }
  isLogging = false;
  errno = error;
}

bool isNewToLog(std::string_view message) noexcept {
  const std::size_t hash = std::hash<std::string_view>()(message);
  return passedMessages.at(hash % passedMessages.size()).exchange(hash) != hash;
}

}  // namespace zt

void ZtLogToStderr(ZtLogLevel level, std::string_view module, std::string_view message) {
  constexpr std::array<std::string_view, 4> kLevels{"debug", "info", "warning", "error"};
  std::string line;
  zt::appendText(line, "ztportal: ", kLevels.at(static_cast<std::size_t>(level)), ": ", module,
                 ": ", message, "\n");
  // In one piece, so that the lines of several threads and processes do not mix.
  [[maybe_unused]] const ssize_t written = ::write(STDERR_FILENO, line.data(), line.size());
}
