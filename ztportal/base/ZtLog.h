// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <functional>
#include <string_view>

#include "ztportal/base/ZtExport.h"

/// How serious a message of the library's log is.
enum class ZtLogLevel : std::uint8_t {
  Debug,    ///< what the library does
  Info,     ///< what became of a report
  Warning,  ///< something did not work; the report is not lost
  Error     ///< a report or a part of it is lost
};

/// Takes the messages of the library's log. `module` is the part of the library that speaks, one
/// word: "configuration", "transport", "store", "broadcast", "inventory", "consent", "report" or
/// "background". `message` is one English sentence without a line end, in UTF-8; it contains no
/// password and no value of a report. Both views end with the call.
///
/// A handler runs on the thread on which the message arose, and never inside a lock of the library.
/// What the library logs while the handler runs is dropped on that thread, and so is an exception
/// of the handler.
using ZtLogHandler =
    std::function<void(ZtLogLevel level, std::string_view module, std::string_view message)>;

/// A handler that writes one line for each message to the standard error stream:
///
///     ZtHost::setLogHandler(ZtLogToStderr);
///
/// prints, for example, "ztportal: warning: transport: config.example.com has no address".
ZT_EXPORT void ZtLogToStderr(ZtLogLevel level, std::string_view module, std::string_view message);
