// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "tools/ztinbox/faults/Behaviour.h"

namespace zt::inbox {

using Timestamp = std::chrono::system_clock::time_point;

/// The sender and pool types of a report, as bytes of its text, which need not be UTF-8.
struct ReportIdentity {
  std::optional<std::string> reportId;
  std::optional<std::string> machineId;
  std::optional<std::string> customerId;
  std::optional<std::string> applicationId;
  std::optional<std::string> applicationVersion;
  std::vector<std::string> pools;  ///< the pools' types, in order
};

/// Everything about one report except its bytes.
struct StoredReport {
  std::uint64_t number = 0;  ///< counts from 1, never reused
  Timestamp received;
  bool test = false;   ///< was posted to the test address
  std::string sender;  ///< address and port of the client
  Answer answer;
  std::size_t size = 0;  ///< bytes of the body
  ReportIdentity identity;
  std::optional<std::string> result;  ///< of its run: succeeded, failed or cancelled
  std::optional<std::chrono::milliseconds> duration;  ///< of its run
  std::optional<std::uint64_t> duplicateOf;  ///< the first stored report with the same report ID
  bool read = false;                         ///< the user marked it as read
};

/// The bytes as they were received.
struct ReportBytes {
  std::string head;  ///< request line and headers
  std::string body;
};

/// How long a step took.
struct StepDuration {
  std::string name;
  std::chrono::milliseconds duration;
};

/// A report on its way into the store.
struct IncomingReport {
  StoredReport report;  ///< the store sets its number, duplicateOf and read
  std::string head;
  std::string packedBody;  ///< packed() of report.size bytes
  std::vector<StepDuration> steps;

  /// Sets the members that come from the report's text, `body`.
  void read(std::string_view body);

  /// The approximate memory that this object takes, in bytes.
  std::size_t memory() const;
};

/// Compresses `text` in the LZ4 block format. Reports are repetitive: this reduces them to about a
/// tenth, which makes writing them to the disk fast.
std::string packed(std::string_view text);

/// Restores the `size` bytes that packed() was called with. Throws StoreFault if `bytes` are
/// damaged.
std::string unpacked(std::string_view bytes, std::size_t size);

}  // namespace zt::inbox
