// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <mutex>
#include <string>
#include <string_view>

#include "tools/ztinbox/store/StoredReport.h"

namespace zt::inbox {

/// The line that is printed for a report, without its line end: local time, number, answer,
/// customer, application, pools, size. A missing value is "-".
///
///     2026-11-21 12:00:00  #2  accepted  Kelvane  {7C1B…} 2.1.77  EXECUTION, CUSTOM  2345 bytes
///     duplicate of #1
///
/// Everything from the report is made safe for a terminal and is of limited length.
std::string reportLine(const StoredReport& report);

/// Writes each line to a file descriptor immediately. A reader that has stopped reading (a full
/// pipe, a stopped terminal) must not block the inbox: lines that cannot be written within half a
/// second are dropped, and the next line that can be written comes after a line with their number.
/// Thread-safe.
class LineOutput {
 public:
  /// Does not own `descriptor`.
  explicit LineOutput(int descriptor) : _descriptor(descriptor) {}

  /// One line or several, the last one without its line end.
  void write(std::string_view lines);

 private:
  void writePart(std::string_view lines);
  bool isReady() const;
  void writeAll(std::string_view bytes) const;

  const int _descriptor;
  std::mutex _mutex;
  std::uint64_t _dropped = 0;
};

}  // namespace zt::inbox
