// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <string_view>

#include "ztportal/base/Text.h"
#include "ztportal/base/ZtLog.h"

namespace zt {

/// Replaces the handler; an empty one turns the log off.
void setLogHandler(ZtLogHandler handler);

bool hasLogHandler() noexcept;

/// Passes a message to the handler; an empty one had no memory. `errno` stays.
void passToLog(ZtLogLevel level, std::string_view module, std::string_view message) noexcept;

/// Whether the handler has not been asked about `message` before.
bool isNewToLog(std::string_view message) noexcept;

/// Logs the message that consists of `parts`, which are texts. Costs one atomic read without a
/// handler. Not to be called inside a lock.
///
///     log(ZtLogLevel::Warning, "store", "cannot write ", path, ": ", reason);
template <class... Parts>
void log(ZtLogLevel level, std::string_view module, const Parts&... parts) noexcept {
  if (!hasLogHandler()) return;
  std::string message;
  setText(message, parts...);
  passToLog(level, module, message);
}

/// The same for what is wrong with the machine, which every report would meet again: the handler
/// gets the message only once.
template <class... Parts>
void logOnce(ZtLogLevel level, std::string_view module, const Parts&... parts) noexcept {
  if (!hasLogHandler()) return;
  std::string message;
  setText(message, parts...);
  if (isNewToLog(message)) passToLog(level, module, message);
}

}  // namespace zt
