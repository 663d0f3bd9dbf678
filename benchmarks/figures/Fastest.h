#pragma once

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <functional>
#include <limits>
#include <vector>

namespace zt::bench {

using Work = std::function<void()>;

inline double secondsOf(const Work& work) {
  const auto start = std::chrono::steady_clock::now();
  work();
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

/// The seconds that each of `works` takes at best. They take turns, so that whatever else runs on
/// the machine meets all of them, and the least of many rounds is what it takes undisturbed.
///
///     const auto best = fastest(100, {ours, theirs});    // best[0] / best[1]
inline std::vector<double> fastest(std::size_t rounds, const std::vector<Work>& works) {
  std::vector<double> best(works.size(), std::numeric_limits<double>::max());
  for (std::size_t round = 0; round < rounds; ++round) {
    for (std::size_t i = 0; i < works.size(); ++i) best[i] = std::min(best[i], secondsOf(works[i]));
  }
  return best;
}

}  // namespace zt::bench
