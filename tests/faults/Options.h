#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <set>
#include <string>

namespace zt::torture {

/// What is to be run, as the command line says it.
struct Options {
  std::set<std::string> campaigns{"delivery", "faults", "kills"};
  std::uint64_t seed = 1;
  /// For all campaigns together; without it each does everything that there is to do.
  std::optional<std::chrono::seconds> time;
  unsigned jobs = 4;
  std::uint64_t reports = 2'000;  ///< of delivery
  std::uint64_t first = 0;        ///< of delivery: number of the first report
  std::uint64_t kills = 400;      ///< of kills: at random moments
};

/// Nothing when the command line asked for nothing but the help, or was wrong; then `status` is the
/// exit status.
std::optional<Options> readOptions(int count, char** words, int& status);

}  // namespace zt::torture
