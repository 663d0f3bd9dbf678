// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "tools/ztinbox/store/StoredReport.h"

namespace zt::inbox {

/// Selects the reports that match every condition that is set.
struct ReportFilter {
  std::optional<std::string> customer = std::nullopt;     ///< exactly this customer ID
  std::optional<std::string> application = std::nullopt;  ///< this application ID
  std::optional<std::string> machine = std::nullopt;      ///< this machine ID
  std::optional<std::string> version = std::nullopt;      ///< this version of the application
  std::optional<std::string> reportId = std::nullopt;     ///< this report ID
  std::optional<std::string> answer = std::nullopt;       ///< was answered so; "error": any status
  std::optional<std::string> result = std::nullopt;       ///< its run ended so
  std::optional<std::string> pool = std::nullopt;         ///< has a pool of this type
  std::optional<std::string> text = std::nullopt;         ///< see searchTerms()
  std::optional<bool> test = std::nullopt;                ///< posted to the test address, or not
  std::optional<bool> read = std::nullopt;                ///< is marked as read, or is not
  std::optional<Timestamp> since = std::nullopt;          ///< received at this time or later
  std::optional<Timestamp> until = std::nullopt;          ///< received before this time
  std::optional<std::uint64_t> before = std::nullopt;     ///< only smaller numbers

  friend bool operator==(const ReportFilter&, const ReportFilter&) = default;
};

}  // namespace zt::inbox
