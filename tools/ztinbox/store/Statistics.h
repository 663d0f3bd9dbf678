// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <chrono>
#include <cstdint>
#include <string>
#include <vector>

namespace zt::inbox {

/// The data of the charts about the reports that a filter selects.
struct Statistics {
  struct Minute {
    std::chrono::system_clock::time_point begin;
    std::uint64_t accepted = 0;
    std::uint64_t refused = 0;
    std::uint64_t failed = 0;  ///< answered with a fault, or not at all
  };
  struct Result {
    std::string result;
    std::uint64_t count = 0;
  };
  struct Step {
    std::string name;
    std::uint64_t count = 0;
    std::chrono::milliseconds shortest{0};
    std::chrono::milliseconds mean{0};
    std::chrono::milliseconds longest{0};
  };

  std::uint64_t reports = 0;
  std::uint64_t bytes = 0;
  std::uint64_t unread = 0;
  std::uint64_t tests = 0;
  std::vector<Minute> minutes;  ///< the newest 1,440 with reports, oldest first
  std::vector<Result> results;  ///< most frequent first
  std::vector<Step> steps;      ///< most frequent first, at most 50
};

}  // namespace zt::inbox
