#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>

#include "tools/inbox/Answer.h"
#include "tools/inbox/ReportIdentity.h"

namespace zt::inbox {

/// One report as it came, and what was answered.
struct Report {
  std::uint64_t number = 0;  ///< counts from 1, never given twice
  std::chrono::system_clock::time_point received;
  bool test = false;  ///< came to the test address
  Answer answer;
  ReportIdentity identity;
  std::optional<std::uint64_t> duplicateOf;  ///< the first kept report with the same report ID
  std::string body;
};

}  // namespace zt::inbox
